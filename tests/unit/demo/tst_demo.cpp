// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"
#include "demo/democartridge.h"
#include "demo/layout.h"
#include "model/byteorder.h"
#include "model/headerchecksum.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "persist/filelist.h"
#include "search/compressedblocks.h"
#include "support/images.h"
#include "transfer/texturepack.h"
#include "verify/verification.h"

#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

using demo::cartridge;

namespace
{
QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// How far a channel may be from the one drawn, as the format's bits allow: a step less one.
int toleranceOf(const QString &format)
{
    if (format == QLatin1String("ia4"))
        return 35;
    if (format == QLatin1String("i4") || format == QLatin1String("ia8"))
        return 16;
    if (format == QLatin1String("rgb5a1") || format.startsWith(QLatin1String("ci")))
        return 7;
    return 0;
}

bool hasOneBitAlpha(const QString &format)
{
    return format == QLatin1String("rgb5a1") || format == QLatin1String("ia4");
}

/// Whether \a shown is the colour \a drawn as far as \a format can hold it.
bool resembles(QRgb drawn, QRgb shown, const QString &format)
{
    const int tolerance = toleranceOf(format);
    if (format == QLatin1String("i4") || format == QLatin1String("i8"))
        return qAbs(qRed(drawn) - qRed(shown)) <= tolerance && qAlpha(shown) == qRed(shown);
    if (hasOneBitAlpha(format)) {
        const int threshold = format == QLatin1String("ia4") ? 128 : 255;
        if ((qAlpha(drawn) >= threshold) != (qAlpha(shown) == 255))
            return false;
    } else if (qAbs(qAlpha(drawn) - qAlpha(shown)) > tolerance) {
        return false;
    }
    return qAlpha(shown) == 0
        || (qAbs(qRed(drawn) - qRed(shown)) <= tolerance && qAbs(qGreen(drawn) - qGreen(shown)) <= tolerance
            && qAbs(qBlue(drawn) - qBlue(shown)) <= tolerance);
}

/// Over all pixels and the three colours: a JPEG may err where colours meet, but not on the whole.
int meanDifference(const QImage &one, const QImage &other)
{
    qint64 sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            sum += qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b));
        }
    }
    return int(sum / (3 * one.width() * one.height()));
}

QString pathOf(const demo::Texture &texture)
{
    return QStringLiteral("Root/") + texture.folder + texture.name;
}
}

class tst_Demo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void headerNamesTheCartridge();
    void checkCodesAreRight();
    void allFormatsAreThere();
    void texturesDoNotOverlap();
    void tableLeadsToEveryTexture();
    void texturesShowWhatWasDrawn();
    void aPictureIsThereTwice();
    void byteOrdersHoldTheSameImage();
    void importsFitTheirTextures();
    void packNamesLeadIntoTheImage();
    void packLeavesTheTableFaultless();
    void searchesLieInTheUnexploredFolder();
    void blockHoldsPictures();
    void secondRevisionMovesThings();
    void comesOutTheSameEveryTime();
    void keepsTheUsersFileList();
    void reportsAnUnwritableFolder();

private:
    QString demoPath(const QString &name) const { return m_folder.filePath(QStringLiteral("demo/") + name); }
    QString listPath() const { return m_folder.filePath(QStringLiteral("profiles/NQDE0/default/fileList.xml")); }
    QTemporaryDir m_folder;
};

void tst_Demo::initTestCase()
{
    QString error;
    QVERIFY2(demo::writeDemo(demoPath(QString()), m_folder.filePath(QStringLiteral("profiles")), &error), qPrintable(error));
}

/// The image with its file list, as the program holds them.
void tst_Demo::init()
{
    loadIntoCurrentROM(contentOf(demoPath(QStringLiteral("demo.z64"))));
    QFile list(listPath());
    QVERIFY(list.open(QIODevice::ReadOnly));
    QString error;
    QVERIFY2(readFileList(list.readAll(), currentROM.data.size(), currentROM.root, nullptr, &error), qPrintable(error));
}

void tst_Demo::headerNamesTheCartridge()
{
    QCOMPARE(currentROM.data.size(), 3 * 1024 * 1024);
    QCOMPARE(byteOrderOf(currentROM.data), ByteOrder::BigEndian);
    QCOMPARE(currentROM.data.mid(0x20, 20), QByteArray("QUILLARY DEMO       "));
    QCOMPARE(cartridgeIdentifier(currentROM.data), QStringLiteral("NQDE0"));
    QCOMPARE(QString::fromLatin1(demo::identifier), QStringLiteral("NQDE0"));
}

