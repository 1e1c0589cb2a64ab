// SPDX-License-Identifier: MIT
#pragma once

#include <QScrollArea>

/// Shows the texture preview and takes a picture that is dropped on it. It must live in a MainWindow.
class TexturePreviewArea : public QScrollArea
{
    Q_OBJECT

public:
    using QScrollArea::QScrollArea;

    /// Room for the common texture sizes; what is shown at the moment does not count, lest the window moved with every texture.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
};
