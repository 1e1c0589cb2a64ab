// SPDX-License-Identifier: MIT
#pragma once

#include "support/pictures.h"
#include "system/faults/faultpoints.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

/// Something that writes files.
struct Operation
{
    std::function<void(const QString &folder)> prepare; ///< Makes the files that are there before.
    std::function<QString(const QString &folder)> run; ///< Returns what the user is told: empty when all went well.
    bool tellsPath = false; ///< Whether that names the file.
    bool tellsReason = true; ///< Whether that gives the system's reason.
    QString folder = QString(); ///< Where it must run; else each time in another.
};

/// The folder of one run; empty at first, and gone at the end.
class RunFolder
{
public:
    explicit RunFolder(const Operation &operation) : m_path(operation.folder)
    {
        if (m_path.isEmpty())
            m_path = m_temporary.path();
        clear();
        QDir().mkpath(m_path);
    }
    ~RunFolder() { clear(); }
    RunFolder(const RunFolder &) = delete;
    RunFolder &operator=(const RunFolder &) = delete;

    const QString &path() const { return m_path; }

private:
    void clear() { QDir(m_path).removeRecursively(); }

    QTemporaryDir m_temporary;
    QString m_path;
};

/// Content by path; a directory's path ends in "/" and has none.
using Files = QMap<QString, QByteArray>;

inline Files filesBelow(const QString &folder)
{
    Files files;
    const QStringList paths = treeOnDisk(folder);
    for (const QString &path : paths)
        files.insert(path, path.endsWith('/') ? QByteArray() : bytesOfFile(folder + '/' + path));
    return files;
}

/// Carries out an operation again and again, each time with another of its calls to the system going wrong, and checks the files
/// after each: every one is the old or the new one, whole, and the next run ends as it should.
class FaultRuns
{
public:
    /// With \a folderAllowsNoFile the operation finds a folder in which no name can be made all along.
    explicit FaultRuns(const Operation &operation, bool folderAllowsNoFile = false)
        : m_operation(operation), m_folderAllowsNoFile(folderAllowsNoFile)
    {
        const RunFolder folder(operation);
        operation.prepare(folder.path());
        m_old = filesBelow(folder.path());
        faults::arm(folder.path(), fault(faults::What::Nothing, 0, 0));
        const QString message = operation.run(folder.path());
        m_calls = faults::disarm();
        m_new = filesBelow(folder.path());
        if (!message.isEmpty())
            QTest::qFail(qPrintable(QStringLiteral("without a fault: ") + message), __FILE__, __LINE__);
        if (m_calls.isEmpty() || m_new == m_old)
            QTest::qFail("the operation changes nothing", __FILE__, __LINE__);
    }

    /// What the operation calls, one after the other.
    const QList<QByteArray> &calls() const { return m_calls; }

    /// At each call from number \a first on.
    void killAtEachCall(int first = 1)
    {
        killAt(faults::What::Kill, first);
        killAt(faults::What::KillHalfway, first);
    }

    void failOnceAtEachCall()
    {
        for (const int error : {EIO, ENOSPC, EACCES})
            failAt(faults::What::Fail, error);
    }

    void failFromEachCallOn()
    {
        failAt(faults::What::FailFromHereOn, ENOSPC);
        failAt(faults::What::DenyFromHereOn, EACCES);
    }

private:
    faults::Fault fault(faults::What what, int at, int error) const { return {what, at, error, m_folderAllowsNoFile}; }

    void killAt(faults::What what, int first)
    {
        int kills = 0;
        for (int at = first; at <= m_calls.size() && !QTest::currentTestFailed(); ++at) {
            const RunFolder folder(m_operation);
            m_operation.prepare(folder.path());
            const int status = faults::runInChild([&] {
                faults::arm(folder.path(), fault(what, at, 0));
                m_operation.run(folder.path());
            });
            const QByteArray where = describe("killed at", at);
            if (status != 0 && status != faults::killed)
                QTest::qFail(where + ": crashed", __FILE__, __LINE__);
            kills += status == faults::killed ? 1 : 0;
            if (status == 0 && what == faults::What::Kill)
                QTest::qFail(where + ": the call did not come", __FILE__, __LINE__);
            checkWhole(folder.path(), true, where);
            checkNextRun(folder.path(), where);
        }
        if (kills == 0 && (what == faults::What::Kill || m_calls.contains("write")))
            QTest::qFail("nothing was ever killed", __FILE__, __LINE__);
    }

