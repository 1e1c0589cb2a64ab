// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"
#include "codec/texturemanipulator.h"
#include "support/dialogs.h"
#include "support/images.h"
#include "support/messages.h"
#include "support/pictures.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <functional>
#include <memory>

namespace
{
const QString insertTextureSignature = QStringLiteral("void MainWindow::insertTexture(QString, fileTreeFile*)");
const QString importTextureSignature = QStringLiteral("void MainWindow::importTexture(QImage, int, QString, QByteArray)");
const QString iterateFolderSignature =
    QStringLiteral("void MainWindow::iterateFolder(QString, fileTreeDirectory*, QProgressDialog*, QString*)");
const QString conversionError =
    QStringLiteral("There was an error with the texture converision: Incorrect length. Texture was not imported");
}

/// The window's own part of moving pictures in and out: what it asks, shows and remembers.
class TransferTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void importTextureWritesAndMarksTheWindow();
    void importTextureReportsAnUnsupportedFormat();
    void importTextureReportsAPictureWithoutBytes();
    void importTextureOutsideTheImage_data();
    void importTextureOutsideTheImage();

    void replaceNeedsASelectedTexture();
    void replaceNeedsACompleteEntry();
    void replaceWarnsOfAnUnknownFormat();
    void replaceAsksForAPicture_data();
    void replaceAsksForAPicture();
    void replaceCancelled();
    void insertWritesShowsAndRefreshes();
    void insertOfAnUnselectedTextureLeavesThePreview();
    void sizeQuestionTexts();
    void rootFolderIsRememberedWithOneSlash();
    void sizeQuestionAborted_data();
    void sizeQuestionAborted();
    void sizeQuestionIgnoresTheAspectRatio();
    void sizeQuestionKeepsTheAspectRatio();
    void insertOfATrueColourPictureKeepsThePalette();
    void insertOfManyColoursWritesAPalette();
    void insertLogsWhatIsDropped();
    void insertOfABrokenPicture();
    void insertOfAnUnreadableFileWritesThePalette();
    void insertOfAJpeg();
    void insertWithoutATexture();
    void insertRefreshesWhatTouches();
    void slotsAreCalledByName();

    void saveTextureAsksForAFile_data();
    void saveTextureAsksForAFile();
    void saveTextureCancelled();
    void saveTextureOfAnUnknownFormat();
    void saveTextureThatCannotBeExtracted();
    void saveTextureThatCannotBeWritten();
    void extractTextureLogs();
    void saveFolderAsksForADirectory();
    void saveFolderCancelled();
    void saveTextureWithoutASelection();
    void selectedFolderGoesBeforeAnEarlierTexture();

    void importFolderReplacesByName();
    void importFolderCancelled();
    void importFolderReportsWhatItLeftOut();
    void importFolderShowsItsProgress();
    void importFolderWithoutAFolder();
    void iterateFolderMovesAProgressDialogOn();
    void countFilesCounts();

    void texturePackAddsFoldersAndPictures();
    void texturePackShowsItsFolderInThePanel();
    void clearedTableLeavesNothingOfThePack();
    void texturePackTakesTheHighlight();
    void texturePackCancelled();
    void texturePackWithoutFoldersChangesNothing();

private:
    QString path(const QString &name = {}) const { return m_folder->filePath(name); }
    QString savedPicture(const QString &name, const QImage &picture) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        picture.save(path(name), "PNG");
        return path(name);
    }
    QString status() const { return m_window->statusBar()->currentMessage(); }
    QString fileDialogPath() const { return QSettings().value("fileDialogPath").toString(); }
    fileTreeDirectory *addFolder(fileTreeDirectory *parent, const QString &name, int address = 0)
    {
        auto *folder = new fileTreeDirectory;
        folder->name = name;
        folder->address = address;
        parent->addDirectory(folder);
        m_window->addDirectoryToTree(folder);
        folder->treeItem->setExpanded(true);
        return folder;
    }
    fileTreeFile *addTexture(fileTreeDirectory *folder, const QString &name, int address, const QString &format, int width = 4,
                             int height = 4, int paletteAddress = 0)
    {
        auto *texture = new fileTreeFile;
        texture->name = name;
        texture->address = address;
        texture->format = format;
        texture->width = width;
        texture->height = height;
        texture->paletteAddress = paletteAddress;
        folder->addFile(texture);
        m_window->addTextureToTree(texture);
        return texture;
    }
    void select(QTreeWidgetItem *row) { m_window->findChild<QTreeWidget *>()->setCurrentItem(row); }
    QByteArray bytes(int address, int size) const { return currentROM.data.mid(address, size); }

    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TransferTest::initTestCase()
{
    QCoreApplication::setOrganizationName("Brimholt");
    QCoreApplication::setApplicationName("Quillary");
}

void TransferTest::init()
{
    QSettings().clear();
    m_folder = std::make_unique<QTemporaryDir>();
    loadIntoCurrentROM(QByteArray(0x10000, '\x11'));
    m_window = std::make_unique<MainWindow>();
    m_window->addDirectoryToTree(currentROM.root);
    currentROM.root->treeItem->setExpanded(true);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_window->statusBar()->clearMessage();
}

void TransferTest::cleanup()
{
    m_window->setWindowModified(false);
    currentROM.autosave = false;
    m_window.reset();
    QVERIFY(!QApplication::overrideCursor());
    resetCurrentROM();
}

