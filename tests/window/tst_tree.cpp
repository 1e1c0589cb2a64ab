// SPDX-License-Identifier: MIT
#include "model/bulkadder.h"
#include "support/dialogs.h"
#include "support/messages.h"
#include "support/tablewindow.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>

#include <ctime>

namespace
{
/// A ci4 texture whose palette lies at \a palette: decoding it logs that address.
fileTreeFile *addLoggingTexture(TableWindow *window, fileTreeDirectory *parent, int palette)
{
    fileTreeFile *texture = window->addTexture(parent, QString::number(palette), 0, QStringLiteral("ci4"), 8, 8);
    texture->paletteAddress = palette;
    return texture;
}

QImage iconImage(const QTreeWidgetItem *row)
{
    return row->icon(0).pixmap(16, 16).toImage().convertToFormat(QImage::Format_ARGB32);
}

bool showsIcon(const QTreeWidgetItem *row, const char *resource)
{
    const QImage expected = QIcon(QLatin1String(resource)).pixmap(16, 16).toImage().convertToFormat(QImage::Format_ARGB32);
    return !expected.isNull() && iconImage(row) == expected;
}

/// What a menu shows: the texts of its entries, "-" for a separator, in brackets what is disabled.
QStringList entriesOf(const QMenu *menu)
{
    QStringList entries;
    const QList<QAction *> actions = menu->actions();
    for (const QAction *action : actions) {
        if (action->isSeparator())
            entries << QStringLiteral("-");
        else
            entries << (action->isEnabled() ? action->text() : QLatin1Char('(') + action->text() + QLatin1Char(')'));
    }
    return entries;
}

/// Asks for the context menu at \a position of the tree's viewport and says what it shows; nothing when none comes.
QStringList contextMenuAt(QTreeWidget *tree, const QPoint &position)
{
    QStringList entries;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
            entries = entriesOf(menu);
            menu->close();
        }
    });
    timer.start(1);
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, tree->viewport()->mapToGlobal(position));
    QApplication::sendEvent(tree->viewport(), &event);
    return entries;
}

/// The processor time that a folder with \a count textures takes: to add, to show, to refresh, to select in and to clear.
double secondsForRows(int count)
{
    TableWindow window;
    window.show();
    const std::clock_t start = std::clock();
    window.tree()->expandItem(window.rootRow());
    fileTreeDirectory *folder = window.addFolder(currentROM.root, QStringLiteral("Folder"), 0);
    BulkAdder adder(folder);
    const auto addTexture = [&](int number, int address) {
        auto *texture = new fileTreeFile;
        texture->name = QString::number(number);
        texture->address = address;
        texture->format = QStringLiteral("i8");
        texture->width = texture->height = 4;
        window->addTextureToTree(adder.addFile(texture));
    };
    for (int i = 0; i < count; ++i)
        addTexture(i, i);
    window.tree()->expandItem(folder->treeItem);
    for (int i = 0; i < count / 10; ++i)
        addTexture(count + i, 0);
    QCoreApplication::processEvents();
    window->updateChildrenInTree(currentROM.root);
    window.select(folder->files.at(count / 2));
    window.action(QStringLiteral("New Texture"))->trigger();
    QCoreApplication::processEvents();
    window->clearFileTable();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

void clickHeader(QTreeWidget *tree, int column)
{
    QHeaderView *header = tree->header();
    const QPoint middle(header->sectionViewportPosition(column) + header->sectionSize(column) / 2, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, middle);
}
}

class TestTree : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }
    void init() { QSettings().clear(); }

    void columns();
    void folderRow();
    void textureUnderCollapsedFolderWaits();
    void textureUnderExpandedFolderIsFilledAtOnce();
    void filledRowsAreNotRedrawn();
    void expandingPutsRowsInOrder();
    void cells_data();
    void cells();
    void addressesWithNestedFolders();
    void iconShowsTheTexture();
    void iconOfSmallTextureIsEnlarged();
    void refreshedFolderShowsItsNewName();
    void subtreeIsRefreshedInOrder();
    void nodesWithoutRow();
    void headerClickSorts();
    void widthsSortAsText();
    void selection();
    void emptySelection();
    void newFolder();
    void newTextureInFolder();
    void newTextureBehindSelectedOne();
    void newItemsNeedAFolder();
    void newItemIsSortedIn();
    void deleteTexture();
    void deleteFolder();
    void deleteIsDeclined();
    void deleteNothing();
    void rootStays();
    void deletedFolderTakesItsSelectedTextureAlong();
    void deletionMovesOnToAnotherTexture();
    void contextMenus();
    void activationOpensTheSelectionTab();
    void newWindowHasNoRowsOfAnOldOne();
    void deepTable();
    void deepestRows();
    void manyRows();
    void largePicturesHaveThePlainIcon();
    void deletionLogsTheTypeOnce();
    void columnsAreAsWideAsTheFontNeeds();
};

