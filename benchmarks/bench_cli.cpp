// SPDX-License-Identifier: MIT
// Commands on large file tables, against the coding work alone.
#include "benchmark.h"

#include "cli/commandline.h"
#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "model/textureformat.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <cstdio>

namespace
{
constexpr int side = 32;
constexpr int imageBytes = 64 * 1024 * 1024;

QByteArray noiseImage()
{
    QByteArray image(imageBytes, '\0');
    QRandomGenerator random(64);
    random.generate(reinterpret_cast<quint32 *>(image.data()), reinterpret_cast<quint32 *>(image.data() + image.size()));
    image.replace(0, 8, QByteArray::fromHex("803712400000000F"));
    image.replace(59, 5, QByteArray("NQLE\0", 5));
    return image;
}

QString formatOf(int i)
{
    static const QStringList formats {QStringLiteral("i4"),   QStringLiteral("ia8"), QStringLiteral("rgb5a1"),
                                      QStringLiteral("ia16"), QStringLiteral("ci8"), QStringLiteral("i8")};
    return formats.at(i % formats.size());
}

/// A hundred folders that share \a count textures of 32 x 32 pixels, none of which overlaps another.
QByteArray fileList(int count)
{
    QByteArray list = "<root version=\"2\">";
    const int inFolder = count / 100;
    const int step = (imageBytes - 0x10000) / count;
    for (int i = 0; i < count; ++i) {
        if (i % inFolder == 0) {
            list += i == 0 ? "" : "</directory>";
            list += QStringLiteral("<directory name=\"Folder %1\" address=\"0x0\" size=\"0x4000000\">").arg(i).toUtf8();
        }
        list += QStringLiteral(
                    "<texture name=\"Texture %1\" address=\"0x%2\" format=\"%3\" width=\"%4\" height=\"%4\" palette=\"0x100\"/>")
                    .arg(QString::number(i), QString::number(0x10000 + i * step, 16), formatOf(i), QString::number(side))
                    .toUtf8();
    }
    return list + "</directory></root>";
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// CPU time of the command in milliseconds.
double commandTime(const QStringList &arguments)
{
    QString out;
    QString err;
    const qint64 taken = nanosecondsOf([&] {
        QTextStream outStream(&out);
        QTextStream errStream(&err);
        const int status = cli::run(QStringList(QStringLiteral("quillary-cli")) + arguments, outStream, errStream);
        if (status == cli::WrongUsage || out.isEmpty())
            qFatal("%s", qPrintable(err));
    });
    return double(taken) / 1e6;
}

/// What the work on each of \a count textures takes when there is nothing but \a work, in milliseconds.
template<typename Work> double codingTime(int count, Work &&work)
{
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const QByteArray palette(512, 'x');
    const int step = (imageBytes - 0x10000) / count;
    return double(nanosecondsOf([&] {
               for (int i = 0; i < count; ++i) {
                   const textureFormat format = formats.value(formatOf(i));
                   const QByteArray data = currentROM.data.mid(0x10000 + i * step, int(side * side * format.bytesPerPixel));
                   work(data, format, palette, i);
               }
           }))
        / 1e6;
}

class Bench
{
public:
    Bench()
    {
        QDir().mkpath(m_folder.filePath(QStringLiteral("NQLE0/default")));
        write(image(), noiseImage());
    }

    void setList(int count) { write(m_folder.filePath(QStringLiteral("NQLE0/default/fileList.xml")), fileList(count)); }
    QString image() const { return m_folder.filePath(QStringLiteral("game.z64")); }
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QStringList command(const QString &name) const { return {name, image(), QStringLiteral("--profiles"), m_folder.path()}; }

private:
    QTemporaryDir m_folder;
};

void print(const char *what, double command, double alone)
{
    std::printf("%-34s %10.1f ms %10.1f ms %8.2f\n", what, command, alone, command / alone);
}

template<typename Work> double median(int repetitions, Work &&work)
{
    QVector<double> taken;
    for (int i = 0; i < repetitions; ++i)
        taken << work();
    return medianOf(taken);
}

void benchList(Bench *bench)
{
    constexpr int count = 100000;
    bench->setList(count);
    const double command = median(5, [&] { return commandTime(bench->command(QStringLiteral("list"))); });
    const double json =
        median(5, [&] { return commandTime(bench->command(QStringLiteral("list")) << QStringLiteral("--json")); });
    const double reading = median(5, [&] {
        return double(nanosecondsOf([&] {
                   QFile file(bench->path(QStringLiteral("NQLE0/default/fileList.xml")));
                   if (!file.open(QIODevice::ReadOnly))
                       qFatal("no list");
                   QXmlStreamReader reader(&file);
                   while (!reader.atEnd())
                       reader.readNext();
               }))
            / 1e6;
    });
    print("list, 100,000 / XML tokens", command, reading);
    print("list --json, 100,000 / XML tokens", json, reading);
}

void benchVerify(Bench *bench)
{
    constexpr int count = 10000;
    bench->setList(count);
    const double command = median(5, [&] { return commandTime(bench->command(QStringLiteral("verify"))); });
    const double alone = median(5, [&] {
        return codingTime(count, [](const QByteArray &data, const textureFormat &format, const QByteArray &palette, int) {
            textureManipulator::generateData(textureManipulator::generateTexture(data, format, side, palette), format);
        });
    });
    print("verify, 10,000 / de- and encoding", command, alone);
}

void benchExtract(Bench *bench)
{
    constexpr int count = 5000;
    bench->setList(count);
    const auto savedAsPng = [](const QImage &picture) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        picture.save(&buffer, "PNG");
    };
    int round = 0;
    const double command = median(3, [&] {
        return commandTime(bench->command(QStringLiteral("extract"))
                           << QStringLiteral("-o") << bench->path(QString::number(++round)));
    });
    const double alone = median(3, [&] {
        return codingTime(count, [&](const QByteArray &data, const textureFormat &format, const QByteArray &palette, int) {
            savedAsPng(textureManipulator::generateTexture(data, format, side, palette));
        });
    });
    print("extract, 5,000 / decoding and PNG", command, alone);
}

void benchOpening(Bench *bench)
{
    const double command = median(5, [&] { return commandTime({QStringLiteral("info"), bench->image()}); });
    std::printf("%-34s %10.1f ms   (part of all of the above)\n", "info: opening 64 MiB", command);
}
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    Bench bench;
    std::printf("%-34s %13s %13s %8s\n", "CPU time", "command", "work alone", "ratio");
    benchList(&bench);
    benchVerify(&bench);
    benchExtract(&bench);
    benchOpening(&bench);
}
