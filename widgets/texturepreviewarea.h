// SPDX-License-Identifier: MIT
#pragma once

#include <QScrollArea>

/// Shows the texture preview and takes a picture that is dropped on it. It must live in a MainWindow.
class TexturePreviewArea : public QScrollArea
{
    Q_OBJECT

public:
    using QScrollArea::QScrollArea;

    /// Room for the messages and for most textures. What is shown at the moment does not count: the window keeps its layout.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
};
