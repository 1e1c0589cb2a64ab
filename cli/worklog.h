// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "transfer/texturewriter.h"

#include <QString>
#include <QStringList>

namespace cli
{
/// Keeps what work has to say to the user. Debug lines are not printed, but the last one tells what a message is about.
/// Warnings are apart from messages, which tell of failures.
class KeptMessages : public WorkLog
{
public:
    void debug(const QString &line) override { m_context = line; }
    void status(const QString &text, int) override
    {
        messages.append(m_context.isEmpty() ? text : m_context + QLatin1String(": ") + text);
    }
    void warning(const QString &text) override { warnings.append(text); }
    void notImported(const QString &text) override { messages.append(text); }

    QStringList messages;
    QStringList warnings;

private:
    QString m_context;
};

/// Writes imported textures into currentROM's image and counts them.
class ImageWriter
{
public:
    /// A sink for the imports; this object outlives it.
    TextureSink sink();

    int written = 0;
    QStringList failures; ///< Address, format and reason of each that could not be written.

private:
    void write(const QImage &picture, int address, const QString &format, const QByteArray &rawPicture);
};
}
