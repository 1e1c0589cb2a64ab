// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"
#include "demo/democartridge.h"
#include "support/dialogs.h"
#include "support/images.h"
#include "support/pictures.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <memory>

/// What a user does with the program, on the demo cartridge: open, extract everything, paint, import, save, open again.
class RoundTripTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void unchangedPicturesChangeNothing_data();
    void unchangedPicturesChangeNothing();
    void paintedPicturesChangeTheirBytesAlone_data();
    void paintedPicturesChangeTheirBytesAlone();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void open(const QString &name);
    void extractEverything();
    void importEverything();

    QByteArray paintColourIndices(QByteArray image) const;
    QByteArray paintColours(QByteArray image) const;
    QByteArray replaceJpeg(QByteArray image) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<MainWindow> m_window;
};

namespace
{
QString profilesFolder()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles");
}

const demo::Texture &firstOf(const QString &format)
{
    for (const demo::Texture &texture : demo::cartridge().textures) {
        if (texture.format == format && texture.listed)
            return texture;
    }
    qFatal("the demo has no texture in %s", qPrintable(format));
}

/// Where a texture lies after everything has been extracted into the folder "out".
QString extractedFile(const demo::Texture &texture, const QString &extension)
{
    return QStringLiteral("out/Root/") + texture.folder + texture.name + extension;
}

int listedTextures()
{
    int count = 0;
    for (const demo::Texture &texture : demo::cartridge().textures)
        count += texture.listed;
    return count;
}

/// \a image after its pictures have been out and in again: the formats with alpha drop what a transparent texel still holds.
QByteArray withoutHiddenColours(QByteArray image)
{
    for (const demo::Texture &texture : demo::cartridge().textures) {
        char *bytes = image.data() + texture.address;
        for (int i = 0; texture.listed && i < texture.data.size(); ++i) {
            if (texture.format == "ia8" && (bytes[i] & 0x0F) == 0)
                bytes[i] = 0;
            else if (texture.format == "ia4")
                bytes[i] = char((bytes[i] & 0x10 ? bytes[i] & 0xF0 : 0) | (bytes[i] & 0x01 ? bytes[i] & 0x0F : 0));
            else if (texture.format == "rgb5a1" && i % 2 == 1 && !(bytes[i] & 0x01))
                bytes[i - 1] = bytes[i] = 0;
            else if (texture.format == "rgba32" && i % 4 == 3 && bytes[i] == 0)
                bytes[i - 3] = bytes[i - 2] = bytes[i - 1] = 0;
        }
    }
    return image;
}

void imageFiles()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"demo.z64", "demo.v64", "demo.n64"})
        QTest::newRow(name) << QString(name);
}

/// The first position at which two images differ, for the message of a failed comparison; -1 when they are equal.
int firstDifference(const QByteArray &a, const QByteArray &b)
{
    const int common = qMin(a.size(), b.size());
    for (int i = 0; i < common; ++i) {
        if (a.at(i) != b.at(i))
            return i;
    }
    return a.size() == b.size() ? -1 : common;
}
}

void RoundTripTest::initTestCase()
{
    QCoreApplication::setOrganizationName("Brimholt");
    QCoreApplication::setApplicationName("Quillary");
}

void RoundTripTest::init()
{
    QSettings().clear();
    QDir(profilesFolder()).removeRecursively();
    resetCurrentROM();
    m_folder = std::make_unique<QTemporaryDir>();
    QString error;
    QVERIFY2(demo::writeDemo(m_folder->path(), profilesFolder(), &error), qPrintable(error));
    QVERIFY(QDir(m_folder->path()).mkpath("out"));
    m_window = std::make_unique<MainWindow>();
    m_window->show();
}

void RoundTripTest::cleanup()
{
    m_window.reset();
    resetCurrentROM();
}

void RoundTripTest::open(const QString &name)
{
    m_window->loadFile(path(name));
    QVERIFY(currentROM.loaded);
    m_window->findChild<QTreeWidget *>()->setCurrentItem(currentROM.root->treeItem);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
}

void RoundTripTest::extractEverything()
{
    FileDialogAnswer dialog(path("out"));
    m_window->saveTexture();
    QVERIFY(dialog.answered());
    QCOMPARE(m_window->countFiles(path("out/Root")), listedTextures());
}