/// Such an entry is not even decoded: 11000 x 11000 pixels would take half a second at every look.
void TestTree::largePicturesHaveThePlainIcon()
{
    TableWindow window(QByteArray(1025 * 1024, 'x'));
    window.tree()->expandItem(window.rootRow());
    const fileTreeFile *largest = window.addTexture(currentROM.root, "Largest", 0, "i8", 1024, 1024);
    const fileTreeFile *tooLarge = window.addTexture(currentROM.root, "Too large", 0, "i8", 1025, 1024);
    QVERIFY(!showsIcon(largest->treeItem, ":/icons/file"));
    QVERIFY(showsIcon(tooLarge->treeItem, ":/icons/file"));
}

void TestTree::deletionLogsTheTypeOnce()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0);
    window.select(window.addTexture(folder, "Sky", 0));
    BoxAnswer yes("Yes");
    const MessageCapture log;
    window->deleteItem();
    QVERIFY(yes.answered());
    QCOMPARE(log.textsOf("void MainWindow::updateActions()"), QStringList {"1"});
}

void TestTree::columnsAreAsWideAsTheFontNeeds()
{
    const QFont before = QApplication::font();
    for (const int points : {9, 12, 20}) {
        QFont font = before;
        font.setPointSize(points);
        QApplication::setFont(font);
        TableWindow window;
        QCOMPARE(window.tree()->columnWidth(1), 96);
        window.show();
        const QFontMetrics metrics(window.tree()->font());
        for (const int column : {1, 2, 3, 4, 5, 9})
            QVERIFY(window.tree()->columnWidth(column) >= metrics.horizontalAdvance("0x00000000") + 6);
        for (const int column : {6, 7, 8})
            QVERIFY(window.tree()->columnWidth(column) >= metrics.horizontalAdvance("100000") + 6);
        if (points == 9)
            QCOMPARE(window.tree()->columnWidth(1), 96);
        // What the user has chosen stays.
        window.tree()->setColumnWidth(1, 90);
        window->hide();
        window->show();
        QCOMPARE(window.tree()->columnWidth(1), 90);
    }
    QApplication::setFont(before);
}

void TestTree::columns()
{
    TableWindow window;
    const QTreeWidget *tree = window.tree();
    const QStringList names {"File", "Offset", "Offset End", "Address", "Address End",
                             "Size", "Format", "Width",      "Height",  "Palette Address"};
    const QList<int> widths {296, 96, 96, 96, 96, 96, 64, 64, 64, 96};
    QCOMPARE(tree->columnCount(), 10);
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(tree->headerItem()->text(i), names.at(i));
        QCOMPARE(tree->columnWidth(i), widths.at(i));
    }
    QCOMPARE(tree->font().family(), QStringLiteral("Courier"));
    QVERIFY(tree->header()->sectionsClickable());
    QVERIFY(tree->header()->isSortIndicatorShown());
    QCOMPARE(tree->sortColumn(), 1);
    QCOMPARE(tree->header()->sortIndicatorOrder(), Qt::AscendingOrder);
    QCOMPARE(tree->contextMenuPolicy(), Qt::CustomContextMenu);
}

void TestTree::folderRow()
{
    TableWindow window;
    fileTreeDirectory *outer = window.addFolder(currentROM.root, "Outer", 0x1a2b, 0x100);
    QTreeWidgetItem *row = outer->treeItem;
    QVERIFY(showsIcon(row, ":/icons/folder_empty"));
    QVERIFY(showsIcon(window.rootRow(), ":/icons/folder_textures"));
    fileTreeDirectory *inner = window.addFolder(outer, "Inner", 0x10, 0xabc);
    QCOMPARE(row->parent(), window.rootRow());
    QCOMPARE(row->type(), 1002);
    QCOMPARE(row->data(0, 256).typeName(), "fileTreeDirectory*");
    QCOMPARE(row->data(0, 256).value<fileTreeDirectory *>(), outer);
    QVERIFY(showsIcon(row, ":/icons/folder_textures"));
    QCOMPARE(cellsOf(row),
             QStringList({"Outer", "0x00001A2B", "0x00001B2B", "0x00001A2B", "0x00001B2B", "0x00000100", "", "", "", ""}));
    QCOMPARE(inner->treeItem->parent(), row);
    QVERIFY(showsIcon(inner->treeItem, ":/icons/folder_empty"));
    QCOMPARE(cellsOf(inner->treeItem),
             QStringList({"Inner", "0x00000010", "0x00000ACC", "0x00001A3B", "0x000024F7", "0x00000ABC", "", "", "", ""}));
}

