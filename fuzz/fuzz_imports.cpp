// SPDX-License-Identifier: MIT
// Importing a directory tree whose names, kinds of entry and pictures come from the input, as a texture pack and as a folder of
// pictures into a table of any names. What is imported is what a plain reading of the names gives: no link out of a pack is
// followed, in a folder none at all, a pipe is never opened, and a pack's digits are upper case. The table stays consistent; a
// texture handed over changes only its own bytes of the image, which never becomes shorter; and the files are read, not written:
// the tree and all around it stay as they are.
#include "scratchfolder.h"
#include "tablecheck.h"

#include "base/crc32.h"
#include "codec/pictureloader.h"
#include "codec/texturemanipulator.h"
#include "model/textureformat.h"
#include "transfer/folderimport.h"
#include "transfer/palettefitting.h"
#include "transfer/texturepack.h"

#include <QBuffer>
#include <QColor>
#include <QtEndian>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int imageBytes = 2048;
const char *const knownNames[] = {"sky", "Sky", "sky.2", "water", "WATER", "w", "a", ".hidden", "\xC3\xA4", "sky (2)"};
const char *const formatNames[] = {"i4", "ia4", "i8", "ia8", "ia16", "rgb5a1", "rgba32", "ci8", "ci4", "jpeg", "JPEG", "none"};

QByteArray picture(int width, int height, QImage::Format format, const char *type)
{
    QImage image(width, height, format);
    if (format == QImage::Format_Indexed8)
        image.setColorTable(QVector<QRgb>(256, 0xFF336699));
    image.fill(format == QImage::Format_Indexed8 ? 3u : 0x80123456u);
    QBuffer buffer;
    image.save(&buffer, type);
    return buffer.data();
}

/// A picture's header alone, which claims 60,000 pixels a side.
QByteArray hugePicture()
{
    QByteArray bytes = picture(1, 1, QImage::Format_ARGB32, "PNG");
    bytes.replace(16, 8, QByteArray("\0\0\xEA\x60\0\0\xEA\x60", 8));
    const quint32 checksum = qToBigEndian(crc32(bytes.constData() + 12, 17));
    return bytes.replace(29, 4, QByteArray(reinterpret_cast<const char *>(&checksum), 4));
}

QByteArray anyContent(FuzzInput *input)
{
    static const QByteArray contents[] = {picture(1, 1, QImage::Format_ARGB32, "PNG"),
                                          picture(2, 4, QImage::Format_ARGB32, "PNG"),
                                          picture(4, 4, QImage::Format_Indexed8, "PNG"),
                                          picture(4, 4, QImage::Format_RGB32, "JPG"),
                                          picture(4, 4, QImage::Format_ARGB32, "PNG").left(50),
                                          hugePicture(),
                                          QByteArray()};
    return input->below(8) == 0 ? input->bytes(input->byte()) : input->oneOf(contents);
}

QByteArray anyDigits(FuzzInput *input)
{
    QByteArray digits;
    for (int count = input->below(10); count > 0; --count)
        digits += "0001248AFFaG"[input->below(12)];
    return digits;
}

/// What an entry could be called in a pack, in a folder to import, or anywhere; without a "/", so that it is one name.
QByteArray anyName(FuzzInput *input)
{
    const QByteArray plain = input->below(4) == 0 ? input->bytes(input->below(6)) : QByteArray(input->oneOf(knownNames));
    static const char *const endings[] = {".png", ".jpeg", ".PNG", "", ".x.png", ".jpg"};
    QByteArray name;
    switch (input->below(4)) {
    case 0: name = "APAB"[input->below(4)] + ('_' + anyDigits(input)) + '_' + plain; break;
    case 1: name = anyDigits(input) + '_' + input->oneOf(formatNames) + '_' + plain + input->oneOf(endings); break;
    default: name = plain + input->oneOf(endings); break;
    }
    return name.replace('/', 's').replace('\0', '0').left(200);
}

