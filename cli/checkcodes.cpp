// SPDX-License-Identifier: MIT
#include "cli/checkcodes.h"

#include "base/hexnumber.h"

#include <QJsonObject>
#include <QJsonValue>

namespace cli
{
namespace
{
QString hexadecimal(quint32 code)
{
    return hexNumber(qint32(code));
}

QString line(const QString &label, const QString &value)
{
    return label.leftJustified(16) + value + QLatin1Char('\n');
}

QString both(const CheckCodes &codes)
{
    return hexadecimal(codes.first) + QLatin1Char(' ') + hexadecimal(codes.second);
}

QJsonObject asJson(const CheckCodes &codes)
{
    return {{QStringLiteral("first"), hexadecimal(codes.first)}, {QStringLiteral("second"), hexadecimal(codes.second)}};
}
}

CheckCodeFindings checkCodesOf(const QByteArray &image, BootChip chosen)
{
    CheckCodeFindings findings;
    findings.chip = chosen == BootChip::Unknown ? bootChipOf(image) : chosen;
    findings.stored = storedCheckCodes(image).value_or(CheckCodes());
    findings.computed = computedCheckCodes(image, findings.chip);
    return findings;
}

QString CheckCodeFindings::obstacle() const
{
    if (computed)
        return QString();
    if (chip == BootChip::Unknown)
        return QStringLiteral("The boot code is none of the known ones, so the check codes cannot be computed");
    return QStringLiteral("The image is shorter than the %1 bytes that the check codes cover, so they cannot be computed")
        .arg(checkedImageBytes);
}

QString CheckCodeFindings::text() const
{
    const QString verdict = match() ? QStringLiteral(" (the same)") : QStringLiteral(" (different)");
    return line(QStringLiteral("Boot chip:"), bootChipName(chip)) + line(QStringLiteral("Codes stored:"), both(stored))
        + line(QStringLiteral("Codes computed:"), computed ? both(*computed) + verdict : QStringLiteral("none"));
}

QJsonObject CheckCodeFindings::json() const
{
    return {{QStringLiteral("bootChip"), chip == BootChip::Unknown ? QJsonValue() : QJsonValue(bootChipName(chip))},
            {QStringLiteral("stored"), asJson(stored)},
            {QStringLiteral("computed"), computed ? QJsonValue(asJson(*computed)) : QJsonValue()},
            {QStringLiteral("match"), computed ? QJsonValue(match()) : QJsonValue()}};
}
}