void tst_Demo::checkCodesAreRight()
{
    for (const char *name : {"demo.z64", "demo-1.1.z64"}) {
        const QByteArray image = contentOf(demoPath(QLatin1String(name)));
        const std::optional<CheckCodes> stored = storedCheckCodes(image);
        QVERIFY(stored);
        QVERIFY2(stored == computedCheckCodes(image, BootChip::Cic6102), name);
    }
}

void tst_Demo::allFormatsAreThere()
{
    QSet<QString> formats;
    QSet<QPair<int, int>> sizes;
    for (const fileTreeFile *file : fileTreeContainer().allFiles(currentROM.root)) {
        formats.insert(file->format);
        sizes.insert({file->width, file->height});
    }
    const QStringList all = textureFormats::getAsMap().keys();
    QCOMPARE(formats, QSet<QString>(all.cbegin(), all.cend()));
    QVERIFY2(sizes.size() >= 6, qPrintable(QString::number(sizes.size())));
}

void tst_Demo::texturesDoNotOverlap()
{
    QMap<int, int> ends;
    for (const demo::Texture &texture : cartridge().textures) {
        QVERIFY2(!texture.data.isEmpty(), qPrintable(texture.name));
        QVERIFY2(!ends.contains(texture.address), qPrintable(texture.name));
        ends.insert(texture.address, texture.address + texture.data.size());
        if (texture.paletteAddress >= 0)
            ends.insert(texture.paletteAddress, texture.paletteAddress + (texture.format == QLatin1String("ci8") ? 512 : 32));
    }
    int end = 64;
    for (auto range = ends.cbegin(); range != ends.cend(); ++range) {
        QVERIFY2(range.key() >= end, qPrintable(QString::number(range.key(), 16)));
        end = range.value();
    }
    QVERIFY(end <= currentROM.data.size());
}

void tst_Demo::tableLeadsToEveryTexture()
{
    int listed = 0;
    for (const demo::Texture &texture : cartridge().textures) {
        if (!texture.listed)
            continue;
        ++listed;
        const fileTreeFile *file = fileTreeContainer().fileFromPath(pathOf(texture));
        QVERIFY2(file, qPrintable(pathOf(texture)));
        QCOMPARE(file->format, texture.format);
        QCOMPARE(file->realAddress(), texture.address);
        QCOMPARE(file->size(), texture.data.size());
        QCOMPARE(file->data(), texture.data);
        if (texture.paletteAddress >= 0)
            QCOMPARE(file->realPaletteAddress(), texture.paletteAddress);
        if (texture.format != QLatin1String("jpeg"))
            QCOMPARE(QSize(file->width, file->height), texture.picture.size());
    }
    QCOMPARE(fileTreeContainer().allFiles(currentROM.root).size(), listed);
    QCOMPARE(fileTreeContainer().allDirectories(currentROM.root).size(), cartridge().folders.size());
    // A palette two folders deep: its address counts from the inner folder's own alone.
    const fileTreeFile *water = fileTreeContainer().fileFromPath(QStringLiteral("Root/Level/Liquids/Water/Water 1"));
    QVERIFY(water);
    QCOMPARE(water->parent->realAddress(), 0x168000);
    QCOMPARE(water->paletteAddress, 0x168000 - 0x8000);
}

void tst_Demo::texturesShowWhatWasDrawn()
{
    for (const demo::Texture &texture : cartridge().textures) {
        if (!texture.listed)
            continue;
        const fileTreeFile *file = fileTreeContainer().fileFromPath(pathOf(texture));
        const QImage shown = textureManipulator::generateTexture(file->data(), textureFormats::getAsMap().value(file->format),
                                                                 file->width, file->palette());
        QCOMPARE(shown.size(), texture.picture.size());
        if (texture.format == QLatin1String("jpeg")) {
            QVERIFY(meanDifference(shown, texture.picture) < 6);
            continue;
        }
        int wrong = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x)
                wrong += !resembles(texture.picture.pixel(x, y), shown.pixel(x, y), texture.format);
        }
        QVERIFY2(wrong == 0, qPrintable(QStringLiteral("%1: %2 pixels").arg(pathOf(texture)).arg(wrong)));
    }
}

void tst_Demo::aPictureIsThereTwice()
{
    const fileTreeFile *grass = fileTreeContainer().fileFromPath(QStringLiteral("Root/Level/Ground/Grass"));
    QVERIFY(grass);
    const int second = currentROM.data.indexOf(grass->data(), grass->realAddress() + 1);
    QVERIFY(second > grass->realAddress());
    QCOMPARE(currentROM.data.indexOf(grass->data(), second + 1), -1);
    QCOMPARE(currentROM.data.indexOf(grass->data()), grass->realAddress());
}

