#pragma once

#include <QString>

#include <optional>

namespace inkory
{

/// What tells one state of a file from another without reading it: which file it is, how long, and when its content and
/// its entry were changed last. A program that restores the modification time still changes the entry.
struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 modifiedNanoseconds = 0;
    qint64 changedNanoseconds = 0;

    bool operator==(const FileIdentity &) const = default;

    /// Follows symbolic links. None for a file that is not there.
    static std::optional<FileIdentity> of(const QString &path);
};

} // namespace inkory
