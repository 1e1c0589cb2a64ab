// SPDX-License-Identifier: MIT
#pragma once

#include "system/monkey/dialoganswers.h"
#include "system/monkey/walkfiles.h"
#include "system/monkey/walkrandom.h"
#include "system/monkey/walkrules.h"

#include <QList>
#include <QStringList>

#include <memory>

class MainWindow;
class QAction;
class QPoint;
class QTreeWidget;
class QTreeWidgetItem;

/// A monkey test: performs random operations in a real window with real events. The same seed gives the same operations.
class Walker
{
public:
    explicit Walker(quint32 seed);
    ~Walker();

    /// Performs one operation. Returns the first rule that does not hold afterwards; empty when all hold.
    QString step();
    /// The operations so far, a line each.
    const QStringList &trail() const { return m_trail; }

private:
    struct Operation
    {
        const char *name;
        int weight;
        void (Walker::*run)();
    };
    static const QList<Operation> &operations();

    void start();
    QString afterwards();

    void clickRow();
    void pressKeyInTree();
    void clickBesideRows();
    void toggleRow();
    void sortByColumn();
    void openContextMenu();
    void editFolder();
    void editTexture();
    void checkFixedAddresses();
    void saveFolderPanel();
    void saveTexturePanel();
    void newFolder();
    void newTexture();
    void deleteItem();
    void importImage();
    void dropPicture();
    void dropImage();
    void extract();
    void importFolder();
    void importPack();
    void findTexture();
    void clickPreview();
    void fillGrid();
    void newProfile();
    void selectProfile();
    void saveProfile();
    void loadProfile();
    void deleteProfile();
    void selectAutoload();
    void toggleAutosave();
    void changeTab();
    void openImage();
    void openRecentImage();
    void saveImage();
    void saveImageAs();
    void pressUndo();
    void showAbout();
    void closeWindow();

    void typeInto(const char *field, const QStringList &texts);
    void spin(const char *field);
    void press(const char *button);
    void drop(QWidget *target, const QStringList &files);
    void trigger(const char *action);
    void note(const QString &text) { m_trail.append(QStringLiteral("  ") + text); }
    QStringList someNames() const;
    QStringList someNumbers() const;
    QList<QTreeWidgetItem *> rowsInView();
    QTreeWidgetItem *showRow();
    QTreeWidget *tree();
    template<typename Widget> Widget *find(const char *name);

    WalkRandom m_random;
    int m_steps = 0;
    QStringList m_trail;
    QStringList m_warnings;
    WalkFiles m_files;
    DialogAnswers m_answers;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<WalkRules> m_rules;
    StepFacts m_facts;
    QString m_problem; ///< Found by the operation itself.
};