/// Fills the directory at \a path; entries that cannot be made, of names that are there already for one, are left out.
void makeEntries(FuzzInput *input, const ScratchFolder &scratch, const QByteArray &path, int depth)
{
    for (int count = input->below(8); count > 0 && !input->isUsedUp(); --count) {
        const QByteArray entry = path + '/' + anyName(input);
        const QByteArray work = scratch.work().toLocal8Bit();
        switch (input->below(10)) {
        case 0: symlink(scratch.beside().toLocal8Bit() + "/kept.txt", entry); break;
        case 1: symlink(scratch.beside().toLocal8Bit(), entry); break;
        case 2: symlink(work + '/' + anyName(input), entry); break;
        case 3: mkfifo(entry, 0600); break;
        case 4:
        case 5:
        case 6:
            if (depth < 3 && mkdir(entry, 0700) == 0)
                makeEntries(input, scratch, entry, depth + 1);
            break;
        default: {
            const QByteArray content = anyContent(input);
            const int file = open(entry, O_WRONLY | O_CREAT | O_EXCL, 0600);
            if (file < 0)
                break;
            require(write(file, content, size_t(content.size())) == content.size(), "a scratch file can be written");
            close(file);
        }
        }
    }
}

void makeTable(FuzzInput *input, fileTreeDirectory *folder, int depth)
{
    for (int count = input->below(6); count > 0; --count) {
        auto *texture = new fileTreeFile;
        texture->name = QString::fromUtf8(input->oneOf(knownNames));
        texture->format = QString::fromLatin1(input->oneOf(formatNames));
        texture->address = input->flag() ? input->byte() : input->number();
        texture->width = 1 << input->below(3);
        texture->height = 1 << input->below(3);
        folder->addFile(texture);
    }
    for (int count = input->below(4); count > 0 && depth < 3; --count) {
        auto *child = new fileTreeDirectory;
        child->name = QString::fromUtf8(input->oneOf(knownNames));
        child->address = input->byte() * 16;
        makeTable(input, folder->addDirectory(child), depth + 1);
    }
}

/// Takes textures as the program does, and holds each to changing its own bytes alone.
class CheckedImage
{
public:
    CheckedImage()
    {
        m_rom.data = QByteArray(imageBytes, '\0');
        for (int i = 0; i < m_rom.data.size(); ++i)
            m_rom.data[i] = char(i % 4 == 3 ? i : 0);
    }

    const QByteArray &bytes() const { return m_rom.data; }
    QStringList taken;

    TextureSink sink()
    {
        return [this](const QImage &picture, int address, const QString &format, const QByteArray &raw) {
            taken << describe(picture.size(), address, format, raw);
            write(picture, address, format, raw);
        };
    }

    static QString describe(const QSize &size, int address, const QString &format, const QByteArray &raw)
    {
        return QStringLiteral("%1x%2 %3 %4 ").arg(size.width()).arg(size.height()).arg(address).arg(format) + raw.toHex();
    }

private:
    void write(const QImage &picture, int address, const QString &format, const QByteArray &raw)
    {
        constexpr int mostGrowth = 64 * 1024; // More is right as well, but slow.
        if (address > mostGrowth && address < maximumImageBytes)
            return;
        const QByteArray before = m_rom.data;
        WorkLog log;
        if (writeTexture(&m_rom, picture, address, format, raw, &log) != WriteOutcome::Written) {
            require(m_rom.data == before, "what cannot be written changes nothing");
            return;
        }
        const textureFormat record = textureFormats::getAsMap().value(format);
        const int length =
            format == textureFormats::jpeg.name ? raw.size() : textureManipulator::generateData(picture, record).size();
        const int end = length > 0 ? address + length : 0;
        require(m_rom.data.size() == qMax(before.size(), end), "the image grows as far as the texture reaches, and is never cut");
        require(m_rom.data.left(address).startsWith(before.left(address)), "what lies before the texture stays");
        require(length == 0 || m_rom.data.mid(end) == before.mid(end), "what lies behind the texture stays");
    }