void TestTree::textureUnderCollapsedFolderWaits()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0);
    fileTreeFile *texture = window.addTexture(folder, "Sky", 0x20);
    const QTreeWidgetItem *row = texture->treeItem;
    QCOMPARE(row->parent(), folder->treeItem);
    QCOMPARE(row->type(), 1001);
    QCOMPARE(row->data(0, 256).typeName(), "fileTreeFile*");
    QCOMPARE(row->data(0, 256).value<fileTreeFile *>(), texture);
    QCOMPARE(row->data(1, 256), QVariant(false));
    QCOMPARE(cellsOf(row).join(QString()), QString());
    QVERIFY(row->icon(0).isNull());
    QVERIFY(showsIcon(folder->treeItem, ":/icons/folder_textures"));

    window.tree()->expandItem(window.rootRow());
    QCOMPARE(row->text(0), QString());
    window.tree()->expandItem(folder->treeItem);
    QCOMPARE(row->data(1, 256), QVariant(true));
    QCOMPARE(
        cellsOf(row),
        QStringList({"Sky", "0x00000020", "0x00001020", "0x00000020", "0x00001020", "0x00001000", "rgba32", "32", "32", ""}));
    QVERIFY(!row->icon(0).isNull());
}

void TestTree::textureUnderExpandedFolderIsFilledAtOnce()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0);
    window.addTexture(folder, "First", 0);
    window.tree()->expandItem(window.rootRow());
    window.tree()->expandItem(folder->treeItem);
    const fileTreeFile *second = window.addTexture(folder, "Second", 0x40);
    QCOMPARE(second->treeItem->data(1, 256), QVariant(true));
    QCOMPARE(second->treeItem->text(0), QStringLiteral("Second"));
    QCOMPARE(second->treeItem->text(1), QStringLiteral("0x00000040"));
}

void TestTree::filledRowsAreNotRedrawn()
{
    TableWindow window;
    fileTreeFile *texture = window.addTexture(currentROM.root, "Sky", 0);
    window.tree()->expandItem(window.rootRow());
    texture->name = "Sea";
    window.tree()->collapseItem(window.rootRow());
    const fileTreeFile *waiting = window.addTexture(currentROM.root, "Sun", 0);
    window.tree()->expandItem(window.rootRow());
    QCOMPARE(texture->treeItem->text(0), QStringLiteral("Sky"));
    QCOMPARE(waiting->treeItem->text(0), QStringLiteral("Sun"));
    window->updateTextureInTree(texture);
    QCOMPARE(texture->treeItem->text(0), QStringLiteral("Sea"));
}

void TestTree::expandingPutsRowsInOrder()
{
    TableWindow window;
    window.addTexture(currentROM.root, "B", 0x300);
    window.addFolder(currentROM.root, "Folder", 0x200);
    window.addTexture(currentROM.root, "A", 0x100);
    window.tree()->expandItem(window.rootRow());
    QCOMPARE(namesBelow(window.rootRow()), QStringList({"A", "Folder", "B"}));
}

void TestTree::cells_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<QStringList>("expected"); // from Offset to Palette Address

    QTest::newRow("direct colour") << "rgb5a1" << 0x1a2b << 16 << 8
                                   << QStringList({"0x00001A2B", "0x00001B2B", "0x00001A2B", "0x00001B2B", "0x00000100", "rgb5a1",
                                                   "16", "8", ""});
    QTest::newRow("palette") << "ci4" << 0x10 << 16 << 16
                             << QStringList({"0x00000010", "0x00000090", "0x00000010", "0x00000090", "0x00000080", "ci4", "16",
                                             "16", "0x0000ABCD"});
    QTest::newRow("no jpeg there") << "jpeg" << 0x10 << 16 << 16
                                   << QStringList({"0x00000010", "", "0x00000010", "", "", "jpeg", "", "", ""});
    QTest::newRow("jpeg in capitals is unknown, but without dimensions")
        << "JPEG" << 0x10 << 16 << 16 << QStringList({"0x00000010", "", "0x00000010", "", "", "JPEG", "", "", ""});
    QTest::newRow("unknown format") << "dxt1" << 0x10 << 16 << 12
                                    << QStringList({"0x00000010", "", "0x00000010", "", "", "dxt1", "16", "12", ""});
    QTest::newRow("palette format in capitals is unknown")
        << "CI8" << 0x10 << 16 << 12 << QStringList({"0x00000010", "", "0x00000010", "", "", "CI8", "16", "12", ""});
    QTest::newRow("negative size") << "i8" << 0x10 << -16 << 12
                                   << QStringList({"0x00000010", "", "0x00000010", "", "", "i8", "-16", "12", ""});
    QTest::newRow("negative address") << "i8" << -1 << 16 << 16
                                      << QStringList({"0xFFFFFFFF", "0x000000FF", "0xFFFFFFFF", "0x000000FF", "0x00000100", "i8",
                                                      "16", "16", ""});
    QTest::newRow("largest values") << "rgba32" << INT_MAX << INT_MAX << INT_MAX
                                    << QStringList({"0x7FFFFFFF", "0x80000003", "0x7FFFFFFF", "0x80000003", "0x00000004",
                                                    "rgba32", "2147483647", "2147483647", ""});
}