void TransferTest::importTextureWritesAndMarksTheWindow()
{
    MessageCapture log;
    m_window->importTexture(plainPicture(2, 1, qRgba(1, 2, 3, 4)), 0x100, "rgba32", QByteArray());
    QCOMPARE(bytes(0xFF, 10).toHex(), QByteArray("11010203040102030411"));
    QVERIFY(m_window->isWindowModified());
    QCOMPARE(log.textsOf(importTextureSignature), QStringList({"8 textureData.length()"}));
    QVERIFY(log.all().first().file.contains("mainwindow"));
    m_window->setWindowModified(false);
    m_window->importTexture(QImage(), 0x100, "jpeg", "");
    QVERIFY(m_window->isWindowModified());
    QCOMPARE(status(), QString());
}

void TransferTest::importTextureReportsAnUnsupportedFormat()
{
    const QByteArray before = currentROM.data;
    m_window->importTexture(plainPicture(1, 1, 0), 0x100, "RGBA32", QByteArray());
    QCOMPARE(status(), QStringLiteral("The texture is using an unsupported format. Texture was not imported"));
    QCOMPARE(currentROM.data, before);
    QVERIFY(!m_window->isWindowModified());
}

void TransferTest::importTextureReportsAPictureWithoutBytes()
{
    const QByteArray before = currentROM.data;
    MessageCapture log;
    m_window->importTexture(QImage(), 0x100, "i8", QByteArray());
    QCOMPARE(status(), conversionError);
    QCOMPARE(log.textsOf(importTextureSignature), QStringList({"0 textureData.length()", conversionError}));
    QCOMPARE(currentROM.data, before);
    QVERIFY(!m_window->isWindowModified());
}

void TransferTest::importTextureOutsideTheImage_data()
{
    QTest::addColumn<int>("address");
    QTest::newRow("negative") << -4;
    QTest::newRow("far behind the end") << 0x7FFFFFFF;
}

void TransferTest::importTextureOutsideTheImage()
{
    QFETCH(int, address);
    const QByteArray before = currentROM.data;
    m_window->importTexture(plainPicture(1, 1, 0), address, "rgba32", QByteArray());
    QCOMPARE(status(), conversionError);
    QCOMPARE(currentROM.data, before);
    QVERIFY(!m_window->isWindowModified());
}

void TransferTest::replaceNeedsASelectedTexture()
{
    m_window->replaceTexture();
    QCOMPARE(status(), QStringLiteral("You must select a texture in the list to import over"));
}

void TransferTest::replaceNeedsACompleteEntry()
{
    currentROM.lastSelectedTexture = addTexture(currentROM.root, "a", 0x100, "i8", 0, 4);
    m_window->replaceTexture();
    QCOMPARE(status(), QStringLiteral("The selected texture is missing data"));
}

void TransferTest::replaceWarnsOfAnUnknownFormat()
{
    currentROM.lastSelectedTexture = addTexture(currentROM.root, "a", 0x100, "<b>rgb565</b>");
    BoxAnswer box("OK");
    bool boxWasFirst = false;
    connect(m_window->statusBar(), &QStatusBar::messageChanged, this, [&] { boxWasFirst = box.answered(); });
    m_window->replaceTexture();
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("Quillary"));
    QCOMPARE(box.text, QStringLiteral("Texture format <b>rgb565</b> is not supported, can't import texture."));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QStringList({"OK"}));
    QVERIFY(boxWasFirst);
    QCOMPARE(status(), QStringLiteral("Texture format <b>rgb565</b> is not supported, can't import texture"));
}

void TransferTest::replaceAsksForAPicture_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("filter");
    QTest::newRow("png") << "rgba32"
                         << "Image (*.png)";
    QTest::newRow("jpeg") << "jpeg"
                          << "Image (*.jpeg)";
}

void TransferTest::replaceAsksForAPicture()
{
    QFETCH(QString, format);
    QFETCH(QString, filter);
    const bool isJpeg = format == "jpeg";
    currentROM.lastSelectedTexture = addTexture(currentROM.root, "a", 0x100, format, 2, 1);
    QVERIFY(QDir(path()).mkpath("before"));
    QString file = savedPicture("chosen/a.png", plainPicture(2, 1, qRgba(1, 2, 3, 4)));
    if (isJpeg) {
        file = path("chosen/a.jpeg");
        QVERIFY(writeBytes(file, jpegBytes(8, 8)));
    }
    QSettings().setValue("fileDialogPath", path("before") + '/');
    FileDialogAnswer dialog(file);
    m_window->replaceTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(dialog.title, QStringLiteral("Choose texture"));
    QCOMPARE(dialog.directory, path("before"));
    QCOMPARE(dialog.filters, QStringList({filter}));
    QCOMPARE(dialog.acceptMode, QFileDialog::AcceptOpen);
    QCOMPARE(dialog.fileMode, QFileDialog::ExistingFile);
    QCOMPARE(status(), QStringLiteral("Texture imported"));
    QCOMPARE(fileDialogPath(), path("chosen") + '/');
    const QByteArray expected = isJpeg ? jpegBytes(8, 8) : QByteArray::fromHex("0102030401020304");
    QCOMPARE(bytes(0xFF, expected.size() + 2), '\x11' + expected + '\x11');
    QVERIFY(m_window->isWindowModified());
}

