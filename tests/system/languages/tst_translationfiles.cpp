// SPDX-License-Identifier: MIT
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

namespace
{
struct Message
{
    QString context;
    QString source;
    QString comment; ///< Tells apart texts that are the same in English.
    QString translation;
    QString state; ///< "unfinished", "vanished" or "obsolete", or empty: done.

    QString key() const { return context + QLatin1Char('|') + source + QLatin1Char('|') + comment; }
};

/// Its text; a control character is an element of its own in such a file.
QString readText(QXmlStreamReader *xml)
{
    QString text;
    while (!xml->atEnd() && xml->readNext() != QXmlStreamReader::EndElement) {
        if (xml->isCharacters())
            text += xml->text();
        if (xml->isStartElement()) {
            text += QChar(xml->attributes().value(QLatin1String("value")).mid(1).toInt(nullptr, 16));
            xml->skipCurrentElement();
        }
    }
    return text;
}

QList<Message> messagesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s cannot be read", qPrintable(path));
    QXmlStreamReader xml(&file);
    QList<Message> messages;
    QString context;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("name")) {
            context = readText(&xml);
        } else if (xml.name() == QLatin1String("message")) {
            messages.append(Message());
            messages.last().context = context;
        } else if (xml.name() == QLatin1String("source")) {
            messages.last().source = readText(&xml);
        } else if (xml.name() == QLatin1String("comment")) {
            messages.last().comment = readText(&xml);
        } else if (xml.name() == QLatin1String("translation")) {
            messages.last().state = xml.attributes().value(QLatin1String("type")).toString();
            messages.last().translation = readText(&xml);
        }
    }
    if (xml.hasError())
        qFatal("%s: %s", qPrintable(path), qPrintable(xml.errorString()));
    return messages;
}

QStringList found(const QString &pattern, const QString &text)
{
    QStringList result;
    QRegularExpressionMatchIterator matches = QRegularExpression(pattern).globalMatch(text);
    while (matches.hasNext())
        result << matches.next().captured();
    result.sort();
    return result;
}

/// The keys that are underlined, in lower case.
QStringList mnemonics(const QString &text)
{
    return found(QStringLiteral("&[^&% ]"), QString(text).remove(QStringLiteral("&&")).toLower());
}

QSet<QString> keysOf(const QList<Message> &messages)
{
    QSet<QString> keys;
    for (const Message &message : messages)
        keys.insert(message.key());
    return keys;
}
}

/// The files that translators edit: that they are complete, fit the sources, and keep what the program puts into texts.
class TranslationFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data();
    void everyTextIsTranslated();
    void contextsAreThoseOfTheRunningProgram();
    void placeholdersAreKept();
    void endingsAreKept();
    void linksAreKept();
    void mnemonicsAreKept();
    void mnemonicsDiffer();
    void filesAreUpToDate();
};

void TranslationFilesTest::initTestCase_data()
{
    QTest::addColumn<QString>("path");
    const QStringList paths = QStringLiteral(QUILLARY_TRANSLATIONS).split(QLatin1Char('|'));
    for (const QString &path : paths)
        QTest::newRow(qPrintable(QFileInfo(path).baseName())) << path;
}

void TranslationFilesTest::everyTextIsTranslated()
{
    QFETCH_GLOBAL(QString, path);
    const QList<Message> messages = messagesOf(path);
    QVERIFY2(messages.size() > 150, "so few texts: they were not all read");
    for (const Message &message : messages) {
        QVERIFY2(message.state.isEmpty(), qPrintable(message.state + QStringLiteral(": ") + message.key()));
        QVERIFY2(!message.translation.trimmed().isEmpty(), qPrintable(message.key()));
    }
}

/// A text in a class within another, which has no tr() of its own, is looked up in the outer one and listed under the inner.
void TranslationFilesTest::contextsAreThoseOfTheRunningProgram()
{
    QFETCH_GLOBAL(QString, path);
    const QList<Message> messages = messagesOf(path);
    for (const Message &message : messages)
        QVERIFY2(!message.context.contains(QStringLiteral("::")), qPrintable(message.key()));
}

