// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

class fileTreeDirectory;
class fileTreeFile;

/// Size in bytes above which a table of another tool is neither read nor written. 100,000 entries take some 10 MB.
constexpr int maximumTableBytes = 64 * 1024 * 1024;

/// A folder or texture as a table of another tool describes it. Addresses count from the image's start and wrap at 32 bits.
struct TableRecord
{
    QStringList folders; ///< Names of the folders around, the outermost first.
    QString name;
    bool isFolder = false;
    qint32 address = 0;
    std::optional<qint32> size; ///< Of a folder, in bytes; without one it reaches to the image's end.
    QString format; ///< Of a texture, as written; not checked.
    qint32 width = 32;
    qint32 height = 32;
    std::optional<qint32> palette;
    int line = 0; ///< Where it is in the document, from 1.
};

/// What a table of another tool holds.
struct TableDocument
{
    QVector<TableRecord> records;
    QStringList leftOut; ///< A line for each thing that a file table cannot hold.
};

/// What addRecords() did.
struct AddedRecords
{
    int folders = 0;
    int textures = 0;
    int unchanged = 0; ///< Textures that were there already, with the same name and values.
};

/// Adds \a records to the table below \a into, with \a base added to each address; folders first, each kind in the order of the
/// records. A folder that is there already stays as it is and takes what is added in it; folders that no record describes begin
/// where the one around them does. Names are made unique as ever, but a texture that is there with the same name and values is
/// not added again. \a imageSize is in bytes. False, with the reason in \a error and nothing added, when a folder is described
/// twice.
bool addRecords(const QVector<TableRecord> &records, fileTreeDirectory *into, qint32 base, int imageSize, AddedRecords *added,
                QString *error);

/// What every path of a table begins with.
constexpr char rootPath[] = "Root/";

/// A node of a table on the way through it; one of the two pointers is null.
struct TableEntry
{
    const fileTreeDirectory *folder;
    const fileTreeFile *texture;
    QString path; ///< From the root, with names as pathName() writes them; a folder's ends in "/".
    qint32 address; ///< In the image.
    std::optional<qint32> palette; ///< In the image; nothing for a format without one.
};

/// Visits each folder below \a root and the textures in it, in list order, beginning with the root's textures; the root itself is
/// not visited. Ends early, with false, when \a visit returns false.
bool visitTable(const fileTreeDirectory &root, const std::function<bool(const TableEntry &entry)> &visit);

/// \a name as a part of a path: with "\" before each "/" and "\", so that no name can be taken for two.
QString pathName(const QString &name);

/// The names in \a path, split at each "/" that no "\" precedes, without the root's name in front. Sets \a isFolder when the path
/// ends in "/". Empty for the root itself; false when a name is empty.
bool splitPath(const QString &path, QStringList *names, bool *isFolder);

/// The number in \a text: hexadecimal behind "0x", with up to eight digits, or decimal, from -2^31 to below 2^32, where the upper
/// half wraps. Nothing for anything else.
std::optional<qint32> tableNumber(const QString &text);

/// The name of the format that other tools call \a name, ignoring case: "rgba16" is rgb5a1. Empty for what they do not have.
QString formatOfOtherTools(const QString &name);

/// What other tools call the format; empty for those that they do not have.
QString nameForOtherTools(const QString &format);

/// \a text as a string of JSON and YAML, in quotation marks, with everything escaped that is not shown as itself.
QString quotedText(const QString &text);

/// \a text of a document as UTF-8, without a byte order mark; false with the reason in \a error when it is none.
bool decodedText(const QByteArray &document, QString *text, QString *error);

/// The error for a table that is too large to be written.
QString tooLargeTable();
