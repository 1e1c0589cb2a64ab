// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/texturepicture.h"

#include <QDebug>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace
{
constexpr int rowCount = 5;
constexpr int columnCount = 3;
constexpr int columnPitch = 80; // pixels
constexpr int rowPitch = 32; // pixels

QGroupBox *createBoxAround(QWidget *content, const QString &title, QWidget *parent)
{
    auto *box = new QGroupBox(title, parent);
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(content);
    return box;
}
}

void MainWindow::createGridPanel()
{
    m_gridPanel = new QWidget(this);
    m_gridPanel->setObjectName(QStringLiteral("gridPanel"));
    m_gridTable = new QTableWidget(rowCount, columnCount);
    m_gridTable->setObjectName(QStringLiteral("gridTable"));
    m_gridTable->setAccessibleName(tr("Grid Layout"));
    m_gridLabel = new QLabel;
    m_gridLabel->setObjectName(QStringLiteral("gridLabel"));
    auto *layout = new QHBoxLayout(m_gridPanel);
    layout->addWidget(createBoxAround(m_gridTable, tr("Grid Layout"), m_gridPanel));
    layout->addWidget(createBoxAround(m_gridLabel, tr("Grid Preview"), m_gridPanel));
    m_gridPanel->hide(); // It has no place in the window yet, and would show in its corner.

    connect(m_gridTable, &QTableWidget::itemChanged, this, &MainWindow::renderGrid);
}

void MainWindow::renderGrid()
{
    QImage composed(columnCount * columnPitch, rowCount * rowPitch, QImage::Format_ARGB32);
    composed.fill(Qt::transparent);
    QPainter painter(&composed);
    for (int column = 0; column < columnCount; ++column) {
        for (int row = 0; row < rowCount; ++row) {
            QTableWidgetItem *item = m_gridTable->item(row, column);
            if (!item) {
                qDebug() << column << "," << row << "is empty.";
                continue;
            }
            qDebug() << "searching for file" << item->text();
            const fileTreeFile *texture = fileTreeContainer().fileFromPath(item->text());
            // A new colour signals a change, which runs this once more inside; the colour is no longer new then.
            item->setBackground(texture ? QColor(0, 255, 0) : QColor(255, 0, 0));
            if (!texture)
                continue;
            const TexturePicture picture = textureToShow(*texture);
            if (picture.problem == TexturePicture::NotDecoded) {
                m_gridLabel->setStyleSheet(QString());
                m_gridLabel->setText(tr("The generated texture returned as NULL. Can't dislay texture."));
            } else if (picture.problem == TexturePicture::None) {
                painter.drawImage(column * columnPitch, row * rowPitch, picture.image);
            }
        }
    }
    painter.end();
    m_gridLabel->setPixmap(QPixmap::fromImage(composed));
    m_gridLabel->setStyleSheet(m_previewBackground);
    m_gridLabel->adjustSize();
}
