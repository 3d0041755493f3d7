#include "platform/engine/Containment.h"

#include "platform/core/Sanitizers.h"
#include "platform/engine/LandlockRules.h"

#include "support/Tools.h"

#include <QDir>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace inkory;

namespace
{

/// Outcomes in a free process and in processes that are locked up with Landlock's versions 0, 2 and 6: 0, an error
/// number, or 128 + the signal that ended the process.
using Outcomes = std::array<int, 4>;
using Attempt = std::tuple<const char *, std::function<int()>, Outcomes>;
constexpr std::array versions = {-1, 0, 2, 6};
constexpr Outcomes works = {0, 0, 0, 0}, denied = {0, EPERM, EPERM, EPERM}, hidden = {0, 0, EACCES, EACCES};

int inChild(const std::function<int()> &task)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(30);
        ::_exit(task());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

template <class T> int problem(T answer)
{
    return answer == T(-1) ? errno : 0;
}

int connectTo(int socket)
{
    const sockaddr_in nobody = {AF_INET, htons(9), {htonl(INADDR_LOOPBACK)}, {}};
    return problem(::connect(socket, reinterpret_cast<const sockaddr *>(&nobody), sizeof nobody));
}

class ContainmentTest : public ::testing::Test
{
protected:
    void expect(const std::vector<Attempt> &attempts, const std::function<bool(int version)> &lockUp) const
    {
        for (const auto &[name, run, outcomes] : attempts)
            for (std::size_t i = 0; i < versions.size() && versions[i] <= m_kernelsVersion; ++i)
                EXPECT_EQ(inChild([&, &go = run] { return i == 0 || lockUp(versions[i]) ? go() : 200; }), outcomes[i])
                    << name << ", Landlock " << versions[i];
    }

    QTemporaryDir m_fonts;
    const QByteArray m_folder = m_fonts.path().toLocal8Bit() + '/';
    const QByteArray m_font = test::writeFile(m_fonts.path(), u"font"_qs, "font").toLocal8Bit();
    const QByteArray m_letter = test::writeFile(QDir::homePath(), u"letter"_qs, "private").toLocal8Bit();
    const int m_memory = ::memfd_create("test", MFD_CLOEXEC);
    const int m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int m_kernelsVersion = std::max(0, int(::syscall(SYS_landlock_create_ruleset, nullptr, 0, 1)));
};

TEST_F(ContainmentTest, OnlyWhatDrawingNeedsIsPossible)
{
    constexpr rlimit unlimited = {RLIM_INFINITY, RLIM_INFINITY};
    constexpr int beyond = isSanitized ? 0 : ENOMEM;
    const std::vector<Attempt> attempts = {
        {"read a system file", [] { return problem(::open("/etc/passwd", O_RDONLY)); }, hidden},
        {"read a file at home", [&] { return problem(::open(m_letter, O_RDONLY)); }, hidden},
        {"read a font", [&] { return problem(::open(m_font, O_RDONLY)); }, works},
        {"list the fonts", [&] { return problem(::open(m_folder, O_RDONLY | O_DIRECTORY)); }, works},
        {"write", [&] { return problem(::open(m_font, O_WRONLY)); }, denied},
        {"truncate by opening", [&] { return problem(::open(m_font, O_TRUNC)); }, denied},
        {"truncate by name", [&] { return problem(::truncate(m_font, 4)); }, denied},
        {"create", [&] { return problem(::open(m_folder + QByteArray::number(::getpid()), O_CREAT, 0600)); }, denied},
        {"change rights", [&] { return problem(::chmod(m_font, 0600)); }, denied},
        {"socket", [] { return problem(::socket(AF_UNIX, SOCK_STREAM, 0)); }, denied},
        {"connect", [&] { return connectTo(m_socket); }, {ECONNREFUSED, EPERM, EPERM, EPERM}},
        {"start a program", [] { return problem(::execl("/bin/true", "true", nullptr)); }, denied},
        {"fork", [] { return problem(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }, denied},
        {"start a thread", [] { return std::thread([] {}).join(), 0; }, works},
        {"map code", [] { return problem(::mmap(nullptr, 9, PROT_EXEC, MAP_PRIVATE | MAP_ANON, -1, 0)); }, denied},
        {"map shared", [&] { return problem(::mmap(nullptr, 9, PROT_WRITE, MAP_SHARED, m_memory, 0)); }, works},
        {"write to memory", [&] { return problem(::write(m_memory, "x", 1)); }, works},
        {"a file of 5 GiB", [&] { return problem(::pwrite(m_memory, "x", 1, 5LL << 30)); }, {0, EFBIG, EFBIG, EFBIG}},
        {"200 MB", [] { return std::vector<char>(200'000'000, 'x').back() - 'x'; }, works},
        {"2 GiB", [] { return ::operator new(2ULL << 30, std::nothrow) ? 0 : ENOMEM; }, {0, beyond, beyond, beyond}},
        {"raise a limit", [&] { return problem(::setrlimit(RLIMIT_FSIZE, &unlimited)); }, denied},
        {"be traced", [] { return problem(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr)); }, denied},
        {"signal the parent", [] { return problem(::kill(::getppid(), 0)); }, denied},
        {"abort the parent", [] { return problem(::syscall(SYS_tgkill, ::getppid(), ::getppid(), 0)); }, denied},
        {"abort", [] { return std::abort(), 0; }, {134, 134, 134, 134}}};
    expect(attempts, [&](int version) { return Containment{{m_fonts.path()}, version}.apply().isLocked; });
}

TEST_F(ContainmentTest, LandlockDoesItsPartWithoutTheFilter)
{
    const std::vector<Attempt> attempts = {
        {"write", [&] { return problem(::open(m_font, O_WRONLY)); }, hidden},
        {"create", [&] { return problem(::open(m_folder + QByteArray::number(::getpid()), O_CREAT, 0600)); }, hidden},
        {"truncate", [&] { return problem(::truncate(m_font, 4)); }, {0, 0, 0, EACCES}},
        {"connect", [&] { return connectTo(m_socket); }, {ECONNREFUSED, ECONNREFUSED, ECONNREFUSED, EACCES}},
        {"signal the parent", [] { return problem(::kill(::getppid(), 0)); }, {0, 0, 0, EPERM}}};
    expect(attempts, [&](int version) { return restrictByLandlock({m_fonts.path()}, version), true; });
}

TEST_F(ContainmentTest, SaysWhatTheKernelCannotDo)
{
    EXPECT_EQ(inChild([] { return int(Containment{{}, 0}.apply().missing.size()); }), 4);
    EXPECT_EQ(inChild([] { return int(Containment{}.apply().missing.isEmpty()); }), int(m_kernelsVersion >= 6));
    EXPECT_TRUE(readablePathsForDrawing().contains(u"/usr/share/fonts"_qs));
}

} // namespace
