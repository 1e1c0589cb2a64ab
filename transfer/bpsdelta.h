// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// Actions of a BPS patch; the number is the low two bits of an action's first number.
enum class BpsAction {
    SourceRead, ///< Source bytes of the same offset.
    TargetRead, ///< Bytes in the patch.
    SourceCopy, ///< Source bytes of another offset.
    TargetCopy, ///< Target bytes from before; the two ranges may overlap, which repeats what lies between.
};

/// Appends \a number as BPS patches write numbers.
void appendBpsNumber(QByteArray *patch, quint64 number);

/// Appends to \a patch the actions that make \a target of \a source.
/// Time is linear in the two sizes; memory beside them and the patch is about a byte for each of their bytes.
void appendBpsActions(QByteArray *patch, const QByteArray &source, const QByteArray &target);
