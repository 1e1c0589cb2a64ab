// SPDX-License-Identifier: MIT
#include "translations/translations.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <algorithm>

/// Outside of any namespace, as the macro demands.
static void initTranslations()
{
#ifdef QUILLARY_TRANSLATED
    Q_INIT_RESOURCE(translations);
#endif
}

namespace
{
QString resourceOf(const QString &translation)
{
    return QStringLiteral(":/translations/quillary_%1.qm").arg(translation);
}

bool exists(const QString &translation)
{
    return QFile::exists(resourceOf(translation));
}

/// As "de_DE" and then "de" for "de-DE": the more general the later.
QStringList candidatesFor(const QString &language)
{
    QStringList parts = language.split(QLatin1Char('-'));
    QStringList candidates;
    for (; !parts.isEmpty(); parts.removeLast())
        candidates << parts.join(QLatin1Char('_'));
    return candidates;
}

bool isEnglish(const QString &language)
{
    return language == QLatin1String("C") || QLocale(language).language() == QLocale::English;
}

/// Whether there was such a translation.
bool install(const QString &fileName, const QString &folder)
{
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(fileName, folder))
        return QCoreApplication::installTranslator(translator);
    delete translator;
    return false;
}
}

QString translationFor(const QStringList &languages)
{
    initTranslations();
    for (const QString &language : languages) {
        // Otherwise someone who reads English best and German next would get German.
        if (isEnglish(language))
            return QString();
        const QStringList candidates = candidatesFor(language);
        const auto best = std::find_if(candidates.cbegin(), candidates.cend(), exists);
        if (best != candidates.cend())
            return *best;
    }
    return QString();
}

QString installTranslation(const QStringList &languages)
{
    const QString translation = translationFor(languages);
    if (translation.isEmpty())
        return QString();
    // Qt's own may be missing, with no harm but English buttons. What is installed last is asked first.
    install(QStringLiteral("qtbase_") + translation, QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    install(resourceOf(translation), QString());
    return translation;
}

QStringList systemLanguages()
{
    const QLocale system = QLocale::system();
    return system.language() == QLocale::C ? QStringList {QStringLiteral("C")} : system.uiLanguages();
}
