// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "transfer/palettefitting.h"
#include "transfer/palettesharing.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <bitset>

/// Warns about what an import drops or changes although it succeeds. Each warning begins with the path of the picture's file.
class ImportRemarks
{
public:
    /// About importing the picture in the file at \a path over \a texture. All three outlive this object.
    ImportRemarks(const QString &path, const fileTreeFile &texture, WorkLog *log) : m_path(path), m_texture(texture), m_log(log)
    {
    }

    /// What encoding \a picture in \a format drops: partial alpha, alpha in a format without any, colours in a grey format, and
    /// colours that become the same. For a palette format the picture has a colour table.
    void onEncoding(const QImage &picture, const textureFormat &format) const;

    /// What was dropped when \a picture became \a fitted; \a paletteStays tells fitToPalette() from fitPalette().
    void onFitting(const QImage &picture, const FittedPicture &fitted, bool paletteStays) const;

    /// That \a picture, which has a colour table, gets the colours of \a palette, the texture's words, instead.
    void onColourTable(const QImage &picture, const textureFormat &format, const QByteArray &palette) const;

    /// That the palette, whose places in \a changed change, is also that of \a sharers.
    void onSharedPalette(const QVector<PaletteSharer> &sharers, const std::bitset<256> &changed) const;

    void warn(const QString &text) const;

private:
    const QString &m_path;
    const fileTreeFile &m_texture;
    WorkLog *m_log;
};

/// \a names with commas between them: the first ten and the number of the others.
QString listed(const QStringList &names);
