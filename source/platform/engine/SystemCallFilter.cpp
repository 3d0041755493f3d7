#include "platform/engine/SystemCallFilter.h"

#include "platform/core/Sanitizers.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace inkory
{

namespace
{

/// Conditions on different arguments, all of which have to hold.
struct Rule
{
    int call;
    std::vector<scmp_arg_cmp> conditions;
};

/// Allowed with any arguments. None of them reaches beyond the process's memory, its descriptors, and what may be read.
constexpr std::array harmlessCalls = {
    // descriptors that it has
    SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(writev), SCMP_SYS(pwrite64),
    SCMP_SYS(lseek), SCMP_SYS(close), SCMP_SYS(fstat), SCMP_SYS(fstatfs), SCMP_SYS(ftruncate), SCMP_SYS(fadvise64),
    SCMP_SYS(getdents), SCMP_SYS(getdents64), SCMP_SYS(poll), SCMP_SYS(ppoll), SCMP_SYS(recvmsg), SCMP_SYS(getsockname),
    // looking at paths
    SCMP_SYS(stat), SCMP_SYS(lstat), SCMP_SYS(newfstatat), SCMP_SYS(statx), SCMP_SYS(statfs), SCMP_SYS(access),
    SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(getcwd),
    // its memory
    SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise), SCMP_SYS(mlock),
    // its threads and signals
    SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(eventfd2), SCMP_SYS(sched_yield),
    SCMP_SYS(sched_getaffinity), SCMP_SYS(getcpu), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack), SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group),
    // time, chance and itself
    SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep), SCMP_SYS(nanosleep),
    SCMP_SYS(gettimeofday), SCMP_SYS(time), SCMP_SYS(times), SCMP_SYS(getrandom), SCMP_SYS(getpid), SCMP_SYS(getppid),
    SCMP_SYS(gettid), SCMP_SYS(getuid), SCMP_SYS(geteuid), SCMP_SYS(getgid), SCMP_SYS(getegid), SCMP_SYS(getrlimit),
    SCMP_SYS(getrusage), SCMP_SYS(sysinfo), SCMP_SYS(uname)};

/// What the sanitizers call to look whether an address can be read.
constexpr std::array sanitizersCalls = {SCMP_SYS(pipe), SCMP_SYS(pipe2)};

scmp_arg_cmp argumentIs(unsigned argument, std::uint64_t value)
{
    return {argument, SCMP_CMP_EQ, value, 0};
}

/// For arguments of type int: the upper half of the register may hold anything.
scmp_arg_cmp integerIs(unsigned argument, std::uint32_t value)
{
    return {argument, SCMP_CMP_MASKED_EQ, 0xffffffff, value};
}

scmp_arg_cmp hasNoneOf(unsigned argument, std::uint64_t bits)
{
    return {argument, SCMP_CMP_MASKED_EQ, bits, 0};
}

void addMemoryRules(std::vector<Rule> &rules)
{
    rules.push_back({SCMP_SYS(mmap), {hasNoneOf(2, PROT_EXEC)}});
    rules.push_back({SCMP_SYS(mprotect), {hasNoneOf(2, PROT_EXEC)}});
}

void addFileRules(std::vector<Rule> &rules)
{
    // O_TMPFILE contains O_DIRECTORY, with which folders are opened for reading.
    constexpr std::uint64_t notForReading = O_ACCMODE | O_CREAT | O_TRUNC | (O_TMPFILE & ~O_DIRECTORY);
    rules.push_back({SCMP_SYS(open), {hasNoneOf(1, notForReading)}});
    rules.push_back({SCMP_SYS(openat), {hasNoneOf(2, notForReading)}});
    for (const std::uint32_t command : {F_GETFD, F_SETFD, F_GETFL, F_SETFL, F_DUPFD, F_DUPFD_CLOEXEC, F_GET_SEALS})
        rules.push_back({SCMP_SYS(fcntl), {integerIs(1, command)}});
    rules.push_back({SCMP_SYS(getsockopt), {integerIs(1, SOL_SOCKET)}});
}

void addProcessRules(std::vector<Rule> &rules)
{
    // Exactly a thread of this process, as the C library starts one: the image classes work with threads, and would
    // wait for ever for one that does not come.
    constexpr std::uint64_t thread = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SYSVSEM | CLONE_SIGHAND | CLONE_THREAD |
                                     CLONE_SETTLS | CLONE_PARENT_SETTID | CLONE_CHILD_CLEARTID;
    rules.push_back({SCMP_SYS(clone), {argumentIs(0, thread)}});
    const auto self = static_cast<std::uint32_t>(::getpid());
    rules.push_back({SCMP_SYS(tgkill), {integerIs(0, self)}});
    rules.push_back({SCMP_SYS(prlimit64), {integerIs(0, 0), argumentIs(2, 0)}}); // asking, not setting
}

std::vector<Rule> allowed()
{
    std::vector<Rule> rules;
    rules.reserve(harmlessCalls.size() + 16); // and those with conditions
    for (const int call : harmlessCalls)
        rules.push_back({call, {}});
    if (isSanitized)
        for (const int call : sanitizersCalls)
            rules.push_back({call, {}});
    addMemoryRules(rules);
    addFileRules(rules);
    addProcessRules(rules);
    return rules;
}

/// Answers 0 or a negative error number.
int add(scmp_filter_ctx filter, std::uint32_t action, const Rule &rule)
{
    if (rule.call < 0) // not a call of this architecture
        return 0;
    return ::seccomp_rule_add_array(filter, action, rule.call, static_cast<unsigned>(rule.conditions.size()),
                                    rule.conditions.data());
}

int fill(scmp_filter_ctx filter)
{
    int problem = ::seccomp_attr_set(filter, SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS);
    for (const Rule &rule : allowed())
        if (problem == 0)
            problem = add(filter, SCMP_ACT_ALLOW, rule);
    // Their arguments are out of sight, in memory. The C library then takes the older calls.
    for (const int call : {SCMP_SYS(clone3), SCMP_SYS(openat2)})
        if (problem == 0)
            problem = add(filter, SCMP_ACT_ERRNO(ENOSYS), {call, {}});
    // Sending descriptors could use up those of the window. The message library takes plain writing then.
    if (problem == 0)
        problem = add(filter, SCMP_ACT_ERRNO(ENOTSOCK), {SCMP_SYS(sendmsg), {}});
    return problem;
}

} // namespace

Result<void> filterSystemCalls()
{
    const std::unique_ptr<void, decltype(&::seccomp_release)> filter(::seccomp_init(SCMP_ACT_ERRNO(EPERM)),
                                                                     &::seccomp_release);
    if (!filter)
        return Error{qt_error_string(ENOMEM)};
    int problem = fill(filter.get());
    if (problem == 0)
        problem = ::seccomp_load(filter.get()); // also gives up new privileges
    if (problem != 0)
        return Error{qt_error_string(-problem)};
    return {};
}

} // namespace inkory