    static ROM &sharedRom()
    {
        static ROM rom;
        return rom;
    }

    ROM &m_rom = sharedRom(); ///< One for all runs: the nodes that a ROM makes are never freed.
};

/// What a pack's directory shows: neither hidden entries nor pipes nor links that lead nowhere.
QFileInfoList entriesOf(const QString &path)
{
    return QDir(path).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Unsorted);
}

/// What pack names say, read by hand.
class PlainPack
{
public:
    PlainPack(const QString &path, const QByteArray &image) : m_path(path), m_image(image)
    {
        const QFileInfoList entries = entriesOf(path);
        for (const QFileInfo &entry : entries) {
            if (entry.isDir() && !leadsOut(entry))
                addFolder(entry);
        }
    }

    QStringList folders; ///< Addresses.
    QStringList textures; ///< Offset and format.

private:
    bool leadsOut(const QFileInfo &entry) const
    {
        if (!entry.isSymLink())
            return false;
        char resolved[PATH_MAX];
        return !realpath(entry.filePath().toLocal8Bit(), resolved)
            || !QByteArray(resolved).startsWith(m_path.toLocal8Bit() + '/');
    }

    /// Takes one to eight upper-case hexadecimal digits and a "_" from the front of \a name.
    static bool takeNumber(QString *name, qint32 *number)
    {
        const int length = name->indexOf(QLatin1Char('_'));
        if (length < 1 || length > 8)
            return false;
        quint32 value = 0;
        for (int i = 0; i < length; ++i) {
            const int digit = QStringLiteral("0123456789ABCDEF").indexOf(name->at(i));
            if (digit < 0)
                return false;
            value = value << 4 | quint32(digit);
        }
        name->remove(0, length + 1);
        *number = qint32(value);
        return true;
    }

    void addFolder(const QFileInfo &entry)
    {
        QString name = entry.fileName();
        const QString kind = name.left(2);
        name.remove(0, 2);
        qint32 address = 0;
        if ((kind != QLatin1String("A_") && kind != QLatin1String("P_")) || !takeNumber(&name, &address))
            return;
        if (kind == QLatin1String("P_")) {
            const qint64 pointer = quint32(address);
            if (pointer < 4 || pointer + 4 > m_image.size())
                return;
            address = qFromBigEndian<qint32>(m_image.constData() + pointer);
        }
        folders << QString::number(address);
        const QFileInfoList files = entriesOf(entry.filePath());
        for (const QFileInfo &file : files) {
            if (!file.isDir() && !leadsOut(file))
                addTexture(file);
        }
    }

    void addTexture(const QFileInfo &file)
    {
        QString name = file.fileName();
        qint32 offset = 0;
        if (!takeNumber(&name, &offset))
            return;
        const QString format = name.left(qMax(0, name.indexOf(QLatin1Char('_'))));
        if (textureFormats::getAsMap().contains(format))
            textures << QString::number(offset) + format;
    }

    QString m_path;
    QByteArray m_image;
};

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

void checkPack(const ScratchFolder &scratch, fileTreeDirectory *root)
{
    deleteBelow(root);
    CheckedImage image;
    const PlainPack plain(scratch.work(), image.bytes());
    const QByteArray before = image.bytes();
    WorkLog log;
    const TexturePackImport result = importPack(scratch.work(), root, image.bytes(), image.sink(), &log);
    QStringList folders;
    QStringList textures;
    for (const fileTreeDirectory *folder : qAsConst(root->directories)) {
        folders << QString::number(folder->address);
        for (const fileTreeFile *texture : folder->files)
            textures << QString::number(texture->address) + texture->format;
    }
    require(root->files.isEmpty() && folders.size() == plain.folders.size(), "the folders that the names say");
    require(sorted(textures) == sorted(plain.textures), "the textures that the names say");
    require(image.bytes() != before || sorted(folders) == sorted(plain.folders), "at the addresses that the names say");
    require(result.folders == folders.size() && result.textures == textures.size(), "as many as are counted");
    require((result.lastFolder == nullptr) == folders.isEmpty(), "with the last one named");
}

