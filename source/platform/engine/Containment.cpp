#include "platform/engine/Containment.h"

#include "platform/core/Sanitizers.h"
#include "platform/engine/LandlockRules.h"
#include "platform/engine/SystemCallFilter.h"
#include "platform/pdf/EngineValues.h"

#include <QString>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#if INKORY_SANITIZED
namespace
{
bool isLockedUp = false;
}

/// The leak checker asks this when the program ends. It would start a process that looks into this one, and fail.
extern "C" int __lsan_is_turned_off()
{
    return isLockedUp;
}
#endif

namespace inkory
{

namespace
{

constexpr rlim_t largestFile = 4ULL << 30; // bytes of a saved document
constexpr rlim_t mostOpenFiles = 64;

enum class Bound { Soft, Hard };

/// Never raises a limit. With a soft bound, the window can raise it again from outside; the process itself cannot.
bool limit(__rlimit_resource resource, rlim_t most, Bound bound)
{
    rlimit limits = {};
    if (::getrlimit(resource, &limits) != 0)
        return false;
    limits.rlim_cur = std::min(limits.rlim_cur, most);
    if (bound == Bound::Hard)
        limits.rlim_max = std::min(limits.rlim_max, most);
    return ::setrlimit(resource, &limits) == 0;
}

/// The window may have set it already, to more than this: for a document that waits to be opened.
bool limitAddressSpace()
{
    rlimit limits = {};
    if (isSanitized || (::getrlimit(RLIMIT_AS, &limits) == 0 && limits.rlim_cur != RLIM_INFINITY))
        return true;
    return limit(RLIMIT_AS, helperAddressSpace, Bound::Soft);
}

bool applyLimits()
{
    bool isLimited = limit(RLIMIT_FSIZE, largestFile, Bound::Soft);
    isLimited = limit(RLIMIT_NOFILE, mostOpenFiles, Bound::Hard) && isLimited;
    isLimited = limit(RLIMIT_CORE, 0, Bound::Hard) && isLimited;
    isLimited = ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 && isLimited;
    isLimited = limitAddressSpace() && isLimited;
    // Writing beyond the limit is then an error like any other.
    return ::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && isLimited;
}

/// Landlock's rules bind the thread that makes them and those that it starts, not others.
bool hasOneThread()
{
    struct stat threads = {};
    return isSanitized || ::stat("/proc/self/task", &threads) != 0 || threads.st_nlink == 3; // ".", "..", and itself
}

} // namespace

Containment::Outcome Containment::apply() const
{
    Outcome outcome;
    if (!hasOneThread()) {
        outcome.missing << u"the process has several threads, which cannot be locked up together"_qs;
        return outcome;
    }
    ::tzset();                 // reads the time zone's file, for the log's lines
    ::mallopt(M_ARENA_MAX, 1); // each thread's own would take 64 MiB of address space
    if (!applyLimits())
        outcome.missing << u"not all limits could be set: %1"_qs.arg(qt_error_string(errno));
    outcome.missing << restrictByLandlock(readablePaths, newestLandlockVersion);
    const Result<void> filtered = filterSystemCalls();
    if (!filtered)
        outcome.missing << u"the system calls could not be filtered: %1"_qs.arg(filtered.error().message);
    outcome.isLocked = bool(filtered);
#if INKORY_SANITIZED
    isLockedUp = outcome.isLocked;
#endif
    return outcome;
}

} // namespace inkory
