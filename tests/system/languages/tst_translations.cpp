// SPDX-License-Identifier: MIT
#include "translations/translations.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QTranslator>

namespace
{
/// What makes this program print the translation for its system's languages, and end: Qt looks at them once, when a program
/// starts.
const QString tellTranslation = QStringLiteral("--tell-translation");

/// What \a program prints, in an environment where \a settings ("LANG=de") are all that names languages.
QString outputOf(const QString &program, const QStringList &arguments, const QStringList &settings)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QStringList names = environment.keys();
    for (const QString &name : names) {
        if (name.startsWith(QLatin1String("LC_")) || name.startsWith(QLatin1String("LANG")))
            environment.remove(name);
    }
    for (const QString &setting : settings)
        environment.insert(setting.section(QLatin1Char('='), 0, 0), setting.section(QLatin1Char('='), 1));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return QStringLiteral("%1: %2").arg(program, process.errorString());
    return QString::fromUtf8(process.readAll());
}
}

/// Which translation is chosen for which languages of the user, and that it is shown then.
class TranslationsTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void bestTranslation_data();
    void bestTranslation();
    void systemLanguages_data();
    void systemLanguages();
    void programSpeaksGerman();
    void helpStaysEnglish();
    void germanIsShown();
    void toolkitIsShownInGerman();
    void nothingIsInstalledForEnglish();

private:
    static QString save() { return QCoreApplication::translate("MainWindow", "Save changes"); }
};

/// Takes out what a test installed: translators are the application's children.
void TranslationsTest::cleanup()
{
    qDeleteAll(QCoreApplication::instance()->findChildren<QTranslator *>());
}

void TranslationsTest::bestTranslation_data()
{
    QTest::addColumn<QStringList>("languages");
    QTest::addColumn<QString>("translation");

    QTest::newRow("German") << QStringList {"de-DE", "de", "de-Latn-DE"} << "de";
    QTest::newRow("the language alone") << QStringList {"de"} << "de";
    QTest::newRow("of another country") << QStringList {"de-AT"} << "de";
    QTest::newRow("with its script") << QStringList {"de-Latn-CH"} << "de";
    QTest::newRow("after one that there is not") << QStringList {"ja-JP", "ja", "de-DE"} << "de";
    QTest::newRow("before English") << QStringList {"de-DE", "en-US"} << "de";
    QTest::newRow("English") << QStringList {"en-US", "en", "en-Latn-US"} << "";
    QTest::newRow("English before German") << QStringList {"en-GB", "en", "de-DE", "de"} << "";
    QTest::newRow("one that there is not, before English") << QStringList {"ja", "en", "de"} << "";
    QTest::newRow("one that there is not") << QStringList {"ja-JP", "ja"} << "";
    QTest::newRow("the plain locale") << QStringList {"C"} << "";
    QTest::newRow("the plain locale before German") << QStringList {"C", "de"} << "";
    QTest::newRow("one that begins alike") << QStringList {"den-CA"} << "";
    QTest::newRow("nonsense") << QStringList {"", "-", "--de", "../de", "?"} << "";
    QTest::newRow("none") << QStringList() << "";
}

void TranslationsTest::bestTranslation()
{
    QFETCH(QStringList, languages);
    QTEST(translationFor(languages), "translation");
}

void TranslationsTest::systemLanguages_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("translation");

    QTest::newRow("by LANG") << QStringList {"LANG=de_DE.UTF-8"} << "de";
    QTest::newRow("by LC_MESSAGES") << QStringList {"LANG=en_US.UTF-8", "LC_MESSAGES=de_DE.UTF-8"} << "de";
    QTest::newRow("by LC_ALL") << QStringList {"LANG=en_US.UTF-8", "LC_ALL=de_AT"} << "de";
    QTest::newRow("by LANGUAGE") << QStringList {"LANG=en_US.UTF-8", "LANGUAGE=de:en"} << "de";
    QTest::newRow("English by LANGUAGE") << QStringList {"LANG=de_DE.UTF-8", "LANGUAGE=en_US:de"} << "";
    QTest::newRow("numbers alone") << QStringList {"LANG=en_US.UTF-8", "LC_NUMERIC=de_DE.UTF-8"} << "";
    QTest::newRow("the plain locale") << QStringList {"LC_ALL=C", "LANG=de_DE.UTF-8", "LANGUAGE=de"} << "";
    QTest::newRow("nothing") << QStringList() << "";
}

void TranslationsTest::systemLanguages()
{
    QFETCH(QStringList, environment);
    QTEST(outputOf(QCoreApplication::applicationFilePath(), {tellTranslation}, environment).trimmed(), "translation");
}

void TranslationsTest::programSpeaksGerman()
{
    const QTemporaryDir settings;
    const QStringList arguments {"-platform", "offscreen", "--screenshot", settings.filePath("window.png"), "missing.z64"};
    const QString set = QStringLiteral("XDG_CONFIG_HOME=") + settings.path();
    const QString german = outputOf(QStringLiteral(QUILLARY_PROGRAM), arguments, {set, "LANG=de_DE.UTF-8"});
    QVERIFY2(german.contains(QStringLiteral("kann nicht gelesen werden")), qPrintable(german));
    const QString english = outputOf(QStringLiteral(QUILLARY_PROGRAM), arguments, {set, "LANG=en_US.UTF-8"});
    QVERIFY2(english.contains(QStringLiteral("Cannot read file")), qPrintable(english));
}

/// The options of the command line are the same in every language.
void TranslationsTest::helpStaysEnglish()
{
    const QString help = outputOf(QStringLiteral(QUILLARY_PROGRAM), {"--help"}, {"LANG=de_DE.UTF-8"});
    QVERIFY2(help.contains(QStringLiteral("Show this help and end.")), qPrintable(help));
}

void TranslationsTest::germanIsShown()
{
    QCOMPARE(save(), QStringLiteral("Save changes"));
    QCOMPARE(installTranslation({"de-DE"}), QStringLiteral("de"));
    QCOMPARE(save(), QStringLiteral("Änderungen speichern"));
}

void TranslationsTest::toolkitIsShownInGerman()
{
    const auto cancel = [] { return QCoreApplication::translate("QPlatformTheme", "Cancel"); };
    if (!QFile::exists(QLibraryInfo::location(QLibraryInfo::TranslationsPath) + QStringLiteral("/qtbase_de.qm")))
        QSKIP("Qt's own translations are not installed");
    QCOMPARE(cancel(), QStringLiteral("Cancel"));
    installTranslation({"de-DE"});
    QCOMPARE(cancel(), QStringLiteral("Abbrechen"));
}

void TranslationsTest::nothingIsInstalledForEnglish()
{
    QCOMPARE(installTranslation({"en", "de"}), QString());
    QCOMPARE(save(), QStringLiteral("Save changes"));
    QVERIFY(QCoreApplication::instance()->findChildren<QTranslator *>().isEmpty());
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().value(1) == tellTranslation) {
        QTextStream(stdout) << translationFor(systemLanguages()) << '\n';
        return 0;
    }
    TranslationsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_translations.moc"
