// SPDX-License-Identifier: MIT
// Tables of other tools, any bytes in any of the four formats. A document is read whole or refused with a reason. What was read
// makes a consistent table; that table, once a file list has cleaned its names, is written as comma-separated values and as JSON,
// and both give the same file list again, byte for byte. Whatever the table, the other two formats are written as documents that
// are read.
#include "tablecheck.h"

#include "persist/filelist.h"
#include "persist/splatyaml.h"
#include "persist/tablecsv.h"
#include "persist/tablejson.h"
#include "persist/zeldaxml.h"

#include <QBuffer>

namespace
{
using Reader = bool (*)(const QByteArray &, TableDocument *, QString *);

constexpr int imageSize = 0x10000;

QByteArray listOf(fileTreeDirectory *root)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QString error;
    require(writeFileList(root, &buffer, &error), "every table can be written");
    return buffer.data();
}

bool import(Reader reader, const QByteArray &document, qint32 base, fileTreeDirectory *root)
{
    TableDocument table;
    QString error;
    AddedRecords added;
    const bool whole = reader(document, &table, &error) && addRecords(table.records, root, base, imageSize, &added, &error);
    require(whole == error.isEmpty(), "a failure has a reason, and nothing else has");
    require(whole || (root->files.isEmpty() && root->directories.isEmpty()), "nothing is added by halves");
    return whole;
}

void requireLossless(Reader reader, const QByteArray &document, const QByteArray &list)
{
    TableRoot root;
    require(import(reader, document, 0, &root), "what is written is read");
    require(listOf(&root) == list, "it gives the same file list");
}
}

/// Qt's JSON parser leaks a few hundred bytes when it stops at an error inside nested objects.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libQt5Core";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Reader readers[] = {readTableCsv, readTableJson, readZeldaXml, readSplatYaml};
    FuzzInput input(data, size);
    const Reader reader = input.oneOf(readers);
    const qint32 base = input.flag() ? 0 : input.byte() << 24;
    TableRoot first;
    if (!import(reader, input.rest(), base, &first))
        return 0;
    requireConsistent(&first);

    const QByteArray list = listOf(&first);
    TableRoot table;
    QString error;
    require(readFileList(list, imageSize, &table, nullptr, &error), "the list is read");
    const QByteArray cleaned = listOf(&table);
    QByteArray document;
    require(writeTableCsv(table, &document, &error), "written as comma-separated values");
    requireLossless(readTableCsv, document, cleaned);
    require(writeTableJson(table, QStringLiteral("x"), QStringLiteral("y"), &document, &error), "written as JSON");
    requireLossless(readTableJson, document, cleaned);

    QStringList leftOut;
    require(writeZeldaXml(table, QStringLiteral("x"), &document, &leftOut, &error), "written as Zelda extraction XML");
    require(writeSplatYaml(table, QStringLiteral("x"), imageSize, &document, &leftOut, &error), "written as a splat document");
    TableRoot other;
    require(import(readSplatYaml, document, 0, &other), "the splat document is read");
    return 0;
}
