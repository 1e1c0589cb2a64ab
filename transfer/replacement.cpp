// SPDX-License-Identifier: MIT
#include "transfer/replacement.h"

#include "codec/pictureloader.h"
#include "persist/imagefile.h"
#include "transfer/debugline.h"

#include <QCoreApplication>

namespace
{
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
                              const TextureSink &write, WorkLog *log)
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
    if (readable)
        write(picture, texture.realAddress(), texture.format, rawPicture);
    else
        log->status(QCoreApplication::translate("MainWindow", "Could not read image file"), 2000);

    const QImage palette = paletteOfPicture(picture, textureFormats::getAsMap().value(texture.format));
    if (!palette.isNull())
        write(palette, texture.realPaletteAddress(), textureFormats::rgb5a1.name, QByteArray());
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
