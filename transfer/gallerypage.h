// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// The parts of a gallery page that are the same in each, in UTF-8.
namespace galleryPage
{
/// From the first line on into the head. Its policy lets the page load nothing but the pictures that it holds itself.
QByteArray beginning();
QByteArray style();
/// What filters, sorts and zooms.
QByteArray controls();
QByteArray script();
}