void TestTree::cells()
{
    QFETCH(QString, format);
    QFETCH(int, address);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(QStringList, expected);
    QByteArray image = cartridgeImage(64 * 1024);
    image.replace(0x10, 2, QByteArray(2, '\0')); // certainly no JPEG
    TableWindow window(image);
    fileTreeFile *texture = window.addTexture(currentROM.root, "Sky", address, format, width, height);
    texture->paletteAddress = 0xabcd;
    window->updateTextureInTree(texture);
    QStringList cells = cellsOf(texture->treeItem);
    QCOMPARE(cells.takeFirst(), QStringLiteral("Sky"));
    QCOMPARE(cells, expected);
    QCOMPARE(texture->treeItem->toolTip(9), expected.last());
    if (expected.at(1).isEmpty())
        QVERIFY(showsIcon(texture->treeItem, ":/icons/file"));

    texture->format = "i8";
    window->updateTextureInTree(texture);
    QCOMPARE(texture->treeItem->text(9), QString());
    QCOMPARE(texture->treeItem->toolTip(9), QString());
}

void TestTree::addressesWithNestedFolders()
{
    TableWindow window;
    currentROM.root->address = 0x5000; // does not count
    fileTreeDirectory *outer = window.addFolder(currentROM.root, "Outer", 0x100);
    fileTreeDirectory *inner = window.addFolder(outer, "Inner", 0x40);
    fileTreeFile *texture = window.addTexture(inner, "Sky", 0x10, "ci4", 16, 16);
    texture->paletteAddress = 0x20;
    window->updateTextureInTree(texture);
    QCOMPARE(cellsOf(texture->treeItem),
             QStringList(
                 {"Sky", "0x00000010", "0x00000090", "0x00000150", "0x000001D0", "0x00000080", "ci4", "16", "16", "0x00000020"}));
}

void TestTree::iconShowsTheTexture()
{
    // 16 x 8 pixels: the upper four rows red, the lower four blue, half transparent.
    QByteArray image = cartridgeImage(64 * 1024);
    QByteArray pixels;
    for (int i = 0; i < 16 * 4; ++i)
        pixels += QByteArray::fromHex("FF0000FF");
    for (int i = 0; i < 16 * 4; ++i)
        pixels += QByteArray::fromHex("0000FF80");
    image.replace(0x1000, pixels.size(), pixels);
    TableWindow window(image);
    fileTreeFile *texture = window.addTexture(currentROM.root, "Sky", 0x1000, "rgba32", 16, 8);
    window->updateTextureInTree(texture);
    const QImage icon = iconImage(texture->treeItem);
    QCOMPARE(icon.size(), QSize(16, 16));
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            QRgb expected = qRgba(0, 0, 0, 0);
            if (y >= 4 && y < 8)
                expected = qRgba(255, 0, 0, 255);
            else if (y >= 8 && y < 12)
                expected = qRgba(0, 0, 255, 128);
            QCOMPARE(icon.pixel(x, y), expected);
        }
    }
}

void TestTree::iconOfSmallTextureIsEnlarged()
{
    QByteArray image = cartridgeImage(64 * 1024);
    image.replace(0x1000, 4 * 8, QByteArray(4 * 8, '\x80')); // grey
    TableWindow window(image);
    fileTreeFile *texture = window.addTexture(currentROM.root, "Sky", 0x1000, "i8", 4, 8);
    window->updateTextureInTree(texture);
    const QImage icon = iconImage(texture->treeItem);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x)
            QCOMPARE(qAlpha(icon.pixel(x, y)) != 0, x >= 4 && x < 12);
    }
}

void TestTree::refreshedFolderShowsItsNewName()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Old", 0);
    folder->name = "New";
    folder->size = 0x20;
    window->updateDirectoryInTree(folder);
    QCOMPARE(folder->treeItem->text(0), QStringLiteral("New"));
    QCOMPARE(folder->treeItem->text(5), QStringLiteral("0x00000020"));
}

void TestTree::subtreeIsRefreshedInOrder()
{
    TableWindow window;
    fileTreeDirectory *top = window.addFolder(currentROM.root, "Top", 0);
    fileTreeDirectory *first = window.addFolder(top, "First", 0);
    fileTreeDirectory *nested = window.addFolder(first, "Nested", 0);
    fileTreeDirectory *second = window.addFolder(top, "Second", 0);
    addLoggingTexture(&window, second, 50);
    addLoggingTexture(&window, nested, 40);
    addLoggingTexture(&window, first, 30);
    addLoggingTexture(&window, top, 10);
    addLoggingTexture(&window, top, 20);
    addLoggingTexture(&window, currentROM.root, 60);
    for (fileTreeDirectory *folder : {top, first, nested, second})
        folder->size = 0x77;
    const MessageCapture log;
    window->updateChildrenInTree(top);
    QCOMPARE(log.texts(), QStringList({"10", "20", "30", "40", "50"}));
    for (const fileTreeDirectory *folder : {top, first, nested, second})
        QCOMPARE(folder->treeItem->text(5), QStringLiteral("0x00000077"));
}

