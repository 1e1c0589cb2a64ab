// SPDX-License-Identifier: MIT
#include "transfer/texturewriter.h"

#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "transfer/debugline.h"

#include <QCoreApplication>

#include <cstring>

namespace
{
constexpr int errorMilliseconds = 5000;

/// Puts \a bytes over those of \a cartridge from \a address on; false, with nothing changed, where they must not go.
bool overwrite(QByteArray *cartridge, int address, const QByteArray &bytes)
{
    const qint64 end = qint64(address) + bytes.size();
    const int oldSize = cartridge->size();
    if (address < 0 || (end > oldSize && end > maximumImageBytes))
        return false;
    if (bytes.isEmpty())
        return true;
    releaseImageBytes();
    if (end > oldSize) {
        cartridge->resize(int(end));
        if (address > oldSize)
            std::memset(cartridge->data() + oldSize, 0, size_t(address - oldSize));
    }
    std::memcpy(cartridge->data() + address, bytes.constData(), size_t(bytes.size()));
    return true;
}

WriteOutcome reportConversionError(WriteOutcome outcome, WorkLog *log)
{
    const QString text = QCoreApplication::translate(
        "MainWindow", "There was an error with the texture converision: Incorrect length. Texture was not imported");
    log->debug(text);
    log->status(text, errorMilliseconds);
    return outcome;
}
}

WriteOutcome writeTexture(QByteArray *cartridge, const QImage &picture, int address, const QString &format,
                          const QByteArray &rawPicture, WorkLog *log)
{
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const auto record = formats.constFind(format);
    if (record == formats.constEnd()) {
        log->status(
            QCoreApplication::translate("MainWindow", "The texture is using an unsupported format. Texture was not imported"),
            errorMilliseconds);
        return WriteOutcome::UnknownFormat;
    }
    QByteArray bytes = rawPicture;
    if (format.toLower() != textureFormats::jpeg.name) {
        bytes = textureManipulator::generateData(picture, *record);
        log->debug(debugLine(bytes.length(), "textureData.length()"));
        if (bytes.isNull())
            return reportConversionError(WriteOutcome::NotEncodable, log);
    }
    if (!overwrite(cartridge, address, bytes))
        return reportConversionError(WriteOutcome::OutOfRange, log);
    return WriteOutcome::Written;
}