void TransferTest::replaceCancelled()
{
    currentROM.lastSelectedTexture = addTexture(currentROM.root, "a", 0x100, "rgba32");
    QSettings().setValue("fileDialogPath", path() + '/');
    FileDialogAnswer dialog("");
    m_window->replaceTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(status(), QStringLiteral("Could not import texture"));
    QCOMPARE(fileDialogPath(), path() + '/');
    QVERIFY(!m_window->isWindowModified());
}

void TransferTest::insertWritesShowsAndRefreshes()
{
    fileTreeDirectory *folder = addFolder(currentROM.root, "Sky", 0x100);
    fileTreeFile *texture = addTexture(folder, "cloud", 0x20, "rgba32");
    select(texture->treeItem);
    QCOMPARE(currentROM.lastSelectedTexture, texture);
    const auto *preview = m_window->findChild<QLabel *>("previewLabel");
    QVERIFY(preview);
    const QIcon iconBefore = texture->treeItem->icon(0);
    const QString file = savedPicture("cloud.png", plainPicture(4, 4, qRgba(250, 10, 20, 255)));

    MessageCapture log;
    m_window->insertTexture(file, texture);
    QCOMPARE(bytes(0x120, 4).toHex(), QByteArray("fa0a14ff"));
    QCOMPARE(preview->pixmap(Qt::ReturnByValue).toImage().pixelColor(1, 1), QColor(250, 10, 20));
    QVERIFY(texture->treeItem->icon(0).cacheKey() != iconBefore.cacheKey());
    QCOMPARE(texture->treeItem->icon(0).pixmap(16, 16).toImage().pixelColor(8, 8), QColor(250, 10, 20));
    QCOMPARE(log.textsOf(importTextureSignature), QStringList({"64 textureData.length()"}));
    QCOMPARE(log.textsOf(insertTextureSignature), QStringList({"Texture \"Root/Sky/cloud\" was inside range. updating."}));
    for (const LoggedMessage &message : log.all()) {
        if (message.function == insertTextureSignature)
            QVERIFY(message.file.contains("mainwindow"));
    }
}

void TransferTest::insertOfAnUnselectedTextureLeavesThePreview()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32");
    fileTreeFile *selected = addTexture(currentROM.root, "b", 0x140, "rgba32");
    select(selected->treeItem);
    const auto *preview = m_window->findChild<QLabel *>("previewLabel");
    const QImage before = preview->pixmap(Qt::ReturnByValue).toImage();
    QVERIFY(!before.isNull());
    currentROM.data.replace(0x140, 64, QByteArray(64, '\xFF')); // A new drawing would show this.
    m_window->insertTexture(savedPicture("a.png", plainPicture(4, 4, qRgba(1, 2, 3, 255))), texture);
    QCOMPARE(preview->pixmap(Qt::ReturnByValue).toImage(), before);
    m_window->insertTexture(path("a.png"), selected);
    QVERIFY(preview->pixmap(Qt::ReturnByValue).toImage() != before);
}

void TransferTest::sizeQuestionTexts()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32", 32, 16);
    const QString file = savedPicture("sub/a.png", plainPicture(64, 48, 0));
    bool hasParent = true;
    QList<QMessageBox::ButtonRole> roles;
    QList<QMessageBox::StandardButton> standard;
    DialogAnswer<QMessageBox> look([&](QMessageBox *box) {
        QCOMPARE(box->text(),
                 QStringLiteral("The provided image is 64x48 while the texture is 32x16.\r\n"
                                "The image must be resized before it can be imported."));
        QCOMPARE(box->informativeText(), QStringLiteral("What do you want to do?"));
        QCOMPARE(box->icon(), QMessageBox::NoIcon);
        hasParent = box->parent();
        for (const char *name : {"Abort", "Keep Aspect Ratio", "Ignore Aspect Ratio"}) {
            const QList<QAbstractButton *> buttons = box->buttons();
            for (QAbstractButton *button : buttons) {
                if (button->text().remove('&') == name) {
                    roles << box->buttonRole(button);
                    standard << box->standardButton(button);
                }
            }
        }
        QCOMPARE(box->buttons().size(), 3);
        box->done(QDialog::Rejected);
    });
    m_window->insertTexture(file, texture);
    QVERIFY(look.answered());
    QVERIFY(!hasParent);
    QCOMPARE(roles, QList<QMessageBox::ButtonRole>({QMessageBox::RejectRole, QMessageBox::ActionRole, QMessageBox::ActionRole}));
    QCOMPARE(standard.value(0), QMessageBox::Abort);
}

void TransferTest::rootFolderIsRememberedWithOneSlash()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "i8", 8, 8);
    BoxAnswer box("Abort");
    m_window->insertTexture("/quillary-missing.png", texture);
    QVERIFY(box.answered());
    QCOMPARE(fileDialogPath(), QString("/"));
}

void TransferTest::sizeQuestionAborted_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("Abort") << "Abort";
    QTest::newRow("closed") << "";
}

void TransferTest::sizeQuestionAborted()
{
    QFETCH(QString, button);
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "ci8", 8, 8, 0x200);
    const QString file = savedPicture("sub/a.png", plainPicture(4, 4, 0));
    const QByteArray before = currentROM.data;
    MessageCapture log;
    BoxAnswer box(button);
    m_window->insertTexture(file, texture);
    QVERIFY(box.answered());
    QCOMPARE(currentROM.data, before);
    QVERIFY(!m_window->isWindowModified());
    QCOMPARE(status(), QString());
    QCOMPARE(fileDialogPath(), path("sub") + '/');
    QVERIFY(log.textsOf(insertTextureSignature).isEmpty());
}