void TestTree::nodesWithoutRow()
{
    TableWindow window;
    auto *folder = new fileTreeDirectory;
    currentROM.root->addDirectory(folder); // listed, but no row
    fileTreeFile *texture = window.addTexture(folder, "Sky", 0);
    const fileTreeDirectory *inner = window.addFolder(folder, "Inner", 0);
    QVERIFY(!texture->treeItem);
    QVERIFY(!inner->treeItem);
    QCOMPARE(window.rootRow()->childCount(), 0);
    window->updateTextureInTree(texture);
    window->updateDirectoryInTree(folder);
    window->updateChildrenInTree(currentROM.root);

    currentROM.lastSelectedFolder = folder;
    currentROM.selectedType = MainWindow::FolderSelected;
    window->addFile();
    window->addTexture();
    QCOMPARE(folder->directories.size(), 2);
    QCOMPARE(folder->files.size(), 2);
    QVERIFY(!folder->files.last()->treeItem);

    currentROM.lastSelectedTexture = texture;
    currentROM.selectedType = MainWindow::TextureSelected;
    window->updateSelectedInfo();
    BoxAnswer yes("Yes");
    window->deleteItem();
    QVERIFY(yes.answered());
    QVERIFY(yes.answered());
    QCOMPARE(folder->files.size(), 1);
    QVERIFY(!currentROM.lastSelectedTexture);
}

void TestTree::headerClickSorts()
{
    TableWindow window;
    window.show();
    window.tree()->expandItem(window.rootRow());
    window.addTexture(currentROM.root, "b", 0x300);
    window.addTexture(currentROM.root, "a", 0xA0);
    window.addTexture(currentROM.root, "c", 0x99);
    window.addFolder(currentROM.root, "d", 0x9A);
    {
        const MessageCapture log;
        clickHeader(window.tree(), 0);
        QCOMPARE(log.texts(), QStringList({"sorting"}));
    }
    const bool ascending = window.tree()->header()->sortIndicatorOrder() == Qt::AscendingOrder;
    const QStringList up {"a", "b", "c", "d"};
    const QStringList down {"d", "c", "b", "a"};
    QCOMPARE(window.tree()->sortColumn(), 0);
    QCOMPARE(namesBelow(window.rootRow()), ascending ? up : down);
    clickHeader(window.tree(), 0);
    QCOMPARE(window.tree()->header()->sortIndicatorOrder() == Qt::AscendingOrder, !ascending);
    QCOMPARE(namesBelow(window.rootRow()), ascending ? down : up);

    window.tree()->header()->setSortIndicator(1, Qt::AscendingOrder);
    window->sortTreeView(1);
    QCOMPARE(namesBelow(window.rootRow()), QStringList({"c", "d", "a", "b"}));
    window.tree()->header()->setSortIndicator(1, Qt::DescendingOrder);
    window->sortTreeView(1);
    QCOMPARE(namesBelow(window.rootRow()), QStringList({"b", "a", "d", "c"}));
}

void TestTree::widthsSortAsText()
{
    TableWindow window;
    window.tree()->expandItem(window.rootRow());
    window.addTexture(currentROM.root, "wide", 0, "i8", 128, 1);
    window.addTexture(currentROM.root, "narrow", 0, "i8", 16, 1);
    window.addTexture(currentROM.root, "small", 0, "i8", 4, 1);
    window.tree()->header()->setSortIndicator(7, Qt::AscendingOrder);
    window->sortTreeView(7);
    QCOMPARE(namesBelow(window.rootRow()), QStringList({"wide", "narrow", "small"}));
}

void TestTree::selection()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0);
    fileTreeFile *texture = window.addTexture(folder, "Sky", 0);
    window.select(texture);
    QCOMPARE(currentROM.selectedType, 2);
    QCOMPARE(currentROM.lastSelectedTexture, texture);
    QCOMPARE(currentROM.lastSelectedFolder, folder);
    QCOMPARE(window->selectedItemType(), QStringLiteral("texture"));
    QVERIFY(window.action("New Texture")->isEnabled());

    window.select(currentROM.root);
    QCOMPARE(currentROM.selectedType, 1);
    QCOMPARE(currentROM.lastSelectedTexture, texture);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
    QCOMPARE(window->selectedItemType(), QStringLiteral("folder"));
    QVERIFY(!window.action("Delete")->isEnabled());
}

void TestTree::emptySelection()
{
    TableWindow window;
    fileTreeFile *texture = window.addTexture(currentROM.root, "Sky", 0);
    window.select(texture);
    const MessageCapture log;
    window.tree()->clearSelection();
    QCOMPARE(log.texts().count("No item selected in treeWidget"), 1);
    QCOMPARE(currentROM.selectedType, 0);
    QVERIFY(!currentROM.lastSelectedTexture);
    QVERIFY(!currentROM.lastSelectedFolder);
    QCOMPARE(window->selectedItemType(), QStringLiteral("none"));
    QVERIFY(!window.action("New Folder")->isEnabled());
}

