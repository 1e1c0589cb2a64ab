// SPDX-License-Identifier: MIT
#pragma once

#include "translations/translations.h"

#include <QCoreApplication>
#include <QTranslator>

/// The application in the best translation for a language while this lives, and in English afterwards.
class InLanguage
{
public:
    explicit InLanguage(const QString &language) { installTranslation({language}); }
    ~InLanguage() { qDeleteAll(QCoreApplication::instance()->findChildren<QTranslator *>()); }
    InLanguage(const InLanguage &) = delete;
    InLanguage &operator=(const InLanguage &) = delete;
};
