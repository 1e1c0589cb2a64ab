// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "transfer/jpegcheck.h"

#include <QByteArray>
#include <QImage>
#include <QMap>
#include <QString>

/// Prepares the pictures of an import that writes pixels alone, of folders and packs, for encoding over textures of the loaded
/// image.
class PixelImport
{
public:
    enum class Outcome {
        Ready,
        NoPalette, ///< The picture has no colour table, and the palette to take colours from lies outside the image.
        Refused, ///< The JPEG rule forbids it; the log says why.
    };

    /// The nodes below \a root and \a log outlive this object.
    PixelImport(const fileTreeDirectory *root, JpegRule rule, WorkLog *log) : m_jpegs(root), m_rule(rule), m_log(log) { }

    /// Measures the table for the checks of JPEGs now, before anything is added to it.
    void measureTable() { m_jpegs.measureTable(); }

    /// For a palette format, turns \a picture, unless it has a colour table, to the nearest colours of the present palette of
    /// \a texture; warns about all that is dropped. \a path is that of the picture's file, and \a file its bytes.
    Outcome prepare(const QString &path, const fileTreeFile &texture, QImage *picture, const QByteArray &file);

private:
    Outcome prepareJpeg(const QString &path, const fileTreeFile &texture, const QByteArray &file);

    JpegChecker m_jpegs;
    JpegRule m_rule;
    WorkLog *m_log;
    const QMap<QString, textureFormat> m_formats = textureFormats::getAsMap();
};
