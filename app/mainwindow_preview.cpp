// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/texturepicture.h"
#include "widgets/clickablelabel.h"
#include "widgets/texturepreviewarea.h"

#include <QGroupBox>
#include <QScrollBar>
#include <QVBoxLayout>

namespace
{
QString checkerboardSheet()
{
    return QStringLiteral("background: url(:/style/alphaBG);");
}

QString magentaSheet()
{
    return QStringLiteral("background: rgb(255,0,255);");
}

QString messageFor(TexturePicture::Problem problem, const QString &format)
{
    switch (problem) {
    case TexturePicture::None: break;
    case TexturePicture::UnknownFormat: return MainWindow::tr("The texture format is not supported.");
    case TexturePicture::PastEnd: return MainWindow::tr("The texture extends past the end of the file. Can't display texture.");
    case TexturePicture::TooManyPixels: return MainWindow::tr("The texture exceeds 1048576 pixels. Can't display texture.");
    case TexturePicture::NoData:
        return textureFormats::isJpeg(format)
            ? MainWindow::tr("This textures address is not the start of a jpeg texture.")
            : MainWindow::tr("NULL was returned when trying to obtain the textures data. Can't display texture.");
    case TexturePicture::NotDecoded: return MainWindow::tr("The generated texture returned as NULL. Can't dislay texture.");
    }
    return QString();
}
}

void MainWindow::createPreviewBox()
{
    m_previewBackground = checkerboardSheet();

    m_previewLabel = new ClickableLabel(QString());
    m_previewLabel->setObjectName(QStringLiteral("previewLabel"));
    m_previewLabel->setAlignment(Qt::AlignCenter);
    m_previewLabel->setWordWrap(true);
    m_previewLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    connect(m_previewLabel, &ClickableLabel::clicked, this, &MainWindow::togglePreviewBackground);

    m_previewArea = new TexturePreviewArea;
    m_previewArea->setObjectName(QStringLiteral("previewArea"));
    m_previewArea->setAccessibleName(tr("Texture Preview"));
    m_previewArea->setStyleSheet(QStringLiteral("background:transparent;"));
    m_previewArea->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_previewArea->setAlignment(Qt::AlignCenter);
    m_previewArea->setFrameShape(QFrame::NoFrame);
    m_previewArea->setAcceptDrops(true);
    m_previewArea->setWidget(m_previewLabel);
    // Without a sheet of their own the scroll bars would have no background either.
    for (QScrollBar *bar : {m_previewArea->horizontalScrollBar(), m_previewArea->verticalScrollBar()})
        bar->setStyleSheet(QStringLiteral("background: none"));

    m_previewBox = new QGroupBox(tr("Texture Preview"), m_selectionPanel);
    m_previewBox->setObjectName(QStringLiteral("previewBox"));
    m_previewBox->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    auto *layout = new QVBoxLayout(m_previewBox);
    layout->addWidget(m_previewArea);
}

void MainWindow::clearPreview()
{
    m_previewLabel->setStyleSheet(QString());
    m_previewLabel->setText(QString());
    m_previewLabel->setPixmap(QPixmap());
    m_previewLabel->adjustSize();
}

/// Shows \a message, without a backdrop, in place of the picture.
void MainWindow::showPreviewMessage(const QString &message)
{
    m_previewLabel->setStyleSheet(QString());
    m_previewLabel->setText(message);
    m_previewLabel->adjustSize();
}

void MainWindow::renderTexture()
{
    if (!currentROM.lastSelectedTexture)
        return;
    const TexturePicture picture = textureToShow(*currentROM.editedTexture);
    if (picture.problem != TexturePicture::None) {
        showPreviewMessage(messageFor(picture.problem, currentROM.editedTexture->format));
        return;
    }
    m_previewLabel->setPixmap(QPixmap::fromImage(picture.image));
    m_previewLabel->setStyleSheet(m_previewBackground);
    m_previewLabel->adjustSize();
}

void MainWindow::togglePreviewBackground()
{
    const QString current = m_previewLabel->styleSheet();
    if (current == checkerboardSheet())
        m_previewBackground = magentaSheet();
    else if (current == magentaSheet())
        m_previewBackground = checkerboardSheet();
    else
        return;
    m_previewLabel->setStyleSheet(m_previewBackground);
}