/// What a folder import takes, by walking the lists.
class PlainImport
{
public:
    void enter(const QString &path, const fileTreeDirectory *folder)
    {
        const QFileInfoList entries =
            QDir(path).entryInfoList(QDir::Dirs | QDir::Files | QDir::NoSymLinks | QDir::NoDotAndDotDot, QDir::Unsorted);
        for (const QFileInfo &entry : entries) {
            if (entry.isDir()) {
                if (const fileTreeDirectory *child = folder->getDirectoryByName(entry.completeBaseName()))
                    enter(entry.filePath(), child);
                else
                    ++leftOut;
            } else {
                ++files;
                take(entry, folder);
            }
        }
    }

    QStringList taken;
    int leftOut = 0;
    int files = 0;

private:
    /// Whether a colour at least of the texture's palette lies in the loaded image.
    static bool hasPalette(const fileTreeFile &texture)
    {
        const int address = texture.realPaletteAddress();
        return address >= 0 && address <= currentROM.data.size() - 2;
    }

    void take(const QFileInfo &file, const fileTreeDirectory *folder)
    {
        const bool isJpeg = file.fileName().endsWith(QLatin1String(".jpeg"));
        const fileTreeFile *texture = folder->getFileByName(file.completeBaseName());
        if (!isJpeg && !file.fileName().endsWith(QLatin1String(".png"))) {
            ++leftOut;
        } else if (texture) {
            const QImage picture = loadPicture(file.filePath());
            const QSize size = picture.size();
            QFile bytes(file.filePath());
            if (!isJpeg && size != QSize(texture->width, texture->height))
                ++leftOut;
            else if (needsPalette(picture, textureFormats::getAsMap().value(texture->format)) && !hasPalette(*texture))
                ++leftOut;
            else if (bytes.open(QIODevice::ReadOnly))
                taken << CheckedImage::describe(size, texture->realAddress(), texture->format, bytes.readAll());
        }
    }
};

class RisingProgress : public Progress
{
public:
    void setValue(int value) override { require(value == ++m_last, "the progress rises by one for each file"); }
    int last() const { return m_last; }

private:
    int m_last = 0;
};

void checkFolder(const ScratchFolder &scratch, const fileTreeDirectory *root)
{
    PlainImport plain;
    plain.enter(scratch.work(), root);
    CheckedImage image;
    RisingProgress progress;
    WorkLog log;
    QString report;
    const QStringList table = describeTable(root);
    importPictureFolder(scratch.work(), root, image.sink(), &progress, &log, &report);
    require(sorted(image.taken) == sorted(plain.taken), "the pictures whose names the table has");
    require(report.isEmpty() == (plain.leftOut == 0), "a line for what is left out");
    require(progress.last() == plain.files && plain.files <= countFilesBelow(scratch.work()), "all files are visited");
    require(describeTable(root) == table, "an import leaves the table as it is");
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    needApplication();
    static const ScratchFolder scratch;
    FuzzInput input(data, size);
    TableRoot root;
    makeTable(&input, &root, 0);
    makeEntries(&input, scratch, scratch.work().toLocal8Bit(), 0);
    const FolderContent before = contentOf(scratch.work());
    checkFolder(scratch, &root);
    requireConsistent(&root);
    checkPack(scratch, &root);
    requireConsistent(&root);
    require(contentOf(scratch.work()) == before, "the tree that is imported stays as it is");
    scratch.requireUntouchedAround();
    scratch.clear();
    return 0;
}