void TestTree::newFolder()
{
    TableWindow window;
    fileTreeDirectory *parent = window.addFolder(currentROM.root, "Parent", 0);
    window.select(parent);
    QVERIFY(!window.noticeIsShown());
    const MessageCapture log;
    window.action("New Folder")->trigger();
    window.select(parent);
    window.action("New Folder")->trigger();
    QCOMPARE(parent->directories.size(), 2);
    const fileTreeDirectory *second = parent->directories.last();
    QCOMPARE(second->name, QStringLiteral("New Folder (2)"));
    QCOMPARE(second->size, 64 * 1024);
    QCOMPARE(window.tree()->currentItem(), second->treeItem);
    QCOMPARE(currentROM.lastSelectedFolder, second);
    QVERIFY(window.noticeIsShown());
    QCOMPARE(log.texts().filter("New Folder"), QStringList({"\"New Folder\"", "\"New Folder (2)\""}));
}

void TestTree::newTextureInFolder()
{
    TableWindow window;
    window.select(window.addTexture(currentROM.root, "Other", 0x40, "ci8", 8, 8));
    window.select(currentROM.root);
    const MessageCapture log;
    window.action("New Texture")->trigger();
    const fileTreeFile *texture = currentROM.root->files.last();
    QCOMPARE(texture->name, QStringLiteral("New Texture"));
    QCOMPARE(texture->format, QStringLiteral("rgba32"));
    QCOMPARE(texture->address, 0);
    QCOMPARE(texture->width, 32);
    QCOMPARE(window.tree()->currentItem(), texture->treeItem);
    QCOMPARE(currentROM.lastSelectedTexture, texture);
    QVERIFY(window.noticeIsShown());
    QVERIFY(log.texts().contains("\"New Texture\""));
}

void TestTree::newTextureBehindSelectedOne()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0x100);
    fileTreeFile *texture = window.addTexture(folder, "Sky", 0x40, "ci8", 24, 8);
    texture->paletteAddress = 0x900;
    window.select(texture);
    window.action("New Texture")->trigger();
    QCOMPARE(folder->files.size(), 2);
    const fileTreeFile *added = folder->files.last();
    QCOMPARE(added->address, 0x40 + 24 * 8);
    QCOMPARE(added->format, QStringLiteral("ci8"));
    QCOMPARE(added->width, 24);
    QCOMPARE(added->height, 8);
    QCOMPARE(added->paletteAddress, 0x900);
    QCOMPARE(added->name, QStringLiteral("New Texture"));
    QCOMPARE(currentROM.lastSelectedTexture, added);
}

void TestTree::newItemsNeedAFolder()
{
    TableWindow window;
    window->addFile();
    window->addTexture();
    QVERIFY(currentROM.root->directories.isEmpty());
    QVERIFY(currentROM.root->files.isEmpty());
    QVERIFY(!window.noticeIsShown());
}

void TestTree::newItemIsSortedIn()
{
    TableWindow window;
    window.tree()->expandItem(window.rootRow());
    window.addTexture(currentROM.root, "Last", 0x500);
    fileTreeFile *first = window.addTexture(currentROM.root, "First", 0x100, "i8", 16, 16);
    window.select(first);
    window.action("New Texture")->trigger(); // at 0x200
    QCOMPARE(namesBelow(window.rootRow()), QStringList({"First", "New Texture", "Last"}));
    window.select(currentROM.root);
    window.action("New Folder")->trigger(); // at 0
    QCOMPARE(namesBelow(window.rootRow()), QStringList({"New Folder", "First", "New Texture", "Last"}));
}

void TestTree::deleteTexture()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0);
    fileTreeFile *texture = window.addTexture(folder, "Sky", 0);
    window.select(texture);
    BoxAnswer yes("Yes");
    window.action("Delete")->trigger();
    QVERIFY(yes.answered());
    QCOMPARE(yes.title, QStringLiteral("Delete"));
    QCOMPARE(yes.text, QStringLiteral("Are you sure that you want to delete the selected texture?"));
    QCOMPARE(yes.icon, QMessageBox::Question);
    QVERIFY(folder->files.isEmpty());
    QVERIFY(!texture->treeItem);
    QCOMPARE(folder->treeItem->childCount(), 0);
    QVERIFY(showsIcon(folder->treeItem, ":/icons/folder_empty"));
    QVERIFY(!currentROM.lastSelectedTexture);
    QCOMPARE(currentROM.lastSelectedFolder, folder);
    QCOMPARE(currentROM.selectedType, 1);
    QVERIFY(window.noticeIsShown());
    QCOMPARE(window.find<QLineEdit>("texturePath")->text(), QString());
    QCOMPARE(window.find<QLineEdit>("folderPath")->text(), QStringLiteral("Root/Folder"));
}

