// SPDX-License-Identifier: MIT
#include "app/screenshot.h"

#include "app/mainwindow.h"
#include "persist/savefile.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPixmap>
#include <QSettings>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>

namespace
{
void report(const QString &message)
{
    std::fprintf(stderr, "quillary: %s\n", qPrintable(message));
}

void closeMessageBox()
{
    auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    if (!dialog)
        return;
    if (const auto *box = qobject_cast<QMessageBox *>(dialog))
        report(box->text());
    dialog->reject();
}

void selectFirstTexture()
{
    const QList<fileTreeFile *> textures = fileTreeContainer().allFiles(currentROM.root);
    for (const fileTreeFile *texture : textures) {
        if (!texture->treeItem)
            continue;
        for (QTreeWidgetItem *row = texture->treeItem->parent(); row; row = row->parent())
            row->setExpanded(true);
        texture->treeItem->treeWidget()->setCurrentItem(texture->treeItem);
        return;
    }
}
}

SettingsCopy::SettingsCopy()
{
    const QString original = QSettings().fileName();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
    const QString copy = QSettings().fileName();
    QDir().mkpath(QFileInfo(copy).path());
    QFile::copy(original, copy);
}

bool takeScreenshot(MainWindow *window, const QString &image, const QString &path)
{
    QTimer boxCloser;
    QObject::connect(&boxCloser, &QTimer::timeout, closeMessageBox);
    boxCloser.start(0);
    // Whatever the size of the screen, which a platform without a display makes up.
    window->resize(1280, 800);
    if (!image.isEmpty()) {
        window->loadFile(image);
        if (!currentROM.loaded)
            return false;
        selectFirstTexture();
    }
    QApplication::processEvents();

    QString error;
    const QPixmap picture = window->grab();
    const bool saved = saveWhole(
        path, [&picture](QIODevice *device) { return picture.save(device, "PNG"); }, &error);
    if (!saved)
        report(QStringLiteral("Cannot write file %1:\n%2.").arg(path, error));
    return saved;
}
