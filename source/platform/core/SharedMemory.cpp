#include "platform/core/SharedMemory.h"

#include "platform/core/Log.h"

#include <QCoreApplication>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <limits>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace inkory
{

namespace
{

/// Without these, the other side could cut off pages under our hands, and touching them would kill us.
constexpr int neededSeals = F_SEAL_SHRINK | F_SEAL_GROW;

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(SharedMemory)
};

Error memoryError(qint64 size)
{
    logLine(u"%1 bytes of shared memory cannot be had: %2"_qs.arg(QString::number(size), qt_error_string(errno)));
    return {Text::tr("There is not enough memory.")};
}

/// For memory and files that came from elsewhere.
Error mappingError(qint64 size, const QString &cause)
{
    logLine(u"%1 bytes cannot be mapped: %2"_qs.arg(QString::number(size), cause));
    return {Text::tr("The file could not be read.")};
}

/// The size of what the descriptor stands for, or -1 and errno.
qint64 sizeOf(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 ? status.st_size : -1;
}

void *mapped(qint64 size, int protection, int flags, int descriptor)
{
    void *data = ::mmap(nullptr, static_cast<std::size_t>(size), protection, flags, descriptor, 0);
    return data == MAP_FAILED ? nullptr : data;
}

/// 0 for an empty image, and for one that is larger than any memory.
qint64 bytesPerLine(QSize size, QImage::Format format)
{
    if (size.isEmpty())
        return 0;
    const qint64 bits = QImage(1, 1, format).depth();
    const qint64 line = (size.width() * bits + 31) / 32 * 4;
    return line <= std::numeric_limits<qint64>::max() / size.height() ? line : 0;
}

} // namespace

Result<std::shared_ptr<SharedMemory>> SharedMemory::create(qint64 size)
{
    const std::shared_ptr<SharedMemory> memory(new SharedMemory);
    memory->m_size = std::max<qint64>(size, 1);
    memory->m_descriptor = ::memfd_create("inkory", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (memory->m_descriptor < 0 || ::ftruncate(memory->m_descriptor, memory->m_size) != 0 ||
        ::fcntl(memory->m_descriptor, F_ADD_SEALS, neededSeals | F_SEAL_SEAL) != 0)
        return memoryError(size);
    memory->m_data =
        static_cast<uchar *>(mapped(memory->m_size, PROT_READ | PROT_WRITE, MAP_SHARED, memory->m_descriptor));
    if (!memory->m_data)
        return memoryError(size);
    return memory;
}

Result<std::shared_ptr<SharedMemory>> SharedMemory::open(int descriptor, qint64 size)
{
    const int seals = ::fcntl(descriptor, F_GET_SEALS);
    if (seals < 0 || (seals & neededSeals) != neededSeals)
        return mappingError(size, u"the memory is not sealed"_qs);
    if (size < 1 || sizeOf(descriptor) != size)
        return mappingError(size, u"the memory has another size"_qs);

    const std::shared_ptr<SharedMemory> memory(new SharedMemory);
    memory->m_size = size;
    // All of it is going to be used, and fetching it page by page takes several times as long.
    memory->m_data = static_cast<uchar *>(mapped(size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, descriptor));
    if (!memory->m_data)
        return mappingError(size, qt_error_string(errno));
    return memory;
}

SharedMemory::~SharedMemory()
{
    if (m_data)
        ::munmap(m_data, static_cast<std::size_t>(m_size));
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

qint64 imageBytes(QSize size, QImage::Format format)
{
    return bytesPerLine(size, format) * size.height();
}

QImage imageInMemory(const std::shared_ptr<SharedMemory> &memory, QSize size, QImage::Format format)
{
    using Keeper = std::shared_ptr<SharedMemory>;
    const qint64 bytes = imageBytes(size, format);
    if (bytes == 0 || bytes > memory->size())
        return {};
    auto keeper = std::make_unique<Keeper>(memory);
    const QImage image(
        memory->data(), size.width(), size.height(), bytesPerLine(size, format), format,
        [](void *kept) { delete static_cast<Keeper *>(kept); }, keeper.get());
    if (!image.isNull()) // then the function is called when its last copy goes; otherwise never
        static_cast<void>(keeper.release());
    return image;
}

Result<std::shared_ptr<MappedFile>> MappedFile::map(int descriptor, qint64 size)
{
    if (size < 1 || sizeOf(descriptor) < size)
        return mappingError(size, u"the file is shorter"_qs);

    const std::shared_ptr<MappedFile> file(new MappedFile);
    file->m_size = size;
    file->m_data = mapped(size, PROT_READ, MAP_PRIVATE, descriptor);
    if (!file->m_data)
        return mappingError(size, qt_error_string(errno));
    return file;
}

MappedFile::~MappedFile()
{
    if (m_data)
        ::munmap(m_data, static_cast<std::size_t>(m_size));
}

QByteArray MappedFile::bytes() const
{
    return QByteArray::fromRawData(static_cast<const char *>(m_data), m_size);
}

void MappedFile::forgetWhatWasRead() const
{
    ::madvise(m_data, static_cast<std::size_t>(m_size), MADV_DONTNEED); // only advice: nothing depends on it
}

} // namespace inkory