void TestTree::deleteFolder()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0);
    fileTreeDirectory *inner = window.addFolder(folder, "Inner", 0);
    fileTreeFile *texture = window.addTexture(inner, "Sky", 0);
    fileTreeDirectory *other = window.addFolder(currentROM.root, "Other", 0x10);
    window.select(folder);
    BoxAnswer yes("Yes");
    window->deleteItem();
    QVERIFY(yes.answered());
    QVERIFY(yes.answered());
    QCOMPARE(yes.text, QStringLiteral("Are you sure that you want to delete the selected folder?"));
    QCOMPARE(currentROM.root->directories, QList<fileTreeDirectory *>({other}));
    QCOMPARE(window.rootRow()->childCount(), 1);
    for (const QTreeWidgetItem *row : {folder->treeItem, inner->treeItem, texture->treeItem})
        QVERIFY(!row);
    // The objects stay, and so does what they hold.
    QCOMPARE(folder->directories, QList<fileTreeDirectory *>({inner}));
    QCOMPARE(inner->files, QList<fileTreeFile *>({texture}));
    QVERIFY(currentROM.lastSelectedFolder != folder);
    QCOMPARE(window.find<QLineEdit>("folderPath")->text(),
             currentROM.lastSelectedFolder == other ? QStringLiteral("Root/Other") : QStringLiteral("Root"));

    // An entry that still joins the deleted folder gets no row.
    QVERIFY(!window.addTexture(inner, "Sea", 0)->treeItem);
}

void TestTree::deleteIsDeclined()
{
    TableWindow window;
    fileTreeFile *texture = window.addTexture(currentROM.root, "Sky", 0);
    window.select(texture);
    for (const QString &button : {QStringLiteral("No"), QString()}) {
        BoxAnswer answer(button);
        window->deleteItem();
        QVERIFY(answer.answered());
    }
    // No is what Return presses.
    DialogAnswer<QMessageBox> answer([](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Return); });
    window->deleteItem();
    QVERIFY(answer.answered());
    QCOMPARE(currentROM.root->files.size(), 1);
    QCOMPARE(currentROM.lastSelectedTexture, texture);
    QVERIFY(!window.noticeIsShown());
}

void TestTree::deleteNothing()
{
    TableWindow window;
    window.addTexture(currentROM.root, "Sky", 0);
    window.find<QLineEdit>("textureName")->setText("stale");
    BoxAnswer yes("Yes");
    window->deleteItem();
    QVERIFY(yes.answered());
    QCOMPARE(yes.text, QStringLiteral("Are you sure that you want to delete the selected none?"));
    QCOMPARE(currentROM.root->files.size(), 1);
    // The panels are brought up to date, and the notice shows.
    QCOMPARE(window.find<QLineEdit>("textureName")->text(), QString());
    QVERIFY(window.noticeIsShown());
}

void TestTree::rootStays()
{
    TableWindow window;
    window.select(currentROM.root);
    QVERIFY(!window.action("Delete")->isEnabled());
    BoxAnswer yes("Yes");
    window->deleteItem();
    QVERIFY(yes.answered());
    QCOMPARE(window.tree()->topLevelItemCount(), 1);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
    QVERIFY(!window.noticeIsShown());
}

void TestTree::deletedFolderTakesItsSelectedTextureAlong()
{
    TableWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0);
    fileTreeDirectory *inner = window.addFolder(folder, "Inner", 0);
    fileTreeFile *texture = window.addTexture(inner, "Sky", 0);
    window.select(texture);
    window.select(folder);
    QCOMPARE(currentROM.lastSelectedTexture, texture);
    BoxAnswer yes("Yes");
    window->deleteItem();
    QVERIFY(yes.answered());
    QVERIFY(!currentROM.lastSelectedTexture);
    QCOMPARE(window.find<QLineEdit>("textureName")->text(), QString());
    QVERIFY(!window.find<QPushButton>("textureSave")->isEnabled());
}

void TestTree::deletionMovesOnToAnotherTexture()
{
    TableWindow window;
    window.tree()->expandItem(window.rootRow());
    fileTreeFile *first = window.addTexture(currentROM.root, "First", 0);
    fileTreeFile *second = window.addTexture(currentROM.root, "Second", 0x10);
    window.select(first);
    BoxAnswer yes("Yes");
    window->deleteItem();
    QVERIFY(yes.answered());
    QCOMPARE(currentROM.root->files, QList<fileTreeFile *>({second}));
    // Whatever row is current now, the pointers and the panels say the same.
    if (window.tree()->currentItem() == second->treeItem) {
        QCOMPARE(currentROM.selectedType, 2);
        QCOMPARE(currentROM.lastSelectedTexture, second);
        QCOMPARE(window.find<QLineEdit>("textureName")->text(), QStringLiteral("Second"));
    } else {
        QCOMPARE(window.tree()->currentItem(), window.rootRow());
        QCOMPARE(currentROM.selectedType, 1);
        QVERIFY(!currentROM.lastSelectedTexture);
        QCOMPARE(window.find<QLineEdit>("textureName")->text(), QString());
    }
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
    QCOMPARE(window.find<QLineEdit>("folderName")->text(), QStringLiteral("Root"));
}

