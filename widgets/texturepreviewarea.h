// SPDX-License-Identifier: MIT
#pragma once

#include <QScrollArea>

class PreviewLabel;

/// Shows the texture preview and takes a picture that is dropped on it. It must live in a MainWindow. With a PreviewLabel as its
/// widget, the wheel with Ctrl and the zoom keys enlarge the picture.
class TexturePreviewArea : public QScrollArea
{
    Q_OBJECT

public:
    explicit TexturePreviewArea(QWidget *parent = nullptr);

    /// Room for the messages and for most textures. What is shown at the moment does not count: the window keeps its layout.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    PreviewLabel *label() const;
    void addZoomKeys(const QList<QKeySequence> &keys, int step);
    /// Zooms to \a zoom; what is shown at \a anchor, a point of the viewport, stays there as far as the scroll bars allow.
    void zoomTo(int zoom, const QPoint &anchor);

    int m_wheelAngle = 0; ///< Of turns that were too small for a step, in eighths of a degree.
};
