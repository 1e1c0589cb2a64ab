// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"
#include "verify/bytespans.h"

#include <QList>
#include <QString>
#include <QVector>

/// What verification looks for in a texture entry.
enum class Finding {
    Format, ///< The format is not in the format table.
    Dimensions, ///< Width or height is below 1.
    Outside, ///< The texture's bytes do not all lie inside the image.
    Jpeg, ///< No JPEG that can be measured lies at the address.
    Undecodable, ///< The bytes give no picture, or one of another size.
    RoundTrip, ///< The picture, encoded again, gives other bytes.
    Overlap, ///< The bytes are partly those of other entries.
    Palette, ///< The palette's bytes do not all lie inside the image.
    Transparent, ///< A remark, nothing wrong: clear texels carry a colour, which is lost when the picture is imported back.
};

/// All findings, in the order in which they are reported.
const QVector<Finding> &allFindings();

/// The word for a finding in reports: "format", "outside", ...
QString findingName(Finding finding);

/// Whether a finding is something wrong and not just a remark.
bool isProblem(Finding finding);

/// One finding about one entry.
struct EntryFinding
{
    const fileTreeFile *texture = nullptr; ///< Not owned.
    Finding finding = Finding::Format;
    QString message;
    QVector<const fileTreeFile *> others; ///< For Overlap: the other entries, or the first of very many.
    qint64 otherCount = 0; ///< For Overlap: how many others there are.
};

/// What verification found in the entries that were asked for.
struct Verification
{
    int entries = 0; ///< Looked at.
    int faulty = 0; ///< With at least one problem.
    QVector<EntryFinding> findings;
    bool cancelled = false; ///< Not all were looked at.

    int count(Finding finding) const;
};

/// The bytes of the image that \a texture takes, whatever the image's size; empty when it takes none or cannot be measured.
ByteSpan spanOf(const fileTreeFile &texture);

/// The bytes of the image that the palette of \a texture takes; empty when its format uses none.
ByteSpan paletteSpanOf(const fileTreeFile &texture);

/// Checks each of \a wanted, which are among \a all, against currentROM's image and for overlaps with \a all.
Verification verifyEntries(const QList<fileTreeFile *> &wanted, const QList<fileTreeFile *> &all, Progress *progress);

/// What of the image neither the textures nor the palettes of \a all cover.
QVector<ByteSpan> uncoveredSpans(const QList<fileTreeFile *> &all);

/// \a data with every texel whose alpha is zero cleared: what encoding gives for it. Other formats come back as they are.
QByteArray withClearTexelsCleared(QByteArray data, const QString &format);
