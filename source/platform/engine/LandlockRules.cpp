#include "platform/engine/LandlockRules.h"

#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace inkory
{

namespace
{

/// The kernel's newest form of it; the headers at hand may have an older one. Every kernel takes it as long as what it
/// does not know is zero.
struct RulesetAttributes
{
    std::uint64_t fileRights = 0;
    std::uint64_t networkRights = 0;
    std::uint64_t scopes = 0;
};

constexpr std::uint64_t bindAndConnectTcp = 0b11;
constexpr std::uint64_t abstractSocketsAndSignals = 0b11;

/// All rights concerning files that the version knows. They are numbered from the lowest bit.
constexpr std::uint64_t fileRightsOfVersion(int version)
{
    int count = 13; // up to creating symbolic links
    if (version >= 2)
        count = 14; // moving between folders
    if (version >= 3)
        count = 15; // truncating
    if (version >= 5)
        count = 16; // controlling devices
    return (std::uint64_t{1} << count) - 1;
}

/// 0 where the kernel was built or started without.
int kernelsVersion()
{
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return static_cast<int>(std::max(version, 0L));
}

QStringList notRestricted(int version)
{
    QStringList lines;
    if (version < 1)
        lines << u"the kernel cannot restrict reading files (no Landlock)"_qs;
    if (version < 3)
        lines << u"the kernel cannot restrict truncating files by Landlock (the filter of system calls does)"_qs;
    if (version < 4)
        lines << u"the kernel cannot restrict the network by Landlock (the filter of system calls does)"_qs;
    if (version < 6)
        lines << u"the kernel cannot restrict signals by Landlock (the filter of system calls does)"_qs;
    return lines;
}

/// Whether the path could be made readable, or is not there.
bool allowReading(int ruleset, const QString &path)
{
    const int file = ::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC);
    if (file < 0)
        return errno == ENOENT || errno == ENOTDIR || errno == EACCES;
    const auto closing = qScopeGuard([file] { ::close(file); });
    struct stat status = {};
    if (::fstat(file, &status) != 0)
        return false;
    landlock_path_beneath_attr rule = {};
    rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE;
    if (S_ISDIR(status.st_mode))
        rule.allowed_access |= LANDLOCK_ACCESS_FS_READ_DIR;
    rule.parent_fd = file;
    return ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
}

} // namespace

QStringList restrictByLandlock(const QStringList &readablePaths, int newestVersion)
{
    const int version = std::min(kernelsVersion(), newestVersion);
    QStringList lines = notRestricted(version);
    if (version < 1)
        return lines;

    RulesetAttributes attributes;
    attributes.fileRights = fileRightsOfVersion(version);
    attributes.networkRights = version >= 4 ? bindAndConnectTcp : 0;
    attributes.scopes = version >= 6 ? abstractSocketsAndSignals : 0;
    const int ruleset = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
    if (ruleset < 0)
        return lines << u"Landlock made no rules: %1"_qs.arg(qt_error_string(errno));
    const auto closing = qScopeGuard([ruleset] { ::close(ruleset); });

    for (const QString &path : readablePaths)
        if (!allowReading(ruleset, path))
            lines << u"Landlock did not make %1 readable: %2"_qs.arg(path, qt_error_string(errno));
    // Otherwise only the administrator may restrict a process.
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::syscall(SYS_landlock_restrict_self, ruleset, 0) != 0)
        lines << u"Landlock did not take its rules: %1"_qs.arg(qt_error_string(errno));
    return lines;
}

} // namespace inkory
