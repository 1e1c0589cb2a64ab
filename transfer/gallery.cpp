// SPDX-License-Identifier: MIT
#include "transfer/gallery.h"

#include "base/hexnumber.h"
#include "base/printabletext.h"
#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "transfer/gallerypage.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QIODevice>

namespace
{
constexpr int swatchesPerRow = 16;

class GalleryTexts
{
    Q_DECLARE_TR_FUNCTIONS(Gallery)
};

/// \a text, which may hold anything, as a part of the page's text or of an attribute's value.
QByteArray html(const QString &text)
{
    return printableText(text).toHtmlEscaped().toUtf8();
}

QByteArray attribute(const char *name, const QByteArray &escapedValue)
{
    return QByteArray(" ") + name + "=\"" + escapedValue + '"';
}

/// A PNG of \a picture. Pages are written more often than they are sent, so it is compressed quickly rather than well.
QByteArray dataUrl(const QImage &picture)
{
    constexpr int fastestCompression = 89; // Qt turns 0 to 100 into zlib's levels 9 to 0.
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG", fastestCompression);
    return "data:image/png;base64," + buffer.data().toBase64();
}

QByteArray swatchesHtml(const QVector<QRgb> &palette)
{
    if (palette.isEmpty())
        return QByteArray();
    QImage swatches(qMin(palette.size(), swatchesPerRow), (palette.size() + swatchesPerRow - 1) / swatchesPerRow,
                    QImage::Format_ARGB32);
    swatches.fill(Qt::transparent);
    for (int i = 0; i < palette.size(); ++i)
        swatches.setPixel(i % swatchesPerRow, i / swatchesPerRow, palette.at(i));
    return "<img class=\"swatches\" alt=\"" + html(GalleryTexts::tr("palette")) + '"'
        + attribute("style", "--w:" + QByteArray::number(swatches.width()) + ";--h:" + QByteArray::number(swatches.height()))
        + attribute("src", dataUrl(swatches)) + ">\n";
}

QString sizeText(const QSize &size)
{
    return QStringLiteral("%1\u00D7%2").arg(size.width()).arg(size.height());
}

/// The line of facts: address, format, width and height, length.
QByteArray factsHtml(const GalleryItem &item)
{
    QStringList facts;
    if (item.address >= 0)
        facts << hexNumber(qint32(item.address));
    if (!item.format.isEmpty())
        facts << item.format;
    for (const GalleryPicture &picture : item.pictures) {
        const QString size = sizeText(picture.picture.size());
        if (!picture.picture.isNull() && !facts.contains(size))
            facts << size;
    }
    if (item.bytes >= 0)
        facts << GalleryTexts::tr("%1 bytes").arg(item.bytes);
    return facts.isEmpty() ? QByteArray() : "<p class=\"facts\">" + html(facts.join(QStringLiteral(" \u00B7 "))) + "</p>\n";
}

qint64 pixelsOf(const QImage &picture)
{
    return qint64(picture.width()) * picture.height();
}

/// The room that the pictures take at 1:1: as wide as all beside each other, as high as the highest.
QSize extentOf(const QVector<GalleryPicture> &pictures)
{
    QSize extent(0, 0);
    for (const GalleryPicture &picture : pictures)
        extent = QSize(extent.width() + picture.picture.width(), qMax(extent.height(), picture.picture.height()));
    return extent;
}
}

GalleryWriter::GalleryWriter(QIODevice *device, const GalleryHeading &heading) : m_device(device)
{
    const QByteArray title = html(heading.title);
    write(galleryPage::beginning());
    write("<title>" + title + "</title>\n" + galleryPage::style());
    write("</head>\n<body>\n<header>\n<h1>" + title + "</h1>\n");
    if (!heading.remark.isEmpty())
        write("<p class=\"remark\">" + html(heading.remark) + "</p>\n");
    write(galleryPage::controls() + "</header>\n<main id=\"cards\">\n");
}

void GalleryWriter::write(const QByteArray &bytes)
{
    m_failed = m_failed || m_device->write(bytes) != bytes.size();
}