void tst_Demo::byteOrdersHoldTheSameImage()
{
    const QByteArray image = contentOf(demoPath(QStringLiteral("demo.z64")));
    QCOMPARE(contentOf(demoPath(QStringLiteral("demo.v64"))), withReversedUnits(image, 2));
    QCOMPARE(contentOf(demoPath(QStringLiteral("demo.n64"))), withReversedUnits(image, 4));
}

void tst_Demo::importsFitTheirTextures()
{
    int jpegs = 0;
    QVERIFY(cartridge().imports.size() >= 20);
    for (const demo::Picture &picture : cartridge().imports) {
        const QString path = picture.path.mid(int(qstrlen("import/")));
        const fileTreeFile *file =
            fileTreeContainer().fileFromPath(QStringLiteral("Root/") + path.section(QLatin1Char('.'), 0, 0));
        QVERIFY2(file, qPrintable(path));
        const QImage written(demoPath(picture.path));
        if (file->format == QLatin1String("jpeg")) {
            ++jpegs;
            QVERIFY(path.endsWith(QLatin1String(".jpeg")));
            QVERIFY(contentOf(demoPath(picture.path)).size() <= 0x20000);
            continue;
        }
        QCOMPARE(written.size(), QSize(file->width, file->height));
        const QByteArray bytes = textureManipulator::generateData(written, textureFormats::getAsMap().value(file->format));
        QCOMPARE(bytes.size(), file->size());
        QVERIFY2(bytes != file->data(), qPrintable(path));
        if (textureFormats::getAsMap().value(file->format).usesPalette) {
            QCOMPARE(written.format(), QImage::Format_Indexed8);
            const QImage shown = textureManipulator::generateTexture(bytes, textureFormats::getAsMap().value(file->format),
                                                                     file->width, file->palette());
            for (int x = 0; x < shown.width(); ++x)
                QVERIFY2(resembles(written.pixel(x, x), shown.pixel(x, x), file->format), qPrintable(path));
        }
    }
    QCOMPARE(jpegs, 1);
}

void tst_Demo::packNamesLeadIntoTheImage()
{
    int byPointer = 0;
    int byAddress = 0;
    const QRegularExpression pattern(QStringLiteral("^pack/([AP])_([0-9A-F]{8})_[^/]+/([0-9A-F]{8})_([^_]+)_[^/]+$"));
    for (const demo::Picture &picture : cartridge().pack) {
        const QRegularExpressionMatch match = pattern.match(picture.path);
        QVERIFY2(match.hasMatch(), qPrintable(picture.path));
        QVERIFY(QFile::exists(demoPath(picture.path)));
        int folder = match.captured(2).toInt(nullptr, 16);
        const int address = match.captured(3).toInt(nullptr, 16);
        const textureFormat format = textureFormats::getAsMap().value(match.captured(4), textureFormats::null);
        const QByteArray bytes = textureManipulator::generateData(QImage(demoPath(picture.path)), format);
        QVERIFY(!bytes.isEmpty());
        if (match.captured(1) == QLatin1String("A")) {
            ++byAddress;
        } else {
            // The entry counts from where the pointer leads, and shows there what the pack brings.
            ++byPointer;
            folder = int(qFromBigEndian<quint32>(currentROM.data.constData() + folder));
            QVERIFY(folder > 0);
            QCOMPARE(currentROM.data.mid(folder + address, bytes.size()), bytes);
        }
        QVERIFY(folder + address + bytes.size() <= currentROM.data.size());
        QVERIFY(currentROM.data.mid(address, bytes.size()) != bytes);
    }
    QVERIFY(byAddress >= 3);
    QCOMPARE(byPointer, 1);
}

void tst_Demo::packLeavesTheTableFaultless()
{
    fileTreeDirectory *root = currentROM.root;
    const int entries = fileTreeContainer().allFiles(root).size();
    WorkLog log;
    const TextureSink sink = [&log](const QImage &picture, int address, const QString &format, const QByteArray &raw) {
        QCOMPARE(writeTexture(&currentROM, picture, address, format, raw, &log), WriteOutcome::Written);
    };
    importPack(demoPath(QStringLiteral("pack")), root, currentROM.data, sink, &log);
    const QList<fileTreeFile *> all = fileTreeContainer().allFiles(root);
    QCOMPARE(all.size(), entries + cartridge().pack.size());
    Progress progress;
    const Verification verification = verifyEntries(all, all, &progress);
    QStringList problems;
    for (const EntryFinding &finding : verification.findings) {
        if (isProblem(finding.finding))
            problems << fullPath(*finding.texture) + QLatin1String(": ") + finding.message;
    }
    QCOMPARE(problems, QStringList());
}