    void failAt(faults::What what, int error)
    {
        for (int at = 1; at <= m_calls.size() && !QTest::currentTestFailed(); ++at) {
            const RunFolder folder(m_operation);
            m_operation.prepare(folder.path());
            faults::arm(folder.path(), fault(what, at, error));
            const QString message = m_operation.run(folder.path());
            faults::disarm();
            const QByteArray where = describe(qPrintable(qt_error_string(error)), at) + ", \"" + message.toUtf8() + '"';
            checkWhole(folder.path(), mayLeaveMore(what, at), where);
            checkMessage(folder.path(), message, what, at, error, where);
            checkNextRun(folder.path(), where);
        }
    }

    QByteArray describe(const char *what, int at) const
    {
        return QByteArray(what) + " at call " + QByteArray::number(at) + ", " + m_calls.at(at - 1);
    }

    /// Whether there can be a file of another name: one that could not be removed.
    bool mayLeaveMore(faults::What what, int at) const
    {
        return what == faults::What::DenyFromHereOn || (what == faults::What::Fail && m_calls.at(at - 1) == "unlink");
    }

    /// With \a mayLeaveMore there may be a file of another name: of a process that was killed.
    void checkWhole(const QString &folder, bool mayLeaveMore, const QByteArray &where) const
    {
        const Files files = filesBelow(folder);
        for (auto file = files.cbegin(); file != files.cend(); ++file) {
            const bool known = m_old.contains(file.key()) || m_new.contains(file.key());
            const bool isOld = m_old.contains(file.key()) && m_old.value(file.key()) == file.value();
            const bool isNew = m_new.contains(file.key()) && m_new.value(file.key()) == file.value();
            if (known ? !isOld && !isNew : !mayLeaveMore)
                QTest::qFail(where + ": " + file.key().toUtf8() + (known ? " is damaged" : " is left over"), __FILE__, __LINE__);
        }
        for (auto file = m_old.cbegin(); file != m_old.cend(); ++file) {
            if (!files.contains(file.key()) && m_new.contains(file.key()))
                QTest::qFail(where + ": " + file.key().toUtf8() + " is lost", __FILE__, __LINE__);
        }
    }

    void checkMessage(const QString &folder, const QString &message, faults::What what, int at, int error,
                      const QByteArray &where) const
    {
        if (message.isEmpty()) {
            Files files = filesBelow(folder);
            if (mayLeaveMore(what, at))
                removeUnknown(&files);
            if (files != m_new)
                QTest::qFail(where + ": the failure was not noticed", __FILE__, __LINE__);
            if (what == faults::What::Fail && m_calls.at(at - 1) == "fsync")
                QTest::qFail(where + ": a failed flush was not noticed", __FILE__, __LINE__);
            return;
        }
        if (m_operation.tellsReason && !message.contains(qt_error_string(error)))
            QTest::qFail(where + ": no reason", __FILE__, __LINE__);
        if (m_operation.tellsPath && !message.contains(folder))
            QTest::qFail(where + ": no path", __FILE__, __LINE__);
    }

    void removeUnknown(Files *files) const
    {
        const QStringList paths = files->keys();
        for (const QString &path : paths) {
            if (!m_old.contains(path) && !m_new.contains(path))
                files->remove(path);
        }
    }

    void checkNextRun(const QString &folder, const QByteArray &where) const
    {
        const QString message = m_operation.run(folder);
        Files files = filesBelow(folder);
        removeUnknown(&files);
        if (!message.isEmpty() || files != m_new)
            QTest::qFail(where + ": the next run fails: " + message.toUtf8(), __FILE__, __LINE__);
    }

    Operation m_operation;
    bool m_folderAllowsNoFile;
    Files m_old;
    Files m_new;
    QList<QByteArray> m_calls;
};
