// SPDX-License-Identifier: MIT
#pragma once

#include "cli/commandline.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

/// What a command printed and how it ended.
struct CommandCall
{
    int status = -1;
    QString out;
    QString err;

    QJsonObject json() const
    {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(out.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError || !document.isObject())
            QTest::qFail(qPrintable(QStringLiteral("no JSON: ") + error.errorString() + out.left(200)), __FILE__, __LINE__);
        return document.object();
    }
};

/// Runs the command line in this process with \a arguments behind the program's name.
inline CommandCall call(const QStringList &arguments)
{
    CommandCall result;
    QTextStream out(&result.out);
    QTextStream err(&result.err);
    result.status = cli::run(QStringList(QStringLiteral("quillary-cli")) + arguments, out, err);
    return result;
}

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        QTest::qFail(qPrintable(QStringLiteral("cannot write ") + path), __FILE__, __LINE__);
}

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        QTest::qFail(qPrintable(QStringLiteral("cannot read ") + path), __FILE__, __LINE__);
    return file.readAll();
}
