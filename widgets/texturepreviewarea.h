// SPDX-License-Identifier: MIT
#pragma once

#include <QScrollArea>

/// Shows the texture preview and takes a picture that is dropped on it. It must live in a MainWindow.
class TexturePreviewArea : public QScrollArea
{
    Q_OBJECT

public:
    using QScrollArea::QScrollArea;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
};
