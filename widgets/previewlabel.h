// SPDX-License-Identifier: MIT
#pragma once

#include "widgets/clickablelabel.h"

#include <QPoint>

/// Shows a picture enlarged by a whole factor, each pixel as a sharp square, and reports which pixel is under the pointer. The
/// pixmap of the label is always the picture itself; only the drawing is larger. A text is shown as by any label.
class PreviewLabel : public ClickableLabel
{
    Q_OBJECT

public:
    static constexpr int largestZoom = 16;

    explicit PreviewLabel(QWidget *parent = nullptr);

    int zoom() const { return m_zoom; }
    /// Draws pixels as squares of \a zoom units, 1 to largestZoom, and takes the size for that. Other values are bounded.
    void setZoom(int zoom);
    bool showsPicture() const;
    /// Reports the pixel under the pointer again: what the label shows is new.
    void refreshPointedPixel();

    QSize sizeHint() const override;

signals:
    /// The pointer is over \a pixel of the picture. Sent again for the same pixel only by refreshPointedPixel().
    void pixelPointedAt(const QPoint &pixel);
    /// The pointer is not over a pixel any more.
    void pixelLeft();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void pointAt(const QPoint &position);
    void leavePixel();

    int m_zoom = 1;
    QPoint m_pixel; ///< While m_isOverPixel.
    bool m_isPointedAt = false;
    bool m_isOverPixel = false;
};
