// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/cartridge.h"
#include "cli/checkcodes.h"
#include "cli/commandtable.h"
#include "cli/output.h"
#include "model/headerchecksum.h"
#include "model/rom.h"

#include <QJsonObject>

namespace cli
{
namespace
{
BootChip chosenChip(const Arguments &arguments)
{
    if (!arguments.isSet("chip"))
        return BootChip::Unknown;
    const BootChip chip = bootChipNamed(arguments.value("chip"));
    if (chip == BootChip::Unknown)
        arguments.reject(
            QStringLiteral("There is no boot chip \"%1\"; there are 6101, 6102, 6103, 6105, 6106 and their twins 7102, "
                           "7101, 7103, 7105, 7106")
                .arg(arguments.value("chip")));
    return chip;
}

int fix(const Arguments &arguments, const OpenedImage &image, const CheckCodes &codes, Streams &streams)
{
    constexpr int headerBytes = 64;
    QByteArray header = currentROM.data.left(headerBytes);
    storeCheckCodes(&header, codes);
    if (!currentROM.overwrite(0, header))
        return Failed; // Not reached: the header lies inside the image.
    if (!arguments.isSet("json"))
        return writeImage(arguments, image, streams);
    // The one document has been printed: what was written where is no part of it.
    QString sentence;
    QTextStream aside(&sentence);
    Streams quiet(aside, streams.err);
    return writeImage(arguments, image, quiet);
}

int run(const Arguments &arguments, Streams &streams)
{
    const QString path = arguments.positional(0);
    const bool fixing = arguments.isSet("fix");
    const BootChip chosen = chosenChip(arguments);
    if (fixing)
        checkImageWriting(arguments);
    else if (arguments.isSet("output") || arguments.isSet("in-place") || arguments.isSet("dry-run"))
        arguments.reject(QStringLiteral("Only --fix writes; without it there is nothing to say where"));
    if (arguments.rejected(streams))
        return WrongUsage;

    OpenedImage image;
    if (!openImage(arguments, &image, streams))
        return Failed;
    if (image.order == ByteOrder::Unknown)
        return streams.failed(QStringLiteral("%1 is no cartridge image: its byte order is unknown").arg(path));
    const CheckCodeFindings findings = checkCodesOf(currentROM.data, chosen);
    if (arguments.isSet("json"))
        printJson(streams.out, findings.json());
    else
        streams.out << findings.text();
    if (!findings.computed)
        return streams.failed(QStringLiteral("%1: %2").arg(path, findings.obstacle()));
    if (fixing)
        return fix(arguments, image, *findings.computed, streams);
    return findings.match() ? Done : Failed;
}
}

Command checksumCommand()
{
    QList<QCommandLineOption> options {
        {QStringLiteral("fix"), QStringLiteral("Write the computed codes into the header.")},
        {QStringLiteral("chip"),
         QStringLiteral(
             "Compute for this boot chip, such as 6102, instead of the one that the boot code tells; for boot code that is "
             "none of the known."),
         QStringLiteral("CHIP")}};
    options << imageWritingOptions() << jsonOption();
    return {QStringLiteral("checksum"),
            QStringLiteral("Show or fix the header's check codes."),
            QStringLiteral("IMAGE"),
            QStringLiteral(
                "Shows the check codes that the header stores and those that the console computes with the boot chip that the\n"
                "boot code tells. Ends with 1 when they differ or cannot be computed. A changed image starts on the console\n"
                "only after --fix."),
            1,
            1,
            options,
            run};
}
}