void TransferTest::sizeQuestionIgnoresTheAspectRatio()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32", 2, 2);
    const QString file = savedPicture("a.png", plainPicture(8, 4, qRgba(250, 10, 20, 255)));
    BoxAnswer box("Ignore Aspect Ratio");
    m_window->insertTexture(file, texture);
    QVERIFY(box.answered());
    QCOMPARE(bytes(0x100, 17).toHex(), QByteArray("fa0a14fffa0a14fffa0a14fffa0a14ff11"));
    QCOMPARE(status(), QStringLiteral("Texture imported"));
}

void TransferTest::sizeQuestionKeepsTheAspectRatio()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32", 2, 2);
    const QString file = savedPicture("a.png", plainPicture(8, 4, qRgba(250, 10, 20, 255)));
    MessageCapture log;
    BoxAnswer box("Keep Aspect Ratio");
    m_window->insertTexture(file, texture);
    QVERIFY(box.answered());
    QCOMPARE(bytes(0x100, 17).toHex(), QByteArray("fa0a14fffa0a14ff000000000000000011"));
    QCOMPARE(log.textsOf(insertTextureSignature).value(0), QStringLiteral("2  -  2"));
}

void TransferTest::insertOfATrueColourPictureKeepsThePalette()
{
    // Words 1 and 2 are clear, with colour bits that no picture can bring back; the last texel has the second of them.
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "ci4", 4, 1, 0x200);
    const QByteArray palette = QByteArray::fromHex("F801F80007C0003F") + QByteArray(24, '\x01');
    currentROM.data.replace(0x200, 32, palette);
    currentROM.data.replace(0x100, 2, QByteArray::fromHex("0032"));
    QImage picture = plainPicture(4, 1, qRgb(248, 0, 0));
    picture.setPixel(2, 0, qRgb(0, 0, 248));
    picture.setPixel(3, 0, 0);
    const QByteArray before = currentROM.data;
    m_window->insertTexture(savedPicture("a.png", picture), texture);
    QCOMPARE(currentROM.data, before);
    QCOMPARE(status(), QStringLiteral("Texture imported"));

    picture.setPixel(0, 0, qRgb(0, 0, 248));
    m_window->insertTexture(savedPicture("a.png", picture), texture);
    QCOMPARE(bytes(0x100, 2).toHex(), QByteArray("3032"));
    QCOMPARE(bytes(0x200, 32), palette);
    QVERIFY(m_window->isWindowModified());
}

void TransferTest::insertOfManyColoursWritesAPalette()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "ci4", 32, 1, 0x200);
    QImage picture(32, 1, QImage::Format_RGB32);
    for (int x = 0; x < 32; ++x)
        picture.setPixel(x, 0, qRgb(8 * x, 0, 0));
    const QByteArray behind = currentROM.data.mid(0x220);
    m_window->insertTexture(savedPicture("a.png", picture), texture);
    const QImage shown = textureManipulator::generateTexture(texture->data(), textureFormats::ci4, 32, bytes(0x200, 32));
    for (int x = 0; x < 32; ++x) {
        QVERIFY2(qAbs(qRed(shown.pixel(x, 0)) - 8 * x) <= 8, qPrintable(QString::number(x)));
        QCOMPARE(qAlpha(shown.pixel(x, 0)), 255);
    }
    QCOMPARE(currentROM.data.mid(0x220), behind);
}

void TransferTest::insertLogsWhatIsDropped()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgb5a1", 1, 1);
    const QString file = savedPicture("a.png", plainPicture(1, 1, qRgba(8, 8, 8, 128)));
    MessageCapture log;
    m_window->insertTexture(file, texture);
    QCOMPARE(log.textsOf(insertTextureSignature).value(0), file + ": 1 pixel of partial alpha become clear in rgb5a1");
    QCOMPARE(status(), QStringLiteral("Texture imported"));
}

void TransferTest::insertOfABrokenPicture()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32");
    QVERIFY(writeBytes(path("a.png"), pngHeader(60000, 60000)));
    const QByteArray before = currentROM.data;
    MessageCapture log;
    BoxAnswer box("Ignore Aspect Ratio");
    m_window->insertTexture(path("a.png"), texture);
    QCOMPARE(box.text,
             QStringLiteral("The provided image is 0x0 while the texture is 4x4.\r\n"
                            "The image must be resized before it can be imported."));
    QCOMPARE(currentROM.data, before);
    QCOMPARE(log.textsOf(importTextureSignature), QStringList({"0 textureData.length()", conversionError}));
    QCOMPARE(status(), QStringLiteral("Texture imported"));
    QVERIFY(!m_window->isWindowModified());
}

void TransferTest::insertOfAnUnreadableFileWritesThePalette()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "ci4", 4, 4, 0x200);
    BoxAnswer box("Keep Aspect Ratio");
    QStringList statuses;
    QObject::connect(m_window->statusBar(), &QStatusBar::messageChanged, this,
                     [&statuses](const QString &message) { statuses << message; });
    m_window->insertTexture(path("absent.png"), texture);
    QCOMPARE(statuses, QStringList({"Could not read image file", "Texture imported"}));
    QCOMPARE(bytes(0x100, 8), QByteArray(8, '\x11'));
    QCOMPARE(bytes(0x200, 33), QByteArray(32, '\0') + '\x11');
    QVERIFY(m_window->isWindowModified());
}