void TestTree::contextMenus()
{
    TableWindow window;
    fileTreeFile *texture = window.addTexture(currentROM.root, "Sky", 0);
    window.show();
    QTreeWidget *tree = window.tree();
    tree->expandItem(window.rootRow());
    QCoreApplication::processEvents();
    QCOMPARE(contextMenuAt(tree, QPoint(10, tree->viewport()->height() - 5)), QStringList());

    window.select(texture);
    QCOMPARE(contextMenuAt(tree, tree->visualItemRect(texture->treeItem).center()),
             QStringList({"Import Image", "Extract", "-", "Import Folder", "Import Texture Pack", "-", "Delete"}));
    window.select(currentROM.root);
    QCOMPARE(contextMenuAt(tree, tree->visualItemRect(window.rootRow()).center()),
             QStringList({"Find Texture", "Extract", "-", "Import Folder", "Import Texture Pack", "-", "New Folder",
                          "New Texture", "-", "(Delete)"}));
}

void TestTree::activationOpensTheSelectionTab()
{
    TableWindow window;
    window.show();
    auto *tabs = window->findChild<QTabWidget *>();
    QVERIFY(tabs);
    tabs->setTabEnabled(1, true);
    tabs->setCurrentIndex(1);
    window.select(currentROM.root);
    QTest::keyClick(window.tree(), Qt::Key_Return);
    QCOMPARE(tabs->currentIndex(), 0);
}

void TestTree::newWindowHasNoRowsOfAnOldOne()
{
    fileTreeDirectory *folder = nullptr;
    fileTreeFile *texture = nullptr;
    {
        TableWindow old;
        folder = old.addFolder(currentROM.root, "Folder", 0);
        texture = old.addTexture(folder, "Sky", 0);
    }
    MainWindow window;
    QVERIFY(!currentROM.root->treeItem);
    QVERIFY(!folder->treeItem);
    QVERIFY(!texture->treeItem);
}

/// Far deeper than any stack would stand.
void TestTree::deepTable()
{
    TableWindow window;
    fileTreeDirectory *deepest = currentROM.root;
    fileTreeDirectory *beyond = nullptr;
    for (int level = 1; level <= 100000; ++level) {
        deepest = deepest->addDirectory(new fileTreeDirectory);
        if (level <= MainWindow::deepestFolderRow + 1)
            window->addDirectoryToTree(deepest);
        if (level == MainWindow::deepestFolderRow)
            QVERIFY(deepest->treeItem);
        if (level == MainWindow::deepestFolderRow + 1)
            beyond = deepest;
    }
    QVERIFY(!beyond->treeItem);
    QVERIFY(window.addTexture(beyond->parent, "Sky", 0)->treeItem);
    QVERIFY(!window.addTexture(beyond, "Sky", 0)->treeItem);
    beyond->parent->size = 0x77;
    beyond->parent->address = 0; // keeps its real address at hand
    window->updateChildrenInTree(currentROM.root);
    QCOMPARE(beyond->parent->treeItem->text(5), QStringLiteral("0x00000077"));

    window.select(currentROM.root->directories.first());
    BoxAnswer yes("Yes");
    window->deleteItem();
    QVERIFY(yes.answered());
    QVERIFY(currentROM.root->directories.isEmpty());
    QVERIFY(!beyond->parent->treeItem);
}

/// The deepest rows can be shown, sorted, selected and freed.
void TestTree::deepestRows()
{
    TableWindow window;
    window.show();
    fileTreeDirectory *deepest = currentROM.root;
    for (int level = 1; level <= MainWindow::deepestFolderRow; ++level)
        deepest = window.addFolder(deepest, "Folder", 0);
    window.tree()->expandAll();
    window->sortTreeView(1);
    window.select(deepest);
    QCoreApplication::processEvents();
    QCOMPARE(currentROM.lastSelectedFolder, deepest);
    QVERIFY(!window.tree()->grab().isNull());
    window.tree()->collapseAll();
    QCoreApplication::processEvents();
    window->clearFileTable();
    QCOMPARE(window.rootRow()->childCount(), 0);
}

/// Four times the rows may cost little more than four times the work; visiting all siblings for every row costs sixteen times.
void TestTree::manyRows()
{
    constexpr int few = 10000;
    const double forFew = secondsForRows(few);
    const double forMany = secondsForRows(4 * few);
    QVERIFY2(forMany < 10 * forFew, qPrintable(QStringLiteral("%1 s, then %2 s").arg(forFew).arg(forMany)));
}

QTEST_MAIN(TestTree)
#include "tst_tree.moc"
