// SPDX-License-Identifier: MIT
#include "cli/worklog.h"

#include "base/hexnumber.h"
#include "model/rom.h"

namespace cli
{
namespace
{
/// Keeps the last message for the user and nothing else.
class LastMessage : public WorkLog
{
public:
    void status(const QString &message, int) override { text = message; }

    QString text;
};
}

TextureSink ImageWriter::sink()
{
    return [this](const QImage &picture, int address, const QString &format, const QByteArray &rawPicture) {
        write(picture, address, format, rawPicture);
    };
}

void ImageWriter::write(const QImage &picture, int address, const QString &format, const QByteArray &rawPicture)
{
    LastMessage log;
    if (writeTexture(&currentROM, picture, address, format, rawPicture, &log) == WriteOutcome::Written)
        ++written;
    else
        failures.append(QStringLiteral("%1, %2: %3").arg(hexNumber(address), format, log.text));
}
}