void TransferTest::insertOfAJpeg()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "jpeg");
    QVERIFY(writeBytes(path("a.jpeg"), jpegBytes(40, 30)));
    m_window->insertTexture(path("a.jpeg"), texture); // A question would never be answered.
    const int size = jpegBytes(40, 30).size();
    QCOMPARE(bytes(0x100, size), jpegBytes(40, 30));
    QCOMPARE(bytes(0x100 + size, 16), QByteArray(16, '\x11'));
    QCOMPARE(texture->size(), size);
}

void TransferTest::insertWithoutATexture()
{
    m_window->insertTexture(savedPicture("a.png", plainPicture(4, 4, 0)), nullptr);
    QCOMPARE(status(), QStringLiteral("You must select a texture in the list to import over"));
    m_window->insertTexture(QString(), nullptr);
    QCOMPARE(status(), QStringLiteral("Could not import texture"));
    QVERIFY(!m_window->isWindowModified());
}

void TransferTest::insertRefreshesWhatTouches()
{
    fileTreeDirectory *folder = addFolder(currentROM.root, "A", 0x100);
    addTexture(currentROM.root, "one byte apart", 0xFF, "i8", 16, 1);
    fileTreeFile *before = addTexture(currentROM.root, "before", 0x100, "i8", 16, 1);
    fileTreeFile *texture = addTexture(folder, "texture", 0x10, "rgba32");
    fileTreeFile *behind = addTexture(folder, "behind", 0x50, "i8");
    auto *rowless = new fileTreeFile;
    rowless->address = 0x120;
    currentROM.root->addFile(rowless)->setName("rowless");
    for (const fileTreeFile *file : {before, behind})
        file->treeItem->setText(0, "stale");
    MessageCapture log;
    m_window->insertTexture(savedPicture("a.png", plainPicture(4, 4, qRgba(1, 2, 3, 255))), texture);
    QCOMPARE(log.textsOf(insertTextureSignature),
             QStringList({"Texture \"Root/before\" was inside range. updating.",
                          "Texture \"Root/rowless\" was inside range. updating.",
                          "Texture \"Root/A/texture\" was inside range. updating.",
                          "Texture \"Root/A/behind\" was inside range. updating."}));
    QCOMPARE(before->treeItem->text(0), QStringLiteral("before"));
    QCOMPARE(behind->treeItem->text(0), QStringLiteral("behind"));
    QVERIFY(!rowless->treeItem);
}

void TransferTest::slotsAreCalledByName()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32", 1, 1);
    const QString file = savedPicture("a.png", plainPicture(1, 1, qRgba(1, 2, 3, 4)));
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "insertTexture", Q_ARG(QString, file), Q_ARG(fileTreeFile *, texture)));
    QCOMPARE(bytes(0x100, 4).toHex(), QByteArray("01020304"));
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "importTexture", Q_ARG(QImage, plainPicture(1, 1, qRgba(5, 6, 7, 8))),
                                      Q_ARG(int, 0x100), Q_ARG(QString, "rgba32"), Q_ARG(QByteArray, QByteArray())));
    QCOMPARE(bytes(0x100, 4).toHex(), QByteArray("05060708"));
}

void TransferTest::saveTextureAsksForAFile_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("proposed");
    QTest::addColumn<QString>("filter");
    QTest::newRow("png") << "rgba32"
                         << "a.b.png"
                         << "Images (*.png)";
    QTest::newRow("jpeg") << "jpeg"
                          << "a.b.jpeg"
                          << "Images (*.jpeg)";
}

void TransferTest::saveTextureAsksForAFile()
{
    QFETCH(QString, format);
    QFETCH(QString, proposed);
    QFETCH(QString, filter);
    currentROM.data.replace(0x100, jpegBytes(8, 8).size(), jpegBytes(8, 8));
    select(addTexture(currentROM.root, "a.b", 0x100, format)->treeItem);
    QVERIFY(QDir(path()).mkpath("before"));
    QVERIFY(QDir(path()).mkpath("chosen"));
    QSettings().setValue("fileDialogPath", path("before") + '/');
    FileDialogAnswer dialog(path("chosen/out"));
    m_window->saveTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(dialog.title, QStringLiteral("Save File"));
    QCOMPARE(dialog.directory, path("before"));
    QCOMPARE(dialog.typedName, proposed);
    QCOMPARE(dialog.filters, QStringList({filter}));
    QCOMPARE(dialog.acceptMode, QFileDialog::AcceptSave);
    QCOMPARE(status(), QStringLiteral("Texture extracted"));
    QCOMPARE(fileDialogPath(), path("chosen") + '/');
    QCOMPARE(treeOnDisk(path("chosen")), QStringList({"out"}));
    if (format == "jpeg")
        QCOMPARE(bytesOfFile(path("chosen/out")), jpegBytes(8, 8));
    else
        QCOMPARE(QImage(path("chosen/out"), "PNG").size(), QSize(4, 4));
}

void TransferTest::saveTextureCancelled()
{
    select(addTexture(currentROM.root, "a", 0x100, "rgba32")->treeItem);
    const QString before = status();
    FileDialogAnswer dialog("");
    m_window->saveTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(status(), before);
    QCOMPARE(fileDialogPath(), QString());
}

