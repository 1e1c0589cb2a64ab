// SPDX-License-Identifier: MIT
#include "widgets/previewlabel.h"

#include <QMouseEvent>
#include <QPainter>

PreviewLabel::PreviewLabel(QWidget *parent) : ClickableLabel(parent)
{
    setMouseTracking(true);
}

bool PreviewLabel::showsPicture() const
{
    return !pixmap(Qt::ReturnByValue).isNull();
}

void PreviewLabel::setZoom(int zoom)
{
    zoom = qBound(1, zoom, largestZoom);
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    updateGeometry();
    adjustSize();
    update();
}

QSize PreviewLabel::sizeHint() const
{
    return showsPicture() ? pixmap(Qt::ReturnByValue).size() * m_zoom : ClickableLabel::sizeHint();
}

/// Draws only the pixels that are exposed: the whole enlarged picture can be far larger than a painter's coordinates reach.
void PreviewLabel::paintEvent(QPaintEvent *event)
{
    if (!showsPicture()) {
        ClickableLabel::paintEvent(event);
        return;
    }
    const QPixmap picture = pixmap(Qt::ReturnByValue);
    const QRect exposed = event->rect();
    const QRect pixels =
        QRect(exposed.topLeft() / m_zoom, exposed.bottomRight() / m_zoom).adjusted(-1, -1, 1, 1).intersected(picture.rect());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawPixmap(QRect(pixels.topLeft() * m_zoom, pixels.size() * m_zoom), picture, pixels);
}

void PreviewLabel::mouseMoveEvent(QMouseEvent *event)
{
    pointAt(event->pos());
}

void PreviewLabel::leaveEvent(QEvent *)
{
    m_isPointedAt = false;
    leavePixel();
}

void PreviewLabel::refreshPointedPixel()
{
    m_pixel = QPoint(-1, -1); // So that the same pixel counts as another one.
    if (m_isPointedAt)
        pointAt(mapFromGlobal(QCursor::pos()));
}

void PreviewLabel::pointAt(const QPoint &position)
{
    m_isPointedAt = true;
    const bool isInside = rect().contains(position) && showsPicture();
    const QPoint pixel(position.x() / m_zoom, position.y() / m_zoom);
    if (!isInside || !pixmap(Qt::ReturnByValue).rect().contains(pixel)) {
        leavePixel();
    } else if (!m_isOverPixel || pixel != m_pixel) {
        m_isOverPixel = true;
        m_pixel = pixel;
        emit pixelPointedAt(pixel);
    }
}

void PreviewLabel::leavePixel()
{
    if (m_isOverPixel)
        emit pixelLeft();
    m_isOverPixel = false;
}