QByteArray GalleryWriter::pictureHtml(const GalleryPicture &picture)
{
    QByteArray shown;
    if (picture.picture.isNull()) {
        shown = "<span class=\"none\">" + html(GalleryTexts::tr("no picture")) + "</span>";
    } else if (m_pixels + pixelsOf(picture.picture) > maximumGalleryPixels) {
        ++m_leftOut;
        shown = "<span class=\"none\">" + html(GalleryTexts::tr("left out: the page is full")) + "</span>";
    } else {
        m_pixels += pixelsOf(picture.picture);
        shown = "<img alt=\"\"" + attribute("width", QByteArray::number(picture.picture.width()))
            + attribute("height", QByteArray::number(picture.picture.height()))
            + attribute("style",
                        "--w:" + QByteArray::number(picture.picture.width())
                            + ";--h:" + QByteArray::number(picture.picture.height()))
            + attribute("src",
                        picture.jpeg.isEmpty() ? dataUrl(picture.picture) : "data:image/jpeg;base64," + picture.jpeg.toBase64())
            + '>';
    }
    const QByteArray caption =
        picture.caption.isEmpty() ? QByteArray() : "<figcaption>" + html(picture.caption) + "</figcaption>";
    return "<figure>" + shown + caption + "</figure>";
}

void GalleryWriter::add(const GalleryItem &item)
{
    const QSize extent = extentOf(item.pictures);
    qint64 pixels = 0;
    for (const GalleryPicture &picture : item.pictures)
        pixels = qMax(pixels, pixelsOf(picture.picture));
    write("<article tabindex=\"-1\"" + attribute("data-name", html(item.name)) + attribute("data-folder", html(item.folder))
          + attribute("data-format", html(item.format)) + attribute("data-address", QByteArray::number(item.address))
          + attribute("data-pixels", QByteArray::number(pixels)) + attribute("data-bytes", QByteArray::number(item.bytes))
          + attribute("style",
                      "--w:" + QByteArray::number(extent.width()) + ";--h:" + QByteArray::number(extent.height())
                          + ";--n:" + QByteArray::number(item.pictures.size()))
          + ">\n<div class=\"pictures\">");
    for (const GalleryPicture &picture : item.pictures)
        write(pictureHtml(picture));
    write("</div>\n<h2>" + html(item.name) + "</h2>\n");
    if (!item.folder.isEmpty())
        write("<p class=\"folder\">" + html(item.folder) + "</p>\n");
    write(factsHtml(item));
    if (!item.note.isEmpty())
        write("<p class=\"note\">" + html(item.note) + "</p>\n");
    write(swatchesHtml(item.palette) + "</article>\n");
    ++m_items;
}

bool GalleryWriter::finish()
{
    write("</main>\n" + galleryPage::script() + "</body>\n</html>\n");
    return !m_failed;
}

QVector<QRgb> paletteColours(const QByteArray &palette)
{
    // An rgb5a1 texture one texel high has the same bytes.
    const QImage row = textureManipulator::generateTexture(palette, textureFormats::rgb5a1, palette.size() / 2, QByteArray());
    QVector<QRgb> colours;
    for (int x = 0; x < row.width(); ++x)
        colours.append(row.pixel(x, 0));
    return colours;
}

GalleryItem galleryItemOf(const fileTreeFile &texture)
{
    const textureFormat format = textureFormats::getAsMap().value(texture.format, textureFormats::null);
    const QByteArray bytes = texture.data();
    const QByteArray palette = texture.palette();
    const int size = texture.size();
    GalleryPicture picture;
    picture.picture = textureManipulator::generateTexture(bytes, format, texture.width, palette);
    if (textureFormats::isJpeg(format.name) && !picture.picture.isNull())
        picture.jpeg = bytes;
    GalleryItem item;
    item.name = texture.name;
    item.folder = texture.path();
    item.address = texture.realAddress();
    item.format = texture.format;
    item.bytes = size < 0 ? -1 : size;
    item.palette = paletteColours(palette);
    if (format.name == textureFormats::null.name)
        item.note = GalleryTexts::tr("There is no such format.");
    else if (picture.picture.isNull())
        item.note = GalleryTexts::tr("The bytes give no picture.");
    else if (bytes.size() < size)
        item.note = GalleryTexts::tr("It reaches beyond the end of the image.");
    item.pictures = {picture};
    return item;
}
