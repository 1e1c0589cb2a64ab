// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QVector>

class QIODevice;
class fileTreeFile;

/// A gallery is one HTML page that holds everything it shows: pictures with captions, to be filtered, sorted and zoomed in any
/// browser, without a network. How to write one, whole or not at all:
///
///     saveWhole(path, [&](QIODevice *device) {
///         GalleryWriter page(device, {title, remark});
///         for (const fileTreeFile *texture : textures)
///             page.add(galleryItemOf(*texture));
///         return page.finish();
///     }, &error);
///
/// A comparison takes the item of an entry and gives it two pictures: item.pictures = {{"before", old}, {"after", changed}}.

/// One picture of an item.
struct GalleryPicture
{
    QString caption; ///< Below the picture; may be empty.
    QImage picture; ///< At its own pixels; null when there is none to show.
    QByteArray jpeg; ///< The file that \a picture was read from, to be shown as it is; empty to show \a picture as a PNG.
};

/// What one card of the page shows. All texts may come from anywhere; they are escaped.
struct GalleryItem
{
    QString name;
    QString folder; ///< The names of the folders around it, each followed by "/"; may be empty.
    qint64 address = -1; ///< In the image, in bytes; negative when it has none.
    QString format;
    qint64 bytes = -1; ///< Length of the data; negative when it is not known.
    QString note; ///< A further line, such as a reason why there is no picture; may be empty.
    QVector<GalleryPicture> pictures; ///< One, or two to compare.
    QVector<QRgb> palette; ///< Shown as swatches, in rows of 16; empty for formats without.
};

/// The head of a page.
struct GalleryHeading
{
    QString title;
    QString remark; ///< A line below it; may be empty.
};

/// Pixels of pictures in one page: more would be no use in a browser, and a table can ask for any number of them.
constexpr qint64 maximumGalleryPixels = 128 * 1024 * 1024;

/// Writes a page to a device, item by item, so that no more than one picture is in memory.
class GalleryWriter
{
public:
    /// Writes the head of the page. \a device is open, is not owned and outlives this object.
    GalleryWriter(QIODevice *device, const GalleryHeading &heading);

    /// Writes \a item. A picture that takes the page over maximumGalleryPixels is left out, and the item says so.
    void add(const GalleryItem &item);
    /// Writes the end of the page. Returns false when the device has refused data, now or before.
    bool finish();

    int items() const { return m_items; }
    /// Pictures left out because the page was full.
    int leftOut() const { return m_leftOut; }

private:
    void write(const QByteArray &bytes);
    QByteArray pictureHtml(const GalleryPicture &picture);

    QIODevice *m_device;
    bool m_failed = false;
    int m_items = 0;
    int m_leftOut = 0;
    qint64 m_pixels = 0;
};

/// The item of an entry, with its picture as the loaded image holds it, or a note that says why there is none.
GalleryItem galleryItemOf(const fileTreeFile &texture);

/// The colours of a palette's bytes, big-endian rgb5a1 words; an odd last byte is left out.
QVector<QRgb> paletteColours(const QByteArray &palette);
