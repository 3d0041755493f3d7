#include "platform/core/SecretBytes.h"

#include "platform/core/Log.h"

#include <QString>

#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace inkory
{

/// Pages of its own, since locking and dumping are a matter of whole pages.
class SecretBytes::Locked
{
public:
    explicit Locked(const QByteArray &bytes) : m_size(bytes.size())
    {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        m_mappedSize = (static_cast<std::size_t>(m_size) / page + 1) * page; // one byte more than the text at least
        void *pages = ::mmap(nullptr, m_mappedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED)
            qBadAlloc();
        if (::mlock(pages, m_mappedSize) != 0)
            logLine(u"A password cannot be kept out of swap: %1"_qs.arg(qt_error_string(errno)));
        if (::madvise(pages, m_mappedSize, MADV_DONTDUMP) != 0)
            logLine(u"A password cannot be kept out of core dumps: %1"_qs.arg(qt_error_string(errno)));
        m_data = static_cast<char *>(pages);
        std::memcpy(m_data, bytes.constData(), static_cast<std::size_t>(m_size)); // the rest is zero
    }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;
    ~Locked()
    {
        ::explicit_bzero(m_data, m_mappedSize);
        ::munmap(m_data, m_mappedSize);
    }

    qsizetype size() const { return m_size; }
    const char *data() const { return m_data; }

private:
    qsizetype m_size = 0;
    std::size_t m_mappedSize = 0;
    char *m_data = nullptr;
};

SecretBytes::SecretBytes(QByteArray &&bytes)
{
    QByteArray taken = std::move(bytes);
    if (!taken.isEmpty())
        m_locked = std::make_shared<const Locked>(taken);
    wipe(taken);
}

qsizetype SecretBytes::size() const
{
    return m_locked ? m_locked->size() : 0;
}

const char *SecretBytes::data() const
{
    return m_locked ? m_locked->data() : "";
}

void wipe(QByteArray &bytes)
{
    if (bytes.isDetached())
        ::explicit_bzero(bytes.data(), static_cast<std::size_t>(bytes.size()));
}

} // namespace inkory
