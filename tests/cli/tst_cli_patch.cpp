// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "base/hexnumber.h"
#include "model/byteorder.h"
#include "model/headerchecksum.h"
#include "support/bootimages.h"
#include "transfer/imagepatch.h"

namespace
{
QByteArray turned(QByteArray image, ByteOrder order)
{
    convertByteOrder(&image, order);
    return image;
}

/// A folder with two images, in the byte orders that circulate.
class PatchFolder
{
public:
    PatchFolder() : original(cartridgeImage(4096)), changed(original)
    {
        changed.replace(2000, 5, "fresh");
        writeFile(path("old.z64"), original);
        writeFile(path("old.v64"), turned(original, ByteOrder::ByteSwapped));
        writeFile(path("old.n64"), turned(original, ByteOrder::LittleEndian));
        writeFile(path("new.z64"), changed);
        writeFile(path("new.n64"), turned(changed, ByteOrder::LittleEndian));
    }

    QString path(const QString &name) const { return m_folder.filePath(name); }

    /// Calls \a command, in which "@" stands before a name in this folder.
    CommandCall call(const QString &command) const
    {
        QStringList arguments = command.split(' ');
        for (QString &argument : arguments) {
            if (argument.startsWith('@'))
                argument = path(argument.mid(1));
        }
        return ::call(arguments);
    }

    bool has(const QString &name) const { return QFile::exists(path(name)); }