void TransferTest::saveTextureOfAnUnknownFormat()
{
    select(addTexture(currentROM.root, "a", 0x100, "JPEG")->treeItem);
    m_window->saveTexture();
    QCOMPARE(status(), QStringLiteral("Texture format JPEG is not supported, can't extract texture"));
}

void TransferTest::saveTextureThatCannotBeExtracted()
{
    select(addTexture(currentROM.root, "a", 0x20000, "rgba32")->treeItem);
    FileDialogAnswer dialog(path("a.png"));
    m_window->saveTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(status(), QStringLiteral("Could not extract texture (unsupported format or missing data)"));
    QVERIFY(!QFile::exists(path("a.png")));
}

void TransferTest::saveTextureThatCannotBeWritten()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32");
    QVERIFY(m_window->extractTexture(texture, path("absent/a.png")));
    QVERIFY(!m_window->extractTexture(nullptr, path("a.png")));
    QVERIFY(!QFile::exists(path("a.png")));
}

void TransferTest::extractTextureLogs()
{
    fileTreeFile *texture = addTexture(currentROM.root, "a", 0x100, "rgba32", 4, 2);
    MessageCapture log;
    QVERIFY(m_window->extractTexture(texture, path("a.png")));
    QCOMPARE(log.textsOf("bool MainWindow::extractTexture(fileTreeFile*, QString)"),
             QStringList({"\"a\" \"rgba32\" 4 2", "Saving texture in format 5", "Texture format palette colors: 0"}));
    for (const LoggedMessage &message : log.all())
        QVERIFY(message.file.contains("mainwindow"));
}

void TransferTest::saveFolderAsksForADirectory()
{
    fileTreeDirectory *folder = addFolder(currentROM.root, "Sky");
    addTexture(addFolder(folder, "Night"), "star", 0x100, "i8");
    addFolder(folder, "Empty");
    addTexture(folder, "broken", 0x100, "rgb565");
    select(folder->treeItem);
    QVERIFY(QDir(path()).mkpath("before"));
    QVERIFY(QDir(path()).mkpath("chosen"));
    QSettings().setValue("fileDialogPath", path("before") + '/');
    FileDialogAnswer dialog(path("chosen"));
    m_window->saveTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(dialog.title, QStringLiteral("Select Directory"));
    QCOMPARE(dialog.directory, path("before"));
    QVERIFY(dialog.options & QFileDialog::ShowDirsOnly);
    QCOMPARE(status(), QStringLiteral("Folder extracted"));
    QCOMPARE(fileDialogPath(), path("chosen") + '/');
    QCOMPARE(treeOnDisk(path("chosen")), QStringList({"Sky/", "Sky/Empty/", "Sky/Night/", "Sky/Night/star.png"}));
}

void TransferTest::saveFolderCancelled()
{
    select(addFolder(currentROM.root, "Sky")->treeItem);
    const QString before = status();
    FileDialogAnswer dialog("");
    m_window->saveTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(status(), before);
    QCOMPARE(fileDialogPath(), QString());
}

void TransferTest::saveTextureWithoutASelection()
{
    currentROM.selectedType = MainWindow::TextureSelected;
    currentROM.lastSelectedTexture = nullptr;
    currentROM.lastSelectedFolder = nullptr;
    m_window->saveTexture();
    QCOMPARE(status(), QStringLiteral("You must select a folder or a texture in the list to extract"));
    m_window->saveFolder(path(), nullptr);
    QVERIFY(treeOnDisk(path()).isEmpty());
}

void TransferTest::selectedFolderGoesBeforeAnEarlierTexture()
{
    currentROM.lastSelectedTexture = addTexture(currentROM.root, "a", 0x100, "rgba32");
    currentROM.lastSelectedFolder = currentROM.root;
    currentROM.selectedType = MainWindow::FolderSelected;
    FileDialogAnswer dialog(path());
    m_window->saveTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(treeOnDisk(path()), QStringList({"Root/", "Root/a.png"}));
}

