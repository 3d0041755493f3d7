#pragma once

#include <QStringList>

namespace inkory
{

/// How a process locks itself up before it reads the first byte from a stranger. To be called while it has one thread.
struct Containment
{
    /// Folders and files that stay readable, with all they contain; missing ones are skipped.
    QStringList readablePaths;
    /// The newest Landlock interface to make use of; lower ones stand for older kernels, 0 for one without Landlock.
    /// Whatever the running kernel reports is the limit.
    int newestLandlockVersion = 1000;

    /// Limits (address space, one file's size, open files, no core dump), then Landlock, then the filter of system
    /// calls. Answers what the running kernel could not give, one line each, for the log; empty when all is in place.
    /// False in `isLocked` when the process has several threads, or the filter of system calls could not be put in
    /// place: such a process must not go on.
    struct Outcome
    {
        bool isLocked = false;
        QStringList missing;
    };
    Outcome apply() const;
};

/// What drawing pages needs from the disk: fontconfig's folders, files and caches as fontconfig itself names them
/// (which it is started for, and made to match one font), and the drawing library's own tables.
QStringList readablePathsForDrawing();

} // namespace inkory