void RoundTripTest::importEverything()
{
    FileDialogAnswer dialog(path("out/Root"));
    BoxAnswer end("OK");
    m_window->importFolder();
    QVERIFY(dialog.answered());
    QVERIFY(end.answered());
    QCOMPARE(end.text, path("out/Root") + " has been imported into Root");
    QCOMPARE(end.detailedText, QString());
}

/// Paints a frame of colour 1 into the first ci8 picture, and its bytes into \a image.
QByteArray RoundTripTest::paintColourIndices(QByteArray image) const
{
    const demo::Texture &texture = firstOf("ci8");
    QImage picture(path(extractedFile(texture, ".png")));
    if (picture.format() != QImage::Format_Indexed8)
        return QByteArray();
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (x != 0 && y != 0 && x != picture.width() - 1 && y != picture.height() - 1)
                continue;
            picture.setPixel(x, y, 1);
            image[texture.address + y * picture.width() + x] = 1;
        }
    }
    picture.save(path(extractedFile(texture, ".png")), "PNG");
    return image;
}

/// Paints three texels of the first rgb5a1 picture, one of them transparent.
QByteArray RoundTripTest::paintColours(QByteArray image) const
{
    const demo::Texture &texture = firstOf("rgb5a1");
    QImage picture = QImage(path(extractedFile(texture, ".png"))).convertToFormat(QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgba(255, 0, 0, 255)); // 11111 00000 00000 1
    picture.setPixel(1, 0, qRgba(8, 16, 24, 255)); // 00001 00010 00011 1
    picture.setPixel(0, 1, qRgba(255, 255, 255, 254));
    image.replace(texture.address, 4, QByteArray::fromHex("F8010887"));
    image.replace(texture.address + 2 * picture.width(), 2, QByteArray::fromHex("0000"));
    picture.save(path(extractedFile(texture, ".png")), "PNG");
    return image;
}

QByteArray RoundTripTest::replaceJpeg(QByteArray image) const
{
    const demo::Texture &texture = firstOf("jpeg");
    const QByteArray jpeg = jpegBytes(16, 16);
    if (jpeg.size() > texture.data.size() || !writeBytes(path(extractedFile(texture, ".jpeg")), jpeg))
        return QByteArray();
    return image.replace(texture.address, jpeg.size(), jpeg);
}

void RoundTripTest::unchangedPicturesChangeNothing_data()
{
    imageFiles();
}

void RoundTripTest::unchangedPicturesChangeNothing()
{
    QFETCH(QString, name);
    const QByteArray expected = withoutHiddenColours(demo::cartridge().image);
    open(name);
    extractEverything();
    importEverything();
    QCOMPARE(firstDifference(currentROM.data, expected), -1);
    QVERIFY(m_window->save());
    QCOMPARE(firstDifference(bytesOfFile(path(name)), expected), -1);
}

void RoundTripTest::paintedPicturesChangeTheirBytesAlone_data()
{
    imageFiles();
}

void RoundTripTest::paintedPicturesChangeTheirBytesAlone()
{
    QFETCH(QString, name);
    const QByteArray before = demo::cartridge().image;
    open(name);
    QCOMPARE(firstDifference(currentROM.data, before), -1);
    extractEverything();

    const QByteArray expected = replaceJpeg(paintColours(paintColourIndices(withoutHiddenColours(before))));
    QCOMPARE(expected.size(), before.size());
    QVERIFY(expected != before);
    importEverything();
    QVERIFY(m_window->isWindowModified());
    QCOMPARE(firstDifference(currentROM.data, expected), -1);
    QVERIFY(m_window->save());
    QVERIFY(!m_window->isWindowModified());
    QCOMPARE(firstDifference(bytesOfFile(path(name)), expected), -1); // Saved big-endian, whatever the order was.

    m_window = std::make_unique<MainWindow>();
    resetCurrentROM();
    open(name);
    QCOMPARE(firstDifference(currentROM.data, expected), -1);
    const QString inTable = QStringLiteral("Root/") + firstOf("jpeg").folder + firstOf("jpeg").name;
    const fileTreeFile *jpeg = fileTreeContainer().fileFromPath(inTable);
    QVERIFY(jpeg);
    QCOMPARE(jpeg->data(), jpegBytes(16, 16));
}

QTEST_MAIN(RoundTripTest)
#include "tst_roundtrip.moc"