void TransferTest::importFolderReplacesByName()
{
    fileTreeDirectory *folder = addFolder(currentROM.root, "Sky", 0x100);
    fileTreeDirectory *night = addFolder(folder, "Night", 0x100);
    fileTreeFile *star = addTexture(night, "star", 0x10, "rgba32", 1, 1);
    addTexture(folder, "sun", 0x20, "rgba32", 1, 1);
    savedPicture("before/x.png", plainPicture(1, 1, 0));
    savedPicture("chosen/SUN.png", plainPicture(1, 1, qRgba(1, 2, 3, 4)));
    savedPicture("chosen/night/star.png", plainPicture(1, 1, qRgba(5, 6, 7, 8)));
    select(star->treeItem); // Its folder is the selected one then, too.
    select(folder->treeItem);
    QSettings().setValue("fileDialogPath", path("before") + '/');

    MessageCapture log;
    FileDialogAnswer dialog(path("chosen"));
    bool hasParent = true;
    QString text;
    QString details = "none";
    DialogAnswer<QMessageBox> end([&](QMessageBox *box) {
        hasParent = box->parent();
        text = box->text();
        details = box->detailedText();
        QVERIFY(!QApplication::overrideCursor());
        box->accept();
    });
    m_window->importFolder();
    QVERIFY(dialog.answered());
    QVERIFY(end.answered());
    QCOMPARE(dialog.title, QStringLiteral("Select Directory"));
    QCOMPARE(dialog.directory, path("before"));
    QVERIFY(dialog.options & QFileDialog::ShowDirsOnly);
    QVERIFY(!hasParent);
    QCOMPARE(text, path("chosen") + " has been imported into Root/Sky");
    QCOMPARE(details, QString());
    QCOMPARE(fileDialogPath(), path("chosen") + '/');
    QCOMPARE(bytes(0x120, 5).toHex(), QByteArray("0102030411"));
    QCOMPARE(bytes(0x210, 5).toHex(), QByteArray("0506070811"));
    QVERIFY(m_window->isWindowModified());
    QCOMPARE(log.textsOf("void MainWindow::importFolder()"), QStringList({"\"chosen\"", "2"}));
    QStringList lines = log.textsOf(iterateFolderSignature);
    QCOMPARE(lines.takeFirst(), "Importing directory \"" + path("chosen") + '"');
    lines.sort();
    QStringList expected {
        "Found directory \"" + path("chosen/night") + '"', "Importing Texture \"" + path("chosen/SUN.png") + '"',
        "Importing Texture \"" + path("chosen/night/star.png") + '"', "Importing directory \"" + path("chosen/night") + '"'};
    expected.sort();
    QCOMPARE(lines, expected);
    QCOMPARE(log.textsOf(importTextureSignature), QStringList({"4 textureData.length()", "4 textureData.length()"}));
}

void TransferTest::importFolderCancelled()
{
    select(currentROM.root->treeItem);
    const QString before = status();
    FileDialogAnswer dialog("");
    m_window->importFolder();
    QVERIFY(dialog.answered());
    QCOMPARE(status(), before);
    QCOMPARE(fileDialogPath(), QString());
}

void TransferTest::importFolderReportsWhatItLeftOut()
{
    select(currentROM.root->treeItem);
    QVERIFY(writeBytes(path("notes.txt"), "x"));
    FileDialogAnswer dialog(path());
    BoxAnswer end("OK");
    m_window->importFolder();
    QVERIFY(dialog.answered());
    QVERIFY(end.answered());
    QCOMPARE(end.text, path() + " has been imported into Root");
    QCOMPARE(end.icon, QMessageBox::NoIcon);
    QCOMPARE(end.detailedText, path("notes.txt") + " was not imported. File format not supported.\n");
    QVERIFY(!m_window->isWindowModified());
}

void TransferTest::importFolderShowsItsProgress()
{
    select(currentROM.root->treeItem);
    for (int i = 0; i < 20; ++i) {
        addTexture(currentROM.root, QString::number(i), 0x100 + 4 * i, "rgba32", 1, 1);
        savedPicture(QString::number(i) + ".png", plainPicture(1, 1, 0));
    }
    QVERIFY(writeBytes(path("last.txt"), "x"));
    bool seen = false;
    // Looks at the dialog from within the work: a debug line is written for every file.
    static std::function<void()> look;
    look = [&] {
        const auto *dialog = m_window->findChild<QProgressDialog *>();
        if (!dialog || seen)
            return;
        seen = true;
        QCOMPARE(dialog->labelText(), QStringLiteral("Importing textures"));
        QCOMPARE(dialog->minimum(), 0);
        QCOMPARE(dialog->maximum(), 21);
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        QVERIFY(!(dialog->windowFlags() & Qt::WindowContextHelpButtonHint));
        QVERIFY(dialog->findChildren<QPushButton *>().isEmpty());
        QCOMPARE(dialog->parentWidget(), m_window.get());
        QVERIFY(QApplication::overrideCursor());
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        m_window->close(); // Nothing may pull the table away.
        QVERIFY(m_window->isVisible());
    };
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) { look(); });
    FileDialogAnswer dialog(path());
    BoxAnswer end("OK");
    m_window->importFolder();
    qInstallMessageHandler(previous);
    look = nullptr;
    QVERIFY(seen);
    QVERIFY(end.answered());
    QVERIFY(!m_window->findChild<QProgressDialog *>());
    QVERIFY(m_window->isVisible());
}

void TransferTest::importFolderWithoutAFolder()
{
    currentROM.lastSelectedFolder = nullptr;
    savedPicture("a.png", plainPicture(1, 1, 0));
    FileDialogAnswer dialog(path());
    BoxAnswer end("OK");
    m_window->importFolder();
    QVERIFY(dialog.answered());
    QVERIFY(end.answered());
    QCOMPARE(end.detailedText, path() + " was not imported. The program tried to import into a non-existent folder.\n");
}

void TransferTest::iterateFolderMovesAProgressDialogOn()
{
    savedPicture("a.png", plainPicture(1, 1, 0));
    QVERIFY(writeBytes(path("b.txt"), "x"));
    QProgressDialog progress("x", "y", 0, 10);
    progress.setValue(3);
    QString log = "kept\n";
    m_window->iterateFolder(path(), currentROM.root, &progress, &log);
    QCOMPARE(progress.value(), 5);
    QCOMPARE(log, "kept\n" + path("b.txt") + " was not imported. File format not supported.\n");
    m_window->iterateFolder(path(), currentROM.root, nullptr, nullptr);
}

void TransferTest::countFilesCounts()
{
    savedPicture("a/b/c.png", plainPicture(1, 1, 0));
    QVERIFY(writeBytes(path("b.txt"), "x"));
    QCOMPARE(m_window->countFiles(path()), 2);
    QCOMPARE(m_window->countFiles(path("absent")), 0);
}

