#include "platform/pdf/EngineProcess.h"

#include "platform/core/Log.h"
#include "platform/core/Sanitizers.h"
#include "platform/pdf/EngineValues.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace inkory
{

namespace
{

// The helper finds its socket under this number.
constexpr int socketInHelper = 3;

// Whoever took the spare wants the processor for itself first.
constexpr std::chrono::milliseconds refillDelay(300);

struct Spare
{
    std::mutex mutex;
    bool isWanted = false;
    std::unique_ptr<EngineProcess> process;
};

Spare &spare()
{
    // Never destroyed: threads may look after it while the process ends.
    static auto *theSpare = new Spare; // NOLINT(cppcoreguidelines-owning-memory)
    return *theSpare;
}

// Beside the program in a build, in the folder for helper programs where it is installed.
std::optional<QByteArray> engineProgram()
{
    const QString folder = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget().section(QLatin1Char('/'), 0, -2);
    for (const QString &place :
         {QStringLiteral("/inkory-engine"), QStringLiteral("/../libexec/inkory/inkory-engine")}) {
        if (QFileInfo(folder + place).isExecutable())
            return QFile::encodeName(folder + place);
    }
    return std::nullopt;
}

Error startingFailed(int code)
{
    logLine(
        QStringLiteral("a helper process could not be started: %1").arg(QString::fromLocal8Bit(std::strerror(code))));
    return {QCoreApplication::translate(
        "EngineProcess", "A part of Inkory that reads files could not be started. Installing Inkory again may help.")};
}

// Runs the function on a thread of its own; answers whether a thread could be had.
template <class Function> bool runDetached(Function function)
{
    try {
        std::thread(std::move(function)).detach();
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

int spawnHelper(const QByteArray &program, EngineKind kind, int socket, pid_t &pid)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, socket, socketInHelper);
    posix_spawn_file_actions_addclosefrom_np(&actions, socketInHelper + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    QByteArray name = program;
    QByteArray what = kind == EngineKind::Documents ? "documents" : "images";
    const std::array<char *, 3> arguments{name.data(), what.data(), nullptr};
    const int code = posix_spawn(&pid, program.constData(), &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return code;
}

// Waits for the end of the process, which may take its time: the memory of a large one has to be given back.
void bury(pid_t pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status) && WTERMSIG(status) != SIGKILL)
        logLine(QStringLiteral("helper process %1 was ended by signal %2").arg(pid).arg(WTERMSIG(status)));
    else if (WIFEXITED(status) && WEXITSTATUS(status) != 0)
        logLine(QStringLiteral("helper process %1 ended with status %2").arg(pid).arg(WEXITSTATUS(status)));
}

void limitAddressSpace(pid_t pid, qint64 extraBytes)
{
    rlimit limit{};
    if (isSanitized || prlimit(pid, RLIMIT_AS, nullptr, &limit) != 0)
        return;
    limit.rlim_cur = std::min<rlim_t>(static_cast<rlim_t>(helperAddressSpace + extraBytes), limit.rlim_max);
    prlimit(pid, RLIMIT_AS, &limit, nullptr);
}

} // namespace

struct EngineProcess::Life
{
    std::mutex mutex;
    pid_t pid = -1; // until it has been started, and after it was waited for
    bool isUnwanted = false;
    bool hasEnded = false; // or could not be started
    qint64 extraAddressSpace = 0;

    // On a thread of its own: starting blocks until the new process runs its program, which takes as long as a busy
    // machine likes.
    void live(const QByteArray &program, EngineKind kind, int socket)
    {
        pid_t started = -1;
        const int code = spawnHelper(program, kind, socket, started);
        ::close(socket);
        if (code != 0) {
            (void)startingFailed(code); // who waits for an answer sees that the socket is closed
            const std::lock_guard lock(mutex);
            hasEnded = true;
            return;
        }
        {
            const std::lock_guard lock(mutex);
            pid = started;
            limitAddressSpace(pid, extraAddressSpace);
            if (isUnwanted)
                ::kill(pid, SIGKILL);
        }
        siginfo_t ended{};
        while (waitid(P_PID, static_cast<id_t>(started), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
        }
        {
            const std::lock_guard lock(mutex);
            pid = -1; // the number may mean another process soon
            hasEnded = true;
        }
        bury(started);
    }
};

Result<std::unique_ptr<EngineProcess>> EngineProcess::start(EngineKind kind)
{
    if (kind == EngineKind::Documents) {
        const std::lock_guard lock(spare().mutex);
        std::unique_ptr<EngineProcess> taken = std::move(spare().process);
        if (spare().isWanted)
            refillSpareLater();
        if (taken && !taken->hasEnded())
            return taken;
    }
    return spawn(kind);
}

void EngineProcess::prepareSpare()
{
    const std::lock_guard lock(spare().mutex);
    spare().isWanted = true;
    fillSpare();
}

// With the lock held.
void EngineProcess::fillSpare()
{
    if (spare().process || !spare().isWanted)
        return;
    if (auto started = spawn(EngineKind::Documents))
        spare().process = std::move(*started);
}

void EngineProcess::refillSpareLater()
{
    (void)runDetached([] { // without a spare, the next helper is only started later
        std::this_thread::sleep_for(refillDelay);
        const std::lock_guard lock(spare().mutex);
        fillSpare();
    });
}

void EngineProcess::dropSpare()
{
    const std::lock_guard lock(spare().mutex);
    spare().isWanted = false;
    spare().process.reset();
}

Result<std::unique_ptr<EngineProcess>> EngineProcess::spawn(EngineKind kind)
{
    const auto program = engineProgram();
    if (!program)
        return startingFailed(ENOENT);
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return startingFailed(errno);
    auto life = std::make_shared<Life>();
    if (!runDetached([life, program, kind, socket = ends[1]] { life->live(*program, kind, socket); })) {
        ::close(ends[0]);
        ::close(ends[1]);
        return startingFailed(EAGAIN);
    }
    return std::unique_ptr<EngineProcess>(new EngineProcess(std::move(life), ends[0]));
}

EngineProcess::~EngineProcess()
{
    if (m_socket >= 0)
        ::close(m_socket);
    const std::lock_guard lock(m_life->mutex);
    m_life->isUnwanted = true;
    if (m_life->pid > 0)
        ::kill(m_life->pid, SIGKILL);
}

bool EngineProcess::hasEnded() const
{
    const std::lock_guard lock(m_life->mutex);
    return m_life->hasEnded;
}

int EngineProcess::takeSocket()
{
    return std::exchange(m_socket, -1);
}

qint64 EngineProcess::cpuMilliseconds() const
{
    const std::lock_guard lock(m_life->mutex);
    clockid_t clock = 0;
    timespec time{};
    if (m_life->pid <= 0 || clock_getcpuclockid(m_life->pid, &clock) != 0 || clock_gettime(clock, &time) != 0)
        return 0;
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}

qint64 EngineProcess::privateMemory() const
{
    const std::lock_guard lock(m_life->mutex);
    QFile file(QStringLiteral("/proc/%1/statm").arg(m_life->pid));
    if (m_life->pid <= 0 || !file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> pages = file.readAll().split(' '); // all, resident, shared, ...
    return pages.size() > 2 ? (pages[1].toLongLong() - pages[2].toLongLong()) * sysconf(_SC_PAGESIZE) : 0;
}

void EngineProcess::allowAddressSpaceFor(qint64 bytes)
{
    const std::lock_guard lock(m_life->mutex);
    m_life->extraAddressSpace = bytes;
    if (m_life->pid > 0)
        limitAddressSpace(m_life->pid, bytes);
}

} // namespace inkory
