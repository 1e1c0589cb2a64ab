// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QSet>
#include <QStringList>

class MainWindow;
class QTreeWidgetItem;

/// What an operation may have changed; some rules depend on it.
struct StepFacts
{
    bool mayLoadImage = false;
    bool mayWriteImage = false;
    bool mayImportPack = false;
    /// The texture that a picture may have replaced; its rows are then refreshed.
    const fileTreeFile *replaced = nullptr;
};

/// Rules that hold in the window and the table after every operation.
class WalkRules
{
public:
    explicit WalkRules(MainWindow *window) : m_window(window) { }

    /// Call before each operation.
    void begin();
    /// The first rule that does not hold; empty when all do.
    QString broken(const StepFacts &facts);

private:
    using Rule = QString (WalkRules::*)(const StepFacts &);

    QString nothingIsLeftOver(const StepFacts &facts);
    QString imageKeepsItsSize(const StepFacts &facts);
    QString namesAreUnique(const StepFacts &facts);
    QString rowsAgreeWithTable(const StepFacts &facts);
    QString cellsAreFresh(const StepFacts &facts);
    QString selectionPointsIntoTable(const StepFacts &facts);
    QString selectionAgreesWithTree(const StepFacts &facts);
    QString actionsFollowTheRule(const StepFacts &facts);
    QString folderPanelAgrees(const StepFacts &facts);
    QString texturePanelAgrees(const StepFacts &facts);
    QString listSurvivesSaving(const StepFacts &facts);
    QString noticeTellsTheTruth(const StepFacts &facts);
    QString modifiedFlagTellsTheTruth(const StepFacts &facts);
    QString recentFilesAreListed(const StepFacts &facts);

    QString brokenRow(const QTreeWidgetItem *row, const fileTreeDirectory &folder);
    QString staleTexture(const fileTreeFile &texture, const StepFacts &facts);
    template<typename Widget> Widget *find(const char *name) const;

    MainWindow *m_window;
    QByteArray m_imageBefore;
    QList<fileTreeDirectory *> m_foldersBefore;
    QSet<const fileTreeDirectory *> m_foldersWithoutRow; ///< That a texture pack brought.
    QSet<const fileTreeFile *> m_staleTextures; ///< Whose bytes an import changed that refreshes no rows.
    const fileTreeDirectory *m_packFolder = nullptr; ///< The selected folder, although the tree shows another.
};