void TranslationFilesTest::placeholdersAreKept()
{
    QFETCH_GLOBAL(QString, path);
    const QString placeholder = QStringLiteral("%L?\\d+|%n");
    const QList<Message> messages = messagesOf(path);
    int with = 0;
    for (const Message &message : messages) {
        const QStringList expected = found(placeholder, message.source);
        with += expected.isEmpty() ? 0 : 1;
        QVERIFY2(found(placeholder, message.translation) == expected, qPrintable(message.key()));
    }
    QVERIFY(with > 10);
}

/// The end of a text says what it is: a caption, a sentence, something that opens a dialog.
void TranslationFilesTest::endingsAreKept()
{
    QFETCH_GLOBAL(QString, path);
    const QList<Message> messages = messagesOf(path);
    for (const Message &message : messages) {
        for (const char *end : {":", "...", "?", " "})
            QVERIFY2(message.source.endsWith(QLatin1String(end)) == message.translation.endsWith(QLatin1String(end)),
                     qPrintable(message.key()));
        QVERIFY2(message.source.count(QLatin1Char('\n')) == message.translation.count(QLatin1Char('\n')),
                 qPrintable(message.key()));
    }
}

void TranslationFilesTest::linksAreKept()
{
    QFETCH_GLOBAL(QString, path);
    const QString tagOrFilter = QStringLiteral("<[^>]*>|\\(\\*[^)]*\\)");
    const QList<Message> messages = messagesOf(path);
    for (const Message &message : messages)
        QVERIFY2(found(tagOrFilter, message.translation) == found(tagOrFilter, message.source), qPrintable(message.key()));
}

void TranslationFilesTest::mnemonicsAreKept()
{
    QFETCH_GLOBAL(QString, path);
    const QList<Message> messages = messagesOf(path);
    for (const Message &message : messages)
        QVERIFY2(mnemonics(message.translation).size() == mnemonics(message.source).size(), qPrintable(message.key()));
}

/// A dialog, or the window, is one context here.
void TranslationFilesTest::mnemonicsDiffer()
{
    QFETCH_GLOBAL(QString, path);
    QSet<QString> taken;
    const QList<Message> messages = messagesOf(path);
    for (const Message &message : messages) {
        const QStringList keys = mnemonics(message.translation);
        for (const QString &key : keys) {
            const QString inContext = message.context + key;
            QVERIFY2(!taken.contains(inContext), qPrintable(inContext + QLatin1Char(' ') + message.translation));
            taken.insert(inContext);
        }
    }
    QVERIFY(!taken.isEmpty());
}

void TranslationFilesTest::filesAreUpToDate()
{
    QFETCH_GLOBAL(QString, path);
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QFileInfo(path).fileName());
    QVERIFY(QFile::copy(path, copy));

    QStringList command = QStringLiteral(QUILLARY_LUPDATE).split(QLatin1Char('|'));
    const QString program = command.takeFirst();
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(QUILLARY_SOURCES));
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, command << QStringLiteral("-ts") << copy);
    QVERIFY2(process.waitForFinished(), qPrintable(process.errorString()));
    QCOMPARE(process.readAll(), QByteArray());
    QCOMPARE(process.exitCode(), 0);

    const QSet<QString> kept = keysOf(messagesOf(path));
    const QSet<QString> wanted = keysOf(messagesOf(copy));
    QCOMPARE(QSet<QString>(wanted - kept), QSet<QString>());
    QCOMPARE(QSet<QString>(kept - wanted), QSet<QString>());
    // The same bytes, too: nothing of one machine gets in, and an update shows what changed and nothing else.
    QFile before(path), after(copy);
    QVERIFY(before.open(QIODevice::ReadOnly) && after.open(QIODevice::ReadOnly));
    QCOMPARE(after.readAll(), before.readAll());
}

QTEST_GUILESS_MAIN(TranslationFilesTest)
#include "tst_translationfiles.moc"
