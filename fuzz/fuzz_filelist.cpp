// SPDX-License-Identifier: MIT
// Reading a file list: any bytes, a document put together from the input, or a table with any names. Whatever was read is a
// consistent table, also what came before an error. It is written as a document that reads without error and gives the same
// table, and that one is written as the same bytes. Of a table with any names this holds once it has been written and read: what
// XML cannot hold is gone then. What a list does not keep, the size of a JPEG and the palette of a format without one, does not
// count.
#include "tablecheck.h"

#include "model/textureformat.h"
#include "persist/filelist.h"

#include <QBuffer>

namespace
{
const char *const formatNames[] = {"i4",  "ia4",  "i8",   "ia8", "ia16", "rgb5a1", "rgba32", "ci8",
                                   "ci4", "jpeg", "JPEG", "CI4", "none", "",       "null",   "a&quot;b"};
const char *const numbers[] = {"0",    "0x00000010", "0x100",      "10",   "-1", "0xFFFFFFFF",           "0x80000000", "7FFFFFFF",
                               "0X10", "junk",       "2147483648", " 12 ", "",   "99999999999999999999", "0x",         "1e3"};
const char *const attributes[] = {"name",   "address", "size",    "format", "width",
                                  "height", "palette", "version", "x:name", "other"};

QByteArray anyAttribute(FuzzInput *input)
{
    const QByteArray name = input->oneOf(attributes);
    QByteArray value;
    if (name == "name")
        value = input->text(6).toHtmlEscaped().toUtf8();
    else
        value = name == "format" ? input->oneOf(formatNames) : input->oneOf(numbers);
    return ' ' + name + "=\"" + value + '"';
}

/// Attributes without a double, which would end the document.
QByteArray anyAttributes(FuzzInput *input)
{
    QByteArray text;
    for (int count = input->below(8); count > 0; --count) {
        const QByteArray attribute = anyAttribute(input);
        if (!text.contains(attribute.left(attribute.indexOf('=') + 1)))
            text += attribute;
    }
    return text;
}

/// A document whose elements are mostly those of a file list, mostly well nested.
QByteArray anyDocument(FuzzInput *input)
{
    const QByteArray version = input->flag() ? "1" : input->flag() ? "2" : QByteArray(input->oneOf(numbers));
    const QByteArray top = input->flag() ? "root" : "fileTable";
    QByteArray text = '<' + top + " version=\"" + version + "\">";
    int depth = 0;
    while (!input->isUsedUp()) {
        switch (input->below(12)) {
        case 0:
        case 1:
        case 2:
            text += "<directory" + anyAttributes(input) + '>';
            ++depth;
            break;
        case 3:
        case 4:
            if (depth > 0) {
                text += "</directory>";
                --depth;
            }
            break;
        case 5:
        case 6: text += "<texture" + anyAttributes(input) + "/>"; break;
        case 7: text += "<file" + anyAttributes(input) + "/>"; break;
        case 8: text += "<directory" + anyAttributes(input) + "/>"; break;
        case 9: text += R"(<other><root version="1"/><texture name="inside"/></other>)"; break;
        case 10: text += input->bytes(input->below(8)); break;
        default:
            // Not deeper: the indentation alone would take most of the time.
            for (int levels = input->byte(); levels > 0 && depth < 400; --levels, ++depth)
                text += "<directory>";
            break;
        }
    }
    while (depth-- > 0)
        text += "</directory>";
    return text + "</" + top + '>';
}

qint32 anyNumber(FuzzInput *input)
{
    return input->flag() ? input->byte() : input->number();
}

fileTreeDirectory *anyFolder(FuzzInput *input)
{
    auto *folder = new fileTreeDirectory;
    folder->name = input->text(5);
    folder->address = anyNumber(input);
    folder->size = anyNumber(input);
    return folder;
}

fileTreeFile *anyTexture(FuzzInput *input)
{
    auto *texture = new fileTreeFile;
    texture->name = input->text(5);
    texture->format = input->flag() ? QString::fromLatin1(input->oneOf(formatNames)) : input->text(5);
    texture->address = anyNumber(input);
    texture->paletteAddress = input->number();
    texture->width = anyNumber(input);
    texture->height = anyNumber(input);
    return texture;
}

/// Fills \a root with folders and textures of any names and numbers.
void fillTable(FuzzInput *input, fileTreeDirectory *root)
{
    fileTreeDirectory *folder = root;
    while (!input->isUsedUp()) {
        if (input->below(4) > 0) {
            folder->addFile(anyTexture(input));
            continue;
        }
        fileTreeDirectory *child = folder->addDirectory(anyFolder(input));
        if (input->flag())
            folder = child;
        else if (folder->parent && input->flag())
            folder = folder->parent;
    }
}

bool read(const QByteArray &document, int imageSize, fileTreeDirectory *root)
{
    QString error;
    const bool whole = readFileList(document, imageSize, root, nullptr, &error);
    require(whole == error.isEmpty(), "a failure has a reason, and nothing else has");
    return whole;
}

QByteArray written(fileTreeDirectory *root)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QString error;
    require(writeFileList(root, &buffer, &error), "every table can be written");
    return buffer.data();
}

void dropWhatIsNotKept(const fileTreeDirectory *root)
{
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const QList<fileTreeFile *> textures = fileTreeContainer().allFiles(root);
    for (fileTreeFile *texture : textures) {
        if (texture->format.compare(QLatin1String("jpeg"), Qt::CaseInsensitive) == 0)
            texture->width = texture->height = 32;
        if (!formats.value(texture->format).usesPalette)
            texture->paletteAddress = 0;
    }
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int kind = input.below(4);
    const int imageSize = kind == 0 ? 4096 : input.byte() * 64;
    TableRoot first;
    if (kind == 3) {
        fillTable(&input, &first);
        TableRoot any;
        const bool whole = read(written(&first), imageSize, &any);
        require(whole, "a table with any names is written as a whole document");
        deleteBelow(&first);
        read(written(&any), imageSize, &first);
    } else {
        read(kind == 0 ? input.rest() : anyDocument(&input), imageSize, &first);
    }
    requireConsistent(&first);

    const QByteArray document = written(&first);
    TableRoot second;
    require(read(document, imageSize, &second), "what is written reads without error");
    requireConsistent(&second);
    dropWhatIsNotKept(&first);
    require(describeTable(&first) == describeTable(&second), "reading it again gives the same table");
    require(written(&second) == document, "writing that gives the same bytes");
    return 0;
}
