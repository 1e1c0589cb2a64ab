// SPDX-License-Identifier: MIT
#include <QMimeDatabase>
#include <QSettings>
#include <QTest>

class DesktopEntryTest : public QObject
{
    Q_OBJECT

private slots:
    /// The shared database knows images by their names, so that the program needs no types of its own.
    void opensImagesOfAllOrders_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"game.z64", "game.v64", "game.n64"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void opensImagesOfAllOrders()
    {
        QFETCH(QString, name);
        QSettings entry(QStringLiteral(QUILLARY_DESKTOP_ENTRY), QSettings::IniFormat);
        entry.beginGroup(QStringLiteral("Desktop Entry"));
        // The format takes ";" for the start of a comment.
        const QString type = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension).name();
        QCOMPARE(entry.value(QStringLiteral("MimeType")).toString(), type);
        QCOMPARE(entry.value(QStringLiteral("Exec")).toString(), QStringLiteral("quillary %f"));
    }
};

QTEST_GUILESS_MAIN(DesktopEntryTest)
#include "tst_desktopentry.moc"
