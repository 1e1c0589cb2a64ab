// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/cartridge.h"
#include "cli/commandtable.h"
#include "cli/output.h"

#include <QJsonObject>

namespace cli
{
namespace
{
int run(const Arguments &arguments, Streams &streams)
{
    const QString path = arguments.positional(0);
    const QString name = arguments.isSet("order") ? arguments.value("order") : byteOrderName(ByteOrder::BigEndian);
    const ByteOrder order = byteOrderNamed(name);
    if (order == ByteOrder::Unknown)
        arguments.reject(QStringLiteral("There is no byte order \"%1\"; there are z64, v64, n64").arg(name));
    checkImageWriting(arguments);
    if (arguments.rejected(streams))
        return WrongUsage;

    OpenedImage image;
    if (!openImage(arguments, &image, streams))
        return Failed;
    if (image.order == ByteOrder::Unknown)
        return streams.failed(QStringLiteral("%1 is no cartridge image: its byte order is unknown").arg(path));
    const QJsonObject report = arguments.isSet("json") ? imageWritingJson(arguments, image, order) : QJsonObject();
    const int status = writeImage(arguments, image, streams, order);
    if (status == Done && arguments.isSet("json"))
        printJson(streams.out, report);
    return status;
}
}

Command convertCommand()
{
    QList<QCommandLineOption> options {{QStringLiteral("order"),
                                        QStringLiteral("The byte order to write: z64 (the default), v64 or n64."),
                                        QStringLiteral("z64|v64|n64")}};
    options << imageWritingOptions() << jsonOption();
    return {
        QStringLiteral("convert"),
        QStringLiteral("Write the image in a chosen byte order."),
        QStringLiteral("IMAGE"),
        QStringLiteral("Reads the image in whichever byte order it has and writes it in another: z64 is big-endian, v64 has the\n"
                       "bytes of every 16-bit word exchanged, n64 those of every 32-bit word reversed."),
        1,
        1,
        options,
        run};
}
}
