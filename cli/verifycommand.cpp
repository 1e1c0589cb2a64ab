// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/terminalprogress.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "verify/verification.h"

#include <QJsonArray>
#include <QJsonObject>

namespace cli
{
namespace
{
int countWhere(const Verification &verification, bool problem)
{
    int count = 0;
    for (const Finding finding : allFindings())
        count += isProblem(finding) == problem ? verification.count(finding) : 0;
    return count;
}

QJsonObject findingJson(const EntryFinding &finding)
{
    QJsonObject object {{QStringLiteral("path"), fullPath(*finding.texture)},
                        {QStringLiteral("address"), finding.texture->realAddress()},
                        {QStringLiteral("kind"), findingName(finding.finding)},
                        {QStringLiteral("problem"), isProblem(finding.finding)},
                        {QStringLiteral("message"), finding.message}};
    if (finding.finding == Finding::Overlap) {
        QJsonArray others;
        for (const fileTreeFile *other : finding.others)
            others.append(fullPath(*other));
        object.insert(QStringLiteral("others"), others);
        object.insert(QStringLiteral("otherCount"), finding.otherCount);
    }
    return object;
}

QJsonObject json(const Verification &verification, const ChosenProfile &profile)
{
    QJsonArray findings;
    for (const EntryFinding &finding : verification.findings)
        findings.append(findingJson(finding));
    QJsonObject counts;
    for (const Finding finding : allFindings())
        counts.insert(findingName(finding), verification.count(finding));
    return {{QStringLiteral("identifier"), currentROM.romID},
            {QStringLiteral("profile"), profile.name},
            {QStringLiteral("entries"), verification.entries},
            {QStringLiteral("faulty"), verification.faulty},
            {QStringLiteral("counts"), counts},
            {QStringLiteral("findings"), findings}};
}

QJsonArray gapsJson(const QVector<ByteSpan> &gaps)
{
    QJsonArray array;
    for (const ByteSpan &gap : gaps)
        array.append(QJsonObject {{QStringLiteral("begin"), gap.begin},
                                  {QStringLiteral("end"), gap.end},
                                  {QStringLiteral("size"), gap.end - gap.begin}});
    return array;
}

void printText(const Verification &verification, QTextStream &out)
{
    for (const EntryFinding &finding : verification.findings)
        out << printable(fullPath(*finding.texture)) << QLatin1String(": ") << findingName(finding.finding) << QLatin1String(": ")
            << printable(finding.message) << '\n';
    out << counted(verification.entries, QStringLiteral("entry")) << QLatin1String(" verified, ") << verification.faulty
        << QLatin1String(" faulty: ") << counted(countWhere(verification, true), QStringLiteral("problem")) << QLatin1String(", ")
        << counted(countWhere(verification, false), QStringLiteral("remark")) << '\n';
    for (const Finding finding : allFindings()) {
        if (const int count = verification.count(finding))
            out << QLatin1String("  ") << findingName(finding).leftJustified(12) << count << '\n';
    }
}

void printGaps(const QVector<ByteSpan> &gaps, QTextStream &out)
{
    qint64 bytes = 0;
    for (const ByteSpan &gap : gaps) {
        bytes += gap.end - gap.begin;
        out << QLatin1String("Uncovered: ") << hexNumber(qint32(gap.begin)) << QLatin1String(" to ") << hexNumber(qint32(gap.end))
            << QLatin1String(", ") << counted(gap.end - gap.begin, QStringLiteral("byte")) << '\n';
    }
    out << counted(gaps.size(), QStringLiteral("uncovered range")) << QLatin1String(", ")
        << counted(bytes, QStringLiteral("byte")) << '\n';
}

Verification verify(const TableNode &node, const QList<fileTreeFile *> &all, Streams &streams)
{
    TerminalProgress progress(streams.err);
    progress.setLabel(QStringLiteral("Verifying"));
    const QList<fileTreeFile *> wanted =
        node.texture ? QList<fileTreeFile *> {node.texture} : fileTreeContainer().allFiles(node.folder);
    return verifyEntries(wanted, all, &progress);
}

int run(const Arguments &arguments, Streams &streams)
{
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::Refuse, &image, &profile, streams))
        return Failed;
    const TableNode node = nodeAtPath(currentROM.root, arguments.positional(1));
    if (!node.exists())
        return streams.failed(pathNamesNothing(arguments.positional(1), profile));

    const QList<fileTreeFile *> all = fileTreeContainer().allFiles(currentROM.root);
    const Verification verification = verify(node, all, streams);
    const QVector<ByteSpan> gaps = arguments.isSet("gaps") ? uncoveredSpans(all) : QVector<ByteSpan>();
    if (arguments.isSet("json")) {
        QJsonObject document = json(verification, profile);
        if (arguments.isSet("gaps"))
            document.insert(QStringLiteral("gaps"), gapsJson(gaps));
        printJson(streams.out, document);
    } else {
        printText(verification, streams.out);
        if (arguments.isSet("gaps"))
            printGaps(gaps, streams.out);
    }
    if (verification.cancelled)
        return streams.failed(QStringLiteral("Interrupted; not every entry was verified"));
    return verification.faulty > 0 ? Failed : Done;
}
}

Command verifyCommand()
{
    QList<QCommandLineOption> options = profileOptions();
    options << QCommandLineOption(QStringLiteral("gaps"),
                                  QStringLiteral("List the ranges that no texture and no palette covers."))
            << jsonOption();
    return {QStringLiteral("verify"),
            QStringLiteral("Check every entry of a profile against the image."),
            QStringLiteral("IMAGE [PATH]"),
            QStringLiteral(
                "Checks the entries of the profile, or only those that PATH names: whether the format is known, the bytes and\n"
                "the palette lie inside the image, the bytes give a picture, the picture gives the same bytes again, and no\n"
                "other entry has the same bytes. Ends with 1 when anything is wrong. Clear texels that carry a colour are\n"
                "only remarked on."),
            1,
            2,
            options,
            run};
}
}