void tst_Demo::searchesLieInTheUnexploredFolder()
{
    const fileTreeDirectory *folder = currentROM.root->getDirectoryByName(QStringLiteral("Unexplored"));
    QVERIFY(folder);
    QVERIFY(folder->files.isEmpty());
    const QByteArray range = currentROM.data.mid(folder->realAddress(), folder->size);
    QCOMPARE(cartridge().searches.size(), 4);
    for (const demo::Picture &picture : cartridge().searches) {
        const QImage written(demoPath(picture.path));
        const bool found = range.contains(textureManipulator::generateData(written, textureFormats::rgba32))
            || range.contains(textureManipulator::generateData(written, textureFormats::rgb5a1));
        QVERIFY2(found, qPrintable(picture.path));
    }
}

void tst_Demo::blockHoldsPictures()
{
    const BlockList list = findBlocks(cartridge().image);
    QCOMPARE(list.blocks.size(), 1);
    const CompressedBlock &block = list.blocks.first();
    QCOMPARE(block.address, 0xF8000);
    QVERIFY(block.kind == BlockKind::Yay0);
    QVERIFY(block.end() < 0xFC000);
    const QByteArray content = unpackedBlock(cartridge().image, block);
    QCOMPARE(content, cartridge().block);
    const auto texels = [this](const QString &name) {
        return textureManipulator::generateData(QImage(demoPath(QStringLiteral("search/%1.png").arg(name))),
                                                textureFormats::rgb5a1);
    };
    QVERIFY(content.mid(demo::keyInBlock).startsWith(texels(QStringLiteral("Key"))));
    QVERIFY(content.mid(demo::leafInBlock).startsWith(texels(QStringLiteral("Leaf"))));
}

void tst_Demo::secondRevisionMovesThings()
{
    const QByteArray revision = contentOf(demoPath(QStringLiteral("demo-1.1.z64")));
    QCOMPARE(revision, demo::secondRevision());
    QCOMPARE(revision.size(), cartridge().image.size());
    QCOMPARE(cartridgeIdentifier(revision), QStringLiteral("NQDE1"));
    for (const demo::Texture &texture : cartridge().textures) {
        const int moved = texture.address < 0x140000                    ? 0
            : texture.address < 0x200000 || texture.address >= 0x240000 ? 0x2000
            : texture.address < 0x220000                                ? 0x22000
                                                                        : 0x2000 - 0x20000;
        QCOMPARE(revision.mid(texture.address + moved, texture.data.size()) == texture.data,
                 texture.name != QLatin1String("Sun"));
    }
}

void tst_Demo::comesOutTheSameEveryTime()
{
    QTemporaryDir other;
    QString error;
    QVERIFY2(demo::writeDemo(other.path(), other.filePath(QStringLiteral("profiles")), &error), qPrintable(error));
    QStringList names {QStringLiteral("demo.z64"), QStringLiteral("demo.v64"), QStringLiteral("demo.n64"),
                       QStringLiteral("demo-1.1.z64")};
    for (const demo::Picture &picture : cartridge().imports + cartridge().pack + cartridge().searches)
        names.append(picture.path);
    for (const QString &name : names) {
        QVERIFY(!contentOf(other.filePath(name)).isEmpty());
        QCOMPARE(contentOf(other.filePath(name)), contentOf(demoPath(name)));
    }
    QCOMPARE(contentOf(other.filePath(QStringLiteral("profiles/NQDE0/default/fileList.xml"))), contentOf(listPath()));
    // The part that no picture codec has a hand in, against a sum taken once: the art is the same on every machine.
    const QByteArray drawn = currentROM.data.mid(0x140000);
    QCOMPARE(QCryptographicHash::hash(drawn, QCryptographicHash::Sha1).toHex(),
             QByteArray("41ed94f9a22d4964b7687e2d31f85c48a8c3f527"));
}

void tst_Demo::keepsTheUsersFileList()
{
    QTemporaryDir other;
    const QString list = other.filePath(QStringLiteral("profiles/NQDE0/default/fileList.xml"));
    QVERIFY(QDir().mkpath(QFileInfo(list).path()));
    QFile file(list);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    QString error;
    QVERIFY2(demo::writeDemo(other.path(), other.filePath(QStringLiteral("profiles")), &error), qPrintable(error));
    QCOMPARE(contentOf(list), QByteArray("mine"));
}

void tst_Demo::reportsAnUnwritableFolder()
{
    QTemporaryDir other;
    QFile file(other.filePath(QStringLiteral("taken")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QString error;
    QVERIFY(!demo::writeDemo(file.fileName() + QStringLiteral("/demo"), other.path(), &error));
    QVERIFY2(error.contains(QStringLiteral("demo.z64")), qPrintable(error));
}

QTEST_GUILESS_MAIN(tst_Demo)
#include "tst_demo.moc"
