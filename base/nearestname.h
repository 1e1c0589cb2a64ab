// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// The one of \a names that \a wanted is most likely a slip for, ignoring case: the fewest letters typed wrong, left out or
/// added, at most three and at most a third of them. The first of several; empty when there is none.
QString nearestName(const QString &wanted, const QStringList &names);
