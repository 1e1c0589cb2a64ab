// SPDX-License-Identifier: MIT
#include "persist/imagefile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace
{
class ImageFileTest : public QObject
{
    Q_OBJECT

private slots:
    void readsTheWholeFile_data();
    void readsTheWholeFile();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void refusesMoreThanAnArrayHolds();
    void reportsAReadThatFails();

private:
    /// Expects reading \a path to fail, and the array to stay as it was. The reason.
    static QString refusal(const QString &path);

    QTemporaryDir m_folder;
};

QString ImageFileTest::refusal(const QString &path)
{
    QByteArray bytes("before");
    QString error;
    if (readWholeFile(path, &bytes, &error) || error.isEmpty() || bytes != "before")
        return QStringLiteral("no refusal");
    return error;
}

void ImageFileTest::readsTheWholeFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("line ends stay") << QByteArray("a\r\nb\n\rc\0d", 9);
    QTest::newRow("several blocks") << QByteArray(100001, '\x80');
}

void ImageFileTest::readsTheWholeFile()
{
    QFETCH(QByteArray, content);
    QFile file(m_folder.filePath("image"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
    file.close();
    QByteArray bytes("before");
    QString error;
    QVERIFY(readWholeFile(file.fileName(), &bytes, &error));
    QCOMPARE(bytes, content);
    QCOMPARE(error, QString());
}

void ImageFileTest::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    QTest::newRow("absent") << m_folder.filePath("absent") << "No such file or directory";
    QTest::newRow("folder") << m_folder.path() << QString();
#ifdef Q_OS_UNIX
    const QString pipe = m_folder.filePath("pipe");
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QTest::newRow("pipe") << pipe << "It is not a regular file";
    QTest::newRow("device without an end") << "/dev/zero"
                                           << "It is not a regular file";
#endif
}

void ImageFileTest::refusesWhatIsNoFile()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    const QString refused = refusal(path);
    QVERIFY(refused != "no refusal");
    if (!reason.isEmpty())
        QCOMPARE(refused, reason);
}

/// The file has holes: it takes no room.
void ImageFileTest::refusesMoreThanAnArrayHolds()
{
    QFile file(m_folder.filePath("large"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    if (!file.resize(Q_INT64_C(0x7FFFFFFF)))
        QSKIP("no files with holes here");
    file.close();
    QCOMPARE(refusal(file.fileName()), QStringLiteral("It is larger than 2 GiB"));
}

void ImageFileTest::reportsAReadThatFails()
{
    const QString memory = QStringLiteral("/proc/self/mem"); // Nothing is mapped at its start.
    if (!QFile::exists(memory))
        QSKIP("no file here whose reading fails");
    QCOMPARE(refusal(memory), QStringLiteral("Input/output error"));
}
}

QTEST_GUILESS_MAIN(ImageFileTest)
#include "tst_imagefile.moc"
