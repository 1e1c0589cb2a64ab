// SPDX-License-Identifier: MIT
#include "transfer/texturewriter.h"

#include "codec/texturemanipulator.h"
#include "model/textureformat.h"
#include "transfer/debugline.h"

#include <QCoreApplication>

namespace
{
constexpr int errorMilliseconds = 5000;

WriteOutcome reportConversionError(WriteOutcome outcome, WorkLog *log)
{
    const QString text = QCoreApplication::translate(
        "MainWindow", "There was an error with the texture converision: Incorrect length. Texture was not imported");
    log->debug(text);
    log->status(text, errorMilliseconds);
    return outcome;
}
}

WriteOutcome writeTexture(ROM *rom, const QImage &picture, int address, const QString &format, const QByteArray &rawPicture,
                          WorkLog *log)
{
    const textureFormat *record = textureFormats::find(format);
    if (!record) {
        log->status(
            QCoreApplication::translate("MainWindow", "The texture is using an unsupported format. Texture was not imported"),
            errorMilliseconds);
        return WriteOutcome::UnknownFormat;
    }
    QByteArray bytes = rawPicture;
    if (!textureFormats::isJpegInAnyCase(format)) {
        bytes = textureManipulator::generateData(picture, *record);
        log->debug(debugLine(bytes.length(), "textureData.length()"));
        if (bytes.isNull())
            return reportConversionError(WriteOutcome::NotEncodable, log);
    }
    if (!rom->overwrite(address, bytes))
        return reportConversionError(WriteOutcome::OutOfRange, log);
    return WriteOutcome::Written;
}
