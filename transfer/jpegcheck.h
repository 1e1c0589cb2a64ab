// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

/// What an import does about a picture file that spoils a JPEG texture or what lies behind it.
enum class JpegRule {
    WriteAnyway, ///< As the window does: the log has a warning.
    Refuse, ///< Neither what is no JPEG nor what is longer than the JPEG it replaces is written.
    AllowOverrun, ///< Only what is no JPEG is not written.
};

/// What is wrong with writing a file over a JPEG texture. Both texts are empty when nothing is.
struct JpegProblems
{
    QString notJpeg; ///< The file does not begin as a JPEG does.
    QString overrun; ///< It is longer than the JPEG at the address; with the paths of the textures behind that it runs over.

    bool exist() const { return !notJpeg.isEmpty() || !overrun.isEmpty(); }
    bool areRefused(JpegRule rule) const;
    QString text() const;
};

/// Checks the files that one import writes over JPEG textures of the loaded image. The table below the root and its JPEGs are
/// measured once, when the first file is checked, because each write makes measuring start anew.
class JpegChecker
{
public:
    /// \a root outlives this object, and so do its nodes.
    explicit JpegChecker(const fileTreeDirectory *root) : m_root(root) { }

    /// Checks \a file, the bytes of a picture's file, for \a texture. An address at which no JPEG can be measured has no length
    /// to keep to: there, a file is too long only when it runs over other textures.
    JpegProblems check(const QByteArray &file, const fileTreeFile &texture);

    /// Measures now what is otherwise measured at the first check.
    void measureTable();

private:
    struct Span
    {
        qint64 begin;
        qint64 end;
        const fileTreeFile *texture;
        qint64 furthestEnd; ///< Of this span and all before it.
    };

    QString texturesBetween(qint64 begin, qint64 end, const fileTreeFile &texture) const;

    const fileTreeDirectory *m_root;
    bool m_measured = false;
    QVector<Span> m_spans; ///< Of all textures, by their begin.
    QHash<const fileTreeFile *, int> m_sizes; ///< Of the JPEGs, in bytes, as fileTreeFile::size() tells them.
};
