// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

/// Makes calls to the system go wrong. A test program that is linked with faultpoints.cpp goes through it for each call that
/// changes files, and so do the libraries it uses. Calls for files below one folder are counted while a fault is armed.
namespace faults
{
enum class What {
    Nothing, ///< Only count.
    Kill, ///< End the process in place of the call.
    KillHalfway, ///< When the call writes: let half of the bytes through, then end the process.
    Fail, ///< Have this one call fail.
    FailFromHereOn, ///< Have this and each later call that needs space fail, as a full disk does; a write is cut in half first.
    DenyFromHereOn, ///< Have this and each later call that makes, renames or removes a name fail, as without permission.
};

struct Fault
{
    What what = What::Nothing;
    int at = 0; ///< The number of the call, from 1 on.
    int error = 0; ///< What errno is set to.
    bool folderAllowsNoFile = false; ///< Making, renaming and removing a name fails with EACCES all along, and is not counted.
};

/// Starts counting calls for files below \a folder, a canonical path, and carries out \a fault.
void arm(const QString &folder, const Fault &fault);
/// Ends it. The names of the calls that were counted.
QList<QByteArray> disarm();

/// The exit status of a process that a fault has ended.
constexpr int killed = 77;

/// Runs \a action in a copy of this process and returns its exit status; -1 when it crashed.
int runInChild(const std::function<void()> &action);

/// Takes from this process what root may do; it cannot have that back. Does nothing to any other user.
void becomeOrdinaryUser();
}
