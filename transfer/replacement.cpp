// SPDX-License-Identifier: MIT
#include "transfer/replacement.h"

#include "base/wrapping.h"
#include "codec/pictureloader.h"
#include "codec/texturemanipulator.h"
#include "persist/imagefile.h"
#include "transfer/debugline.h"
#include "transfer/importremarks.h"
#include "transfer/palettefitting.h"
#include "transfer/palettesharing.h"

#include <QCoreApplication>

#include <bitset>

namespace
{
constexpr int bytesPerColour = 2;

/// Bytes [start, end) of the image, as 32-bit signed numbers: a hostile entry may end before it starts.
struct ByteRange
{
    qint32 start;
    qint32 end;

    bool contains(qint32 address) const { return start <= address && address < end; }
};

ByteRange rangeOf(const fileTreeFile &texture)
{
    const qint32 start = texture.realAddress();
    return {start, qint32(quint32(start) + quint32(texture.size()))};
}

bool touch(const ByteRange &a, const ByteRange &b)
{
    return a.contains(b.start) || a.contains(b.end) || b.contains(a.start) || b.contains(a.end);
}

/// The places of the palette in \a present that \a runs, once written, change.
std::bitset<256> changedPlaces(const QVector<PaletteRun> &runs, const QByteArray &present)
{
    std::bitset<256> changed;
    for (const PaletteRun &run : runs) {
        const QByteArray words = textureManipulator::generateData(run.colours, textureFormats::rgb5a1);
        for (int i = 0; i < run.colours.width(); ++i) {
            if (present.mid(bytesPerColour * (run.first + i), bytesPerColour) != words.mid(bytesPerColour * i, bytesPerColour))
                changed.set(size_t(run.first + i));
        }
    }
    return changed;
}

/// Turns \a picture to indices where \a texture, in \a format with a palette, needs it, and returns what of the palette is to be
/// written. It depends on what the image holds now, so nothing may be written before.
QVector<PaletteRun> fitToTexture(QImage *picture, const fileTreeFile &texture, const textureFormat &format,
                                 const ImportRemarks &remarks)
{
    PresentTexture present = presentTexture(currentROM.data, format, texture.realAddress(), texture.realPaletteAddress(),
                                            qint64(picture->width()) * picture->height());
    const QVector<PaletteSharer> sharers = paletteSharers(currentROM.root, texture, currentROM.data);
    QVector<PaletteRun> runs;
    if (needsPalette(*picture, format)) {
        present.usedByOthers = placesUsedBy(sharers);
        const FittedPicture fitted = fitPalette(*picture, format, present);
        remarks.onFitting(*picture, fitted, false);
        *picture = fitted.picture;
        runs = fitted.changes;
    } else {
        remarks.onEncoding(*picture, format);
        runs.append({0, paletteOfPicture(*picture, format)});
    }
    remarks.onSharedPalette(sharers, changedPlaces(runs, present.palette));
    return runs;
}
}

QImage fitPicture(const QImage &picture, const QSize &texture, SizeAnswer answer)
{
    if (picture.isNull() || answer == SizeAnswer::Abort || !isAcceptablePictureSize(texture))
        return QImage();
    if (answer == SizeAnswer::IgnoreAspectRatio)
        return picture.scaled(texture, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return picture.scaled(texture, Qt::KeepAspectRatio, Qt::SmoothTransformation).copy(QRect(QPoint(0, 0), texture));
}

QImage paletteOfPicture(const QImage &picture, const textureFormat &format)
{
    if (!format.usesPalette)
        return QImage();
    const int count = textureFormats::paletteColours(format);
    QImage palette(count, 1, QImage::Format_ARGB32);
    palette.fill(qRgba(0, 0, 0, 0));
    for (int i = 0; i < qMin(count, picture.colorCount()); ++i)
        palette.setPixel(i, 0, picture.color(i));
    return palette;
}

ReplaceOutcome replaceTexture(const fileTreeFile &texture, const QString &fileName, const SizeQuestion &ask,
                              const TextureSink &write, WorkLog *log, JpegRule rule)
{
    QImage picture = loadPicture(fileName);
    const QSize size(texture.width, texture.height);
    if (picture.size() != size && !textureFormats::isJpegInAnyCase(texture.format)) {
        const SizeAnswer answer = ask(picture.size(), size);
        if (answer == SizeAnswer::Abort)
            return ReplaceOutcome::Aborted;
        picture = fitPicture(picture, size, answer);
        if (answer == SizeAnswer::KeepAspectRatio)
            log->debug(debugLine(picture.height(), " - ", picture.width()));
    }

    QByteArray rawPicture;
    QString error;
    const bool readable = readWholeFile(fileName, &rawPicture, &error);
    const ImportRemarks remarks(fileName, texture, log);
    const textureFormat format = textureFormats::getAsMap().value(texture.format);
    if (readable && format.name == textureFormats::jpeg.name) {
        const JpegProblems problems = JpegChecker(currentROM.root).check(rawPicture, texture);
        if (problems.areRefused(rule)) {
            log->notImported(fileName + QLatin1String(": ") + problems.text());
            return ReplaceOutcome::Refused;
        }
        if (problems.exist())
            remarks.warn(problems.text());
    }

    QVector<PaletteRun> palette;
    if (format.usesPalette)
        palette = fitToTexture(&picture, texture, format, remarks);
    else
        remarks.onEncoding(picture, format);

    if (readable)
        write(picture, texture.realAddress(), texture.format, rawPicture);
    else
        log->status(QCoreApplication::translate("MainWindow", "Could not read image file"), 2000);
    for (const PaletteRun &run : qAsConst(palette))
        write(run.colours, addWrapping(texture.realPaletteAddress(), bytesPerColour * run.first), textureFormats::rgb5a1.name,
              QByteArray());
    return readable ? ReplaceOutcome::Replaced : ReplaceOutcome::Unreadable;
}

QList<fileTreeFile *> touchingTextures(const fileTreeDirectory *root, const fileTreeFile &texture)
{
    const ByteRange written = rangeOf(texture);
    QList<fileTreeFile *> touching;
    const QList<fileTreeFile *> all = fileTreeContainer().allFiles(root);
    for (fileTreeFile *file : all) {
        if (touch(written, rangeOf(*file)))
            touching.append(file);
    }
    return touching;
}
