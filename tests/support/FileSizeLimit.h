#pragma once

#include <csignal>
#include <sys/resource.h>

namespace inkory::test
{

/// Keeps the files of this process from growing beyond a size while it lives: to a writer it is a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limited{bytes, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_old = {};
    void (*m_oldHandler)(int);
};

} // namespace inkory::test
