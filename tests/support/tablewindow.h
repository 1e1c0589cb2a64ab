// SPDX-License-Identifier: MIT
#pragma once

#include "app/mainwindow.h"
#include "support/images.h"

#include <QAction>
#include <QLabel>
#include <QTest>
#include <QTreeWidget>

/// A real window over an image in currentROM whose table is empty: the root has its row.
class TableWindow
{
public:
    explicit TableWindow(const QByteArray &image = cartridgeImage(64 * 1024))
    {
        loadIntoCurrentROM(image);
        m_window.clearFileTable();
        m_window.updateActions();
    }

    MainWindow *operator->() { return &m_window; }
    MainWindow *get() { return &m_window; }

    /// The widget of that class and object name; fails the test when there is none.
    template<typename Widget> Widget *find(const char *name)
    {
        auto *widget = m_window.findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("the window has no %s", name);
        return widget;
    }

    QTreeWidget *tree() { return find<QTreeWidget>("fileTree"); }
    QTreeWidgetItem *rootRow() { return currentROM.root->treeItem; }

    QAction *action(const QString &text)
    {
        const QList<QAction *> actions = m_window.findChildren<QAction *>();
        for (QAction *action : actions) {
            if (action->text() == text)
                return action;
        }
        qFatal("the window has no action %s", qPrintable(text));
        return nullptr;
    }

    bool noticeIsShown()
    {
        const QList<QLabel *> labels = m_window.findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (label->text() == QLatin1String("There are unsaved changes in the file list."))
                return !label->isHidden();
        }
        qFatal("the window has no notice of an unsaved file list");
        return false;
    }

    void show()
    {
        m_window.resize(1280, 800);
        m_window.show();
        if (!QTest::qWaitForWindowExposed(&m_window))
            qFatal("the window does not show");
    }

    fileTreeDirectory *addFolder(fileTreeDirectory *parent, const QString &name, int address, int size = 0x1000)
    {
        auto *folder = new fileTreeDirectory;
        folder->name = name;
        folder->address = address;
        folder->size = size;
        parent->addDirectory(folder);
        m_window.addDirectoryToTree(folder);
        return folder;
    }

    fileTreeFile *addTexture(fileTreeDirectory *parent, const QString &name, int address,
                             const QString &format = QStringLiteral("rgba32"), int width = 32, int height = 32)
    {
        auto *texture = new fileTreeFile;
        texture->name = name;
        texture->address = address;
        texture->format = format;
        texture->width = width;
        texture->height = height;
        parent->addFile(texture);
        m_window.addTextureToTree(texture);
        return texture;
    }

    /// Makes the row of \a node the current one, as a click on it does.
    template<typename Node> void select(const Node *node) { tree()->setCurrentItem(node->treeItem); }

private:
    MainWindow m_window;
};

/// The texts of all cells of \a row.
inline QStringList cellsOf(const QTreeWidgetItem *row)
{
    QStringList cells;
    for (int column = 0; column < 10; ++column)
        cells << row->text(column);
    return cells;
}

/// The names in column 0 of the rows below \a row.
inline QStringList namesBelow(const QTreeWidgetItem *row)
{
    QStringList names;
    for (int i = 0; i < row->childCount(); ++i)
        names << row->child(i)->text(0);
    return names;
}

/// What an application does before it makes a window; for initTestCase().
inline void setApplicationIdentity()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Brimholt"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillary"));
}