    QByteArray original;
    QByteArray changed;

private:
    QTemporaryDir m_folder;
};

QString sumOf(const QByteArray &bytes)
{
    return hexNumber(qint32(~plainCrcRegister(bytes)));
}

class PatchCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void patchesPassBetweenByteOrders_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("patch");
        QTest::addColumn<QString>("appliedTo");
        QTest::newRow("z64") << "@old.z64"
                             << "@new.z64"
                             << "@p.bps"
                             << "@old.z64";
        QTest::newRow("mixed images") << "@old.v64"
                                      << "@new.n64"
                                      << "@p.bps"
                                      << "@old.z64";
        QTest::newRow("applied to v64") << "@old.z64"
                                        << "@new.z64"
                                        << "@p.bps"
                                        << "@old.v64";
        QTest::newRow("applied to n64") << "@old.z64"
                                        << "@new.z64"
                                        << "@p.BPS"
                                        << "@old.n64";
        QTest::newRow("ips") << "@old.z64"
                             << "@new.n64"
                             << "@p.ips"
                             << "@old.v64";
    }
    void patchesPassBetweenByteOrders()
    {
        QFETCH(const QString, from);
        QFETCH(const QString, to);
        QFETCH(const QString, patch);
        QFETCH(const QString, appliedTo);
        const PatchFolder folder;
        const CommandCall made = folder.call("patch create " + from + ' ' + to + " -o " + patch);
        QVERIFY2(made.status == 0, qPrintable(made.err));
        QVERIFY(fileBytes(folder.path(patch.mid(1))).size() < 200);
        const CommandCall applied = folder.call("patch apply " + appliedTo + ' ' + patch + " -o @out.z64");
        QVERIFY2(applied.status == 0, qPrintable(applied.err));
        QCOMPARE(fileBytes(folder.path("out.z64")), folder.changed);
        QCOMPARE(applied.err.contains("nothing tells whether it is for this image"), patch.endsWith(".ips"));
    }

    void aPatchForAnotherOrderIsAppliedInIt()
    {
        const PatchFolder folder;
        writeFile(folder.path("p.bps"),
                  createBps(turned(folder.original, ByteOrder::ByteSwapped), turned(folder.changed, ByteOrder::ByteSwapped), {}));
        const CommandCall applied = folder.call("patch apply @old.z64 @p.bps -o @out.z64 --json");
        QCOMPARE(applied.status, 0);
        QCOMPARE(applied.json().value("madeFor").toString(), QString("v64"));
        QCOMPARE(fileBytes(folder.path("out.z64")), folder.changed);
    }

    void aWrongOriginalIsRefused()
    {
        const PatchFolder folder;
        QCOMPARE(folder.call("patch create @old.z64 @new.z64 -o @p.bps").status, 0);
        writeFile(folder.path("other.z64"), cartridgeImage(4100));
        const CommandCall applied = folder.call("patch apply @other.z64 @p.bps -o @out.z64");
        QCOMPARE(applied.status, 1);
        QVERIFY2(applied.err.contains("it expects 4096 bytes with the checksum " + sumOf(folder.original)
                                      + ", not 4100 bytes with " + sumOf(cartridgeImage(4100))),
                 qPrintable(applied.err));
        QVERIFY(!folder.has("out.z64"));
        const CommandCall again = folder.call("patch apply @new.z64 @p.bps --in-place");
        QCOMPARE(again.status, 1);
        QVERIFY(again.err.contains("the image is what the patch makes already"));
        QCOMPARE(fileBytes(folder.path("new.z64")), folder.changed);
    }

    void damagedPatchesWriteNothing_data()
    {
        QTest::addColumn<QByteArray>("patch");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no patch") << QByteArray("GIF89a");
        QTest::newRow("bps alone") << QByteArray("BPS1");
        QTest::newRow("ips cut off") << QByteArray("PATCH\0\0\0", 8);
        QTest::newRow("ips overlong") << QByteArray("PATCHEOFmore");
    }
    void damagedPatchesWriteNothing()
    {
        QFETCH(const QByteArray, patch);
        const PatchFolder folder;
        writeFile(folder.path("p"), patch);
        for (const char *command : {"patch apply @old.z64 @p -o @out.z64", "patch info @p"}) {
            const CommandCall result = folder.call(command);
            QCOMPARE(result.status, 1);
            QVERIFY(result.out.isEmpty());
            QVERIFY(result.err.contains(": It "));
        }
        QVERIFY(!folder.has("out.z64"));
        QCOMPARE(folder.call("patch apply @old.z64 @p --in-place").status, 1);
        QCOMPARE(fileBytes(folder.path("old.z64")), folder.original);
    }

    void dryRunsWriteNothing()
    {
        const PatchFolder folder;
        const CommandCall made = folder.call("patch create @old.z64 @new.z64 -o @p.bps --dry-run");
        QCOMPARE(made.status, 0);
        QVERIFY2(made.out.startsWith("Would write a patch (BPS, "), qPrintable(made.out));
        QVERIFY(!folder.has("p.bps"));
        QCOMPARE(folder.call("patch create @old.z64 @new.z64 --dry-run").status, 0);
        QCOMPARE(folder.call("patch create @old.z64 @new.z64 -o @p.bps").status, 0);
        const CommandCall applied = folder.call("patch apply @old.z64 @p.bps -o @out.z64 --dry-run");
        QCOMPARE(applied.status, 0);
        QCOMPARE(applied.out, QString("Would change 5 bytes from 0x000007D0 to 0x000007D4.\n"));
        QVERIFY(!folder.has("out.z64"));
    }

    void wrongUsageIsTold_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("error");
        QTest::newRow("no second word") << "patch"
                                        << R"("patch" needs one of: create, apply, info)";
        QTest::newRow("wrong second word") << "patch make x"
                                           << R"(There is no command "patch make"; there are: create, apply, info)";
        QTest::newRow("nowhere to write") << "patch create @old.z64 @new.z64"
                                          << "Say where to write: --output FILE.bps or FILE.ips";
        QTest::newRow("another suffix") << "patch create @old.z64 @new.z64 -o p.xyz"
                                        << R"(it ends in .bps or .ips, unlike "p.xyz")";
        QTest::newRow("apply without target") << "patch apply @old.z64 @p.bps"
                                              << "Say where to write";
        QTest::newRow("over the patch") << "patch apply @old.z64 @new.z64 -o @new.z64"
                                        << "--output names the patch";
        QTest::newRow("over the original") << "patch apply @old.z64 @new.z64 -o @old.z64"
                                           << "use --in-place";
    }
    void wrongUsageIsTold()
    {
        QFETCH(const QString, command);
        const PatchFolder folder;
        const CommandCall result = folder.call(command);
        QCOMPARE(result.status, 2);
        QVERIFY(result.out.isEmpty());
        QFETCH(const QString, error);
        QVERIFY2(result.err.contains(error), qPrintable(result.err));
    }

    void anImageIsNoPlaceForAPatch()
    {
        const PatchFolder folder;
        writeFile(folder.path("image.bps"), folder.original);
        QCOMPARE(folder.call("patch create @image.bps @new.z64 -o @image.bps").status, 2);
        QCOMPARE(fileBytes(folder.path("image.bps")), folder.original);
    }

    void changesBehind16MebibytesNameTheWayOut()
    {
        const PatchFolder folder;
        QByteArray image = cartridgeImage(0x1000010);
        writeFile(folder.path("large.z64"), image);
        image[0x1000004] = char(image.at(0x1000004) + 1);
        writeFile(folder.path("large2.z64"), image);
        const CommandCall ips = folder.call("patch create @large.z64 @large2.z64 -o @p.ips");
        QCOMPARE(ips.status, 1);
        QVERIFY2(ips.err.contains("behind the first 16 MiB, which an IPS patch cannot say; make a BPS patch"),
                 qPrintable(ips.err));
        QVERIFY(!folder.has("p.ips"));
        QCOMPARE(folder.call("patch create @large.z64 @large2.z64 -o @p.bps").status, 0);
    }

    void checkCodesAreTold()
    {
        const PatchFolder folder;
        QByteArray right = bootImage(0x90BB6CB5);
        storeCheckCodes(&right, *computedCheckCodes(right, BootChip::Cic6102));
        QByteArray wrong = right;
        wrong[0x2000] = char(wrong.at(0x2000) + 1);
        writeFile(folder.path("right.z64"), right);
        writeFile(folder.path("wrong.z64"), wrong);
        const CommandCall made = folder.call("patch create @right.z64 @wrong.z64 -o @p.bps");
        QCOMPARE(made.status, 0);
        QVERIFY2(made.out.contains("(different)\nThe console refuses to start it: \"quillary-cli checksum --fix\""),
                 qPrintable(made.out));
        QVERIFY(folder.call("patch create @wrong.z64 @right.z64 -o @back.bps").out.endsWith("(the same)\n"));
        const auto match = [&folder](const QString &more) {
            const CommandCall call = folder.call("patch apply @right.z64 @p.bps --dry-run --json" + more);
            return call.json().value("checkCodes");
        };
        QVERIFY(match("").isNull());
        QCOMPARE(match(" --with-checksum").toObject().value("match"), QJsonValue(false));
        QVERIFY(folder.call("patch apply @wrong.z64 @back.bps --dry-run --with-checksum").out.endsWith("(the same)\n"));
        // What is no cartridge image has no codes.
        writeFile(folder.path("a.bin"), "abc");
        writeFile(folder.path("b.bin"), "abd");
        QVERIFY(folder.call("patch create @a.bin @b.bin --dry-run --json").json().value("checkCodes").isNull());
    }

    void infoTellsWhatAPatchIsFor()
    {
        const PatchFolder folder;
        QCOMPARE(folder.call("patch create @old.v64 @new.z64 -o @p.bps").status, 0);
        const QJsonObject bps = folder.call("patch info @p.bps --json").json();
        QCOMPARE(bps.value("kind").toString(), QString("BPS"));
        QCOMPARE(bps.value("madeFor").toString(), QString("z64"));
        QCOMPARE(bps.value("original").toObject(), QJsonObject({{"size", 4096}, {"checksum", sumOf(folder.original)}}));
        QCOMPARE(bps.value("result").toObject(), QJsonObject({{"size", 4096}, {"checksum", sumOf(folder.changed)}}));
        QCOMPARE(bps.value("newBytes").toInt(), 5);
        QVERIFY(folder.call("patch info @p.bps").out.startsWith("Kind:           BPS\nMade for:       z64\n"));
        QCOMPARE(folder.call("patch create @old.v64 @new.z64 -o @p.ips").status, 0);
        const QJsonObject ips = folder.call("patch info @p.ips --json").json();
        QCOMPARE(ips.value("kind").toString(), QString("IPS"));
        QCOMPARE(ips.value("parts").toInt(), 1);
        QCOMPARE(ips.value("end").toInt(), 2005);
        QVERIFY(ips.value("cutTo").isNull());
    }

    void metadataNameTheOrder()
    {
        QCOMPARE(orderInMetadata(bigEndianMetadata()), ByteOrder::BigEndian);
        QCOMPARE(orderInMetadata("<patch byteOrder=\"v64\"/>"), ByteOrder::ByteSwapped);
        QCOMPARE(orderInMetadata("<other byteOrder=\"v64\"/>"), ByteOrder::Unknown);
        QCOMPARE(orderInMetadata("no XML"), ByteOrder::Unknown);
        QCOMPARE(orderInMetadata(""), ByteOrder::Unknown);
    }

    void whatIsCutOrGrownIsTold()
    {
        const PatchFolder folder;
        writeFile(folder.path("short.z64"), folder.original.left(4000));
        QCOMPARE(folder.call("patch create @old.z64 @short.z64 -o @p.ips").status, 0);
        const CommandCall applied = folder.call("patch apply @old.z64 @p.ips -o @out.z64");
        QCOMPARE(applied.status, 0);
        QVERIFY(applied.err.contains("The image shrank from 4096 to 4000 bytes"));
        QCOMPARE(fileBytes(folder.path("out.z64")), folder.original.left(4000));
    }
};
}

QTEST_GUILESS_MAIN(PatchCommandTest)
#include "tst_cli_patch.moc"
