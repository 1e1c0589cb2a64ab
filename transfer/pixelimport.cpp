// SPDX-License-Identifier: MIT
#include "transfer/pixelimport.h"

#include "transfer/importremarks.h"
#include "transfer/palettefitting.h"

PixelImport::Outcome PixelImport::prepare(const QString &path, const fileTreeFile &texture, QImage *picture,
                                          const QByteArray &file)
{
    const textureFormat format = m_formats.value(texture.format);
    if (format.name == textureFormats::jpeg.name)
        return prepareJpeg(path, texture, file);
    const ImportRemarks remarks(path, texture, m_log);
    if (!format.usesPalette) {
        remarks.onEncoding(*picture, format);
        return Outcome::Ready;
    }
    // The indices at the same places mean something only in a picture of the same size.
    const bool fits = picture->size() == QSize(texture.width, texture.height);
    const PresentTexture present = presentTexture(currentROM.data, format, texture.realAddress(), texture.realPaletteAddress(),
                                                  fits ? qint64(picture->width()) * picture->height() : 0);
    if (!needsPalette(*picture, format)) {
        remarks.onColourTable(*picture, format, present.palette);
        return Outcome::Ready;
    }
    const FittedPicture fitted = fitToPalette(*picture, format, present);
    if (fitted.picture.isNull())
        return Outcome::NoPalette;
    remarks.onFitting(*picture, fitted, true);
    *picture = fitted.picture;
    return Outcome::Ready;
}

PixelImport::Outcome PixelImport::prepareJpeg(const QString &path, const fileTreeFile &texture, const QByteArray &file)
{
    const JpegProblems problems = m_jpegs.check(file, texture);
    if (problems.areRefused(m_rule)) {
        m_log->notImported(path + QLatin1String(": ") + problems.text());
        return Outcome::Refused;
    }
    if (problems.exist())
        m_log->warning(path + QLatin1String(": ") + problems.text());
    return Outcome::Ready;
}