void TransferTest::texturePackAddsFoldersAndPictures()
{
    savedPicture("pack/A_00001000_Grass/00000010_rgba32_tile_a.png", plainPicture(1, 1, qRgba(1, 2, 3, 4)));
    savedPicture("pack/A_00001000_Grass/00000020_ci8_b.png", plainPicture(1, 1, qRgba(1, 2, 3, 4)));
    select(currentROM.root->treeItem);
    const int selectedType = currentROM.selectedType;
    MessageCapture log;
    FileDialogAnswer dialog(path("pack"));
    m_window->importTexturePack();
    QVERIFY(dialog.answered());
    QCOMPARE(dialog.title, QStringLiteral("Select Directory"));
    QVERIFY(dialog.options & QFileDialog::ShowDirsOnly);
    QCOMPARE(fileDialogPath(), path("pack") + '/');
    QCOMPARE(currentROM.root->directories.size(), 1);
    fileTreeDirectory *grass = currentROM.root->directories.first();
    QCOMPARE(currentROM.lastSelectedFolder, grass);
    QCOMPARE(currentROM.selectedType, selectedType);
    QVERIFY(!grass->treeItem);
    QCOMPARE(currentROM.root->treeItem->childCount(), 0);
    QCOMPARE(grass->size, 0xF000);
    QCOMPARE(bytes(0x10, 5).toHex(), QByteArray("0102030411"));
    QCOMPARE(bytes(0, 16), QByteArray(16, '\x11'));
    QVERIFY(m_window->isWindowModified());
    const QStringList lines = log.textsOf("void MainWindow::parseTexturePack(QString)");
    QVERIFY(lines.contains("\"Directory path: " + path("pack/A_00001000_Grass") + " Directory name: A_00001000_Grass\""));
    QVERIFY(lines.contains("\"4096\""));
    QVERIFY(!m_window->findChild<QLabel *>("unsavedFileList")->isHidden());
}

void TransferTest::texturePackShowsItsFolderInThePanel()
{
    savedPicture("pack/A_00001000_Grass/00000010_rgba32_a.png", plainPicture(1, 1, qRgba(1, 2, 3, 4)));
    m_window->parseTexturePack(path("pack"));
    fileTreeDirectory *grass = currentROM.root->directories.first();
    QCOMPARE(m_window->findChild<QLineEdit *>("folderPath")->text(), QStringLiteral("Root/Grass"));
    QCOMPARE(m_window->findChild<QLineEdit *>("folderOffset")->text(), QStringLiteral("0x00001000"));
    QVERIFY(m_window->findChild<QAction *>("newTextureAction")->isEnabled());
    QCOMPARE(currentROM.lastSelectedFolder, grass);
    // What is saved is the folder that the panel shows, under its own name.
    m_window->saveDirectoryInfo();
    QCOMPARE(QString(grass->name), QStringLiteral("Grass"));
    QCOMPARE(grass->address, 0x1000);
}

void TransferTest::clearedTableLeavesNothingOfThePack()
{
    savedPicture("pack/A_00001000_Grass/00000010_rgba32_a.png", plainPicture(1, 1, qRgba(1, 2, 3, 4)));
    m_window->parseTexturePack(path("pack"));
    QVERIFY(m_window->findChild<QAction *>("newTextureAction")->isEnabled());
    m_window->clearFileTable();
    QCOMPARE(m_window->findChild<QLineEdit *>("folderPath")->text(), QString());
    QVERIFY(!m_window->findChild<QPushButton *>("folderSave")->isEnabled());
    QVERIFY(!m_window->findChild<QAction *>("newTextureAction")->isEnabled());
}

/// No row is highlighted after a pack, so that a click on any row selects it.
void TransferTest::texturePackTakesTheHighlight()
{
    savedPicture("pack/A_00001000_Grass/00000010_rgba32_a.png", plainPicture(1, 1, qRgba(1, 2, 3, 4)));
    auto *tree = m_window->findChild<QTreeWidget *>("fileTree");
    select(currentROM.root->treeItem);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    const QSignalSpy changes(tree, &QTreeWidget::itemSelectionChanged);
    m_window->parseTexturePack(path("pack"));
    QVERIFY(tree->selectedItems().isEmpty());
    QVERIFY(!tree->currentItem());
    QCOMPARE(changes.count(), 0);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root->directories.first());

    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, QPoint(40, 12));
    QCOMPARE(changes.count(), 1);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
    m_window->addTexture();
    QCOMPARE(currentROM.root->files.size(), 1);
}

void TransferTest::texturePackCancelled()
{
    FileDialogAnswer dialog("");
    m_window->importTexturePack();
    QVERIFY(dialog.answered());
    QCOMPARE(status(), QString());
    QCOMPARE(fileDialogPath(), QString());
}

void TransferTest::texturePackWithoutFoldersChangesNothing()
{
    select(currentROM.root->treeItem);
    m_window->parseTexturePack(path());
    m_window->parseTexturePack(path("absent"));
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
    QVERIFY(currentROM.root->directories.isEmpty());
    QVERIFY(!m_window->isWindowModified());
    QVERIFY(m_window->findChild<QLabel *>("unsavedFileList")->isHidden());
}

QTEST_MAIN(TransferTest)
#include "tst_transfer.moc"
