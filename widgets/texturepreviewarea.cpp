// SPDX-License-Identifier: MIT
#include "widgets/texturepreviewarea.h"

#include "base/debuglog.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "widgets/previewlabel.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QScrollBar>
#include <QShortcut>
#include <QUrl>
#include <QWheelEvent>

namespace
{
/// Whether a picture file of that suffix can take the selected texture's place.
bool fitsSelectedTexture(const QString &suffix)
{
    const fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (!currentROM.loaded || !texture || !textureFormats::find(texture->format))
        return false;
    if (textureFormats::isJpeg(texture->format))
        return suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg");
    return suffix == QLatin1String("png");
}
}

TexturePreviewArea::TexturePreviewArea(QWidget *parent) : QScrollArea(parent)
{
    // On many keyboards "+" needs Shift; its key alone is "=".
    addZoomKeys({QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)}, 1);
    addZoomKeys({QKeySequence(Qt::CTRL | Qt::Key_Minus)}, -1);
    addZoomKeys({QKeySequence(Qt::CTRL | Qt::Key_0)}, -PreviewLabel::largestZoom);
}

/// The keys work wherever the focus is in the window, while the preview shows.
void TexturePreviewArea::addZoomKeys(const QList<QKeySequence> &keys, int step)
{
    for (const QKeySequence &key : keys) {
        auto *shortcut = new QShortcut(key, this);
        connect(shortcut, &QShortcut::activated, this, [this, step] {
            if (label())
                zoomTo(label()->zoom() + step, viewport()->rect().center());
        });
    }
}

PreviewLabel *TexturePreviewArea::label() const
{
    return qobject_cast<PreviewLabel *>(widget());
}

void TexturePreviewArea::wheelEvent(QWheelEvent *event)
{
    if (!(event->modifiers() & Qt::ControlModifier) || !label()) {
        m_wheelAngle = 0;
        QScrollArea::wheelEvent(event);
        return;
    }
    m_wheelAngle += event->angleDelta().y();
    const int steps = m_wheelAngle / QWheelEvent::DefaultDeltasPerStep;
    m_wheelAngle -= steps * QWheelEvent::DefaultDeltasPerStep;
    zoomTo(label()->zoom() + steps, event->position().toPoint());
    event->accept();
}

void TexturePreviewArea::zoomTo(int zoom, const QPoint &anchor)
{
    PreviewLabel *label = this->label();
    if (!label->showsPicture())
        return;
    const QPointF pixel = QPointF(label->mapFrom(viewport(), anchor)) / label->zoom();
    label->setZoom(zoom);
    const QPointF place = pixel * label->zoom() - anchor;
    horizontalScrollBar()->setValue(qRound(place.x()));
    verticalScrollBar()->setValue(qRound(place.y()));
    label->refreshPointedPixel();
}

QSize TexturePreviewArea::sizeHint() const
{
    // Characters of a line of the widest message; the pictures of most textures are smaller.
    constexpr int messageCharacters = 40;
    return QSize(messageCharacters * fontMetrics().averageCharWidth(), 240);
}

QSize TexturePreviewArea::minimumSizeHint() const
{
    return QSize(144, 144);
}

void TexturePreviewArea::dragEnterEvent(QDragEnterEvent *event)
{
    // A drag that is ignored goes on to the window, which would take a picture for a cartridge image: the action tells it that
    // this place wants none of it.
    event->setDropAction(Qt::IgnoreAction);
    event->ignore();
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    const QString path = urls.first().toLocalFile();
    QUILLARY_DEBUG_AS("virtual void TexturePreviewArea::dragEnterEvent(QDragEnterEvent *)") << path;
    if (urls.size() == 1 && fitsSelectedTexture(QFileInfo(path).suffix().toLower()))
        event->acceptProposedAction();
}

void TexturePreviewArea::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    event->acceptProposedAction();
    // The window is called by name: it knows this widget, and the other way round would be a circle.
    QMetaObject::invokeMethod(window(), "insertTexture", Qt::DirectConnection, Q_ARG(QString, urls.first().toLocalFile()),
                              Q_ARG(fileTreeFile *, currentROM.lastSelectedTexture));
}
