// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// The translation that a user who reads \a languages, best first as QLocale::uiLanguages() lists them, is best served with: the
/// part of its file's name that names the language, such as "de". Empty where that is English, in which the program is written:
/// when English comes first among those that there are, or when there is none of them.
QString translationFor(const QStringList &languages);

/// Makes the application show its texts, and Qt's own in dialogs, in the best translation for \a languages. To be called before
/// the first window is made. Returns translationFor(languages).
QString installTranslation(const QStringList &languages);

/// The languages of the user's system, best first. The plain locale "C" stands for English, whatever else is set.
QStringList systemLanguages();
