// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/texturepicture.h"
#include "base/hexnumber.h"
#include "model/texel.h"
#include "widgets/previewlabel.h"
#include "widgets/texturepreviewarea.h"

#include <QCoreApplication>
#include <QGroupBox>
#include <QScrollBar>
#include <QStatusTipEvent>
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

/// Pixels count from the upper left corner, which is 0, 0.
QString describePixel(const fileTreeFile &texture, const QPoint &pixel)
{
    const QString x = QString::number(pixel.x());
    const QString y = QString::number(pixel.y());
    const std::optional<Texel> texel = texelAt(texture, pixel.x(), pixel.y());
    if (!texel)
        return MainWindow::tr("Pixel %1, %2").arg(x, y);
    const QString value = QStringLiteral("%1").arg(texel->value, texel->hexDigits, 16, QLatin1Char('0')).toUpper();
    return MainWindow::tr("Pixel %1, %2, address %3, value %4")
        .arg(x, y, hexNumber(texel->address), QStringLiteral("0x") + value);
}
}

void MainWindow::createPreviewBox()
{
    m_previewBackground = checkerboardSheet();

    m_previewLabel = new PreviewLabel;
    m_previewLabel->setObjectName(QStringLiteral("previewLabel"));
    m_previewLabel->setAlignment(Qt::AlignCenter);
    m_previewLabel->setWordWrap(true);
    m_previewLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    connect(m_previewLabel, &ClickableLabel::clicked, this, &MainWindow::togglePreviewBackground);
    // As tips, these give way to the outcome of an operation.
    connect(m_previewLabel, &PreviewLabel::pixelPointedAt, this, [this](const QPoint &pixel) {
        QStatusTipEvent tip(describePixel(*currentROM.editedTexture, pixel));
        QCoreApplication::sendEvent(this, &tip);
    });
    connect(m_previewLabel, &PreviewLabel::pixelLeft, this, [this] {
        QStatusTipEvent noTip {QString()};
        QCoreApplication::sendEvent(this, &noTip);
    });

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
    m_previewLabel->refreshPointedPixel();
}

/// Shows \a message, without a backdrop, in place of the picture.
void MainWindow::showPreviewMessage(const QString &message)
{
    m_previewLabel->setStyleSheet(QString());
    m_previewLabel->setText(message);
    m_previewLabel->adjustSize();
    m_previewLabel->refreshPointedPixel();
}

void MainWindow::renderTexture()
{
    if (!currentROM.lastSelectedTexture)
        return;
    if (m_previewedTexture != currentROM.lastSelectedTexture)
        m_previewLabel->setZoom(1);
    m_previewedTexture = currentROM.lastSelectedTexture;
    const TexturePicture picture = textureToShow(*currentROM.editedTexture);
    if (picture.problem != TexturePicture::None) {
        showPreviewMessage(messageFor(picture.problem, currentROM.editedTexture->format));
        return;
    }
    m_previewLabel->setPixmap(QPixmap::fromImage(picture.image));
    m_previewLabel->setStyleSheet(m_previewBackground);
    m_previewLabel->adjustSize();
    m_previewLabel->refreshPointedPixel();
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
