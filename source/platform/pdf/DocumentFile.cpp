#include "platform/pdf/DocumentFile.h"

#include "platform/core/DisplayText.h"

#include "platform/pdf/EngineValues.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace inkory
{

namespace
{

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(DocumentFile)
};

QString systemMessage(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

Error tooLarge(const QString &name)
{
    return {Text::tr("\"%1\" is too large: files of up to 2 GB can be opened. Split it, and open a part.").arg(name)};
}

Error openingError(int code, const QString &name)
{
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        return {Text::tr("\"%1\" does not exist.").arg(name)};
    case EACCES:
    case EPERM:
        return {Text::tr("You are not allowed to read \"%1\".").arg(name)};
    case EISDIR:
        return {Text::tr("\"%1\" is a folder, not a document.").arg(name)};
    case ENXIO: // a socket
        return {Text::tr("\"%1\" is not a file that can be opened.").arg(name)};
    default:
        return {Text::tr("\"%1\" cannot be read: %2.").arg(name, systemMessage(code))};
    }
}

Error copyingError(int code, const QString &name)
{
    if (code == ENOSPC || code == EDQUOT)
        return {Text::tr("There is not enough space left in your home folder to open \"%1\".").arg(name)};
    return {Text::tr("\"%1\" could not be copied for reading: %2.").arg(name, systemMessage(code))};
}

// Whether the two describe the same content, as far as the file system tells.
bool sameContent(const struct stat &a, const struct stat &b)
{
    return a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// Answers the folder, which exists then (what is in it is for the owner alone); 0 or the error code.
int makeCopiesFolder(QString &folder)
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    if (!QDir().mkpath(state))
        return QFileInfo::exists(state) ? ENOTDIR : EACCES;
    folder = state;
    for (const QString &part : {QStringLiteral("/inkory"), QStringLiteral("/documents")}) {
        folder += part;
        if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0 && errno != EEXIST)
            return errno;
        if (!QFileInfo(folder).isDir())
            return ENOTDIR;
    }
    return 0;
}

int writeAll(int to, const char *data, ssize_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(to, data, static_cast<std::size_t>(size));
        if (written < 0 && errno != EINTR)
            return errno;
        data += std::max<ssize_t>(written, 0);
        size -= std::max<ssize_t>(written, 0);
    }
    return 0;
}

int copyByReading(int from, off_t offset, int to)
{
    std::vector<char> block(1 << 20);
    for (;;) {
        const ssize_t got = ::pread(from, block.data(), block.size(), offset);
        if (got == 0)
            return 0;
        if (got < 0 && errno != EINTR)
            return errno;
        if (const int code = writeAll(to, block.data(), got))
            return code;
        offset += std::max<ssize_t>(got, 0);
    }
}

// Puts the whole content of one file into the other, which is emptied first; 0 or the error code.
int copyContent(int from, int to)
{
    if (::ftruncate(to, 0) != 0 || ::lseek(to, 0, SEEK_SET) != 0)
        return errno;
    if (::ioctl(to, FICLONE, from) == 0)
        return 0;
    off_t offset = 0;
    for (;;) {
        const ssize_t copied = ::copy_file_range(from, &offset, to, nullptr, 1 << 30, 0);
        if (copied > 0 || (copied < 0 && errno == EINTR))
            continue;
        if (copied < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EIO))
            return errno;
        // The end, or a pair of file systems between which the kernel does not copy: reading on finds out.
        return copyByReading(from, offset, to);
    }
}

} // namespace

Result<std::shared_ptr<DocumentFile>> DocumentFile::open(const QString &path)
{
    const QString name = displayable(QFileInfo(path).fileName().isEmpty() ? path : QFileInfo(path).fileName());
    std::shared_ptr<DocumentFile> file(new DocumentFile);
    file->m_name = name;
    // Without O_NONBLOCK, opening a pipe would wait until somebody writes to it.
    file->m_original.descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat status = {};
    if (file->m_original.descriptor < 0 || ::fstat(file->m_original.descriptor, &status) != 0)
        return openingError(errno, name);
    if (S_ISDIR(status.st_mode))
        return openingError(EISDIR, name);
    if (!S_ISREG(status.st_mode))
        return openingError(ENXIO, name);
    if (status.st_size == 0)
        return Error{Text::tr("This file is empty. Copy or download it again.")};
    if (status.st_size > maxFileSize)
        return tooLarge(name);
    file->m_original.size = status.st_size;
    return file;
}

DocumentFile::~DocumentFile()
{
    removePrivateCopy();
    for (const Content &content : {m_original, m_copy}) {
        if (content.descriptor >= 0)
            ::close(content.descriptor);
    }
}

void DocumentFile::removePrivateCopy()
{
    const std::lock_guard lock(m_copying);
    if (!m_copyPath.isEmpty())
        ::unlink(QFile::encodeName(m_copyPath).constData());
    m_copyPath.clear();
}

Result<void> DocumentFile::makePrivateCopy()
{
    const std::lock_guard lock(m_copying);
    if (hasPrivateCopy())
        return {};
    QString folder;
    if (const int code = makeCopiesFolder(folder))
        return copyingError(code, m_name);
    const QString path =
        QStringLiteral("%1/%2-%3.pdf")
            .arg(folder, QString::number(::getpid()), QString::number(QRandomGenerator::system()->generate64(), 16));
    const int copy =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (copy < 0)
        return copyingError(errno, m_name);
    const Result<qint64> size = fill(copy);
    // Who is given this one can read only.
    const int readable = size ? ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW) : -1;
    const int code = errno;
    ::close(copy);
    if (readable < 0) {
        ::unlink(QFile::encodeName(path).constData());
        return size ? copyingError(code, m_name) : size.error();
    }
    m_copyPath = path;
    m_copy = {readable, *size};
    m_hasCopy = true;
    return {};
}

// Answers the copy's size.
Result<qint64> DocumentFile::fill(int copy) const
{
    struct stat before = {};
    struct stat after = {};
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (::fstat(m_original.descriptor, &before) != 0)
            return copyingError(errno, m_name);
        if (const int code = copyContent(m_original.descriptor, copy))
            return copyingError(code, m_name);
        if (::fstat(m_original.descriptor, &after) != 0)
            return copyingError(errno, m_name);
        if (sameContent(before, after))
            break;
    }
    struct stat copied = {};
    if (::fstat(copy, &copied) != 0)
        return copyingError(errno, m_name);
    if (!sameContent(before, after) || copied.st_size != after.st_size)
        return Error{Text::tr("\"%1\" is being changed by another program.").arg(m_name)};
    if (copied.st_size == 0)
        return Error{Text::tr("This file is empty. Copy or download it again.")};
    if (copied.st_size > maxFileSize)
        return tooLarge(m_name);
    return qint64(copied.st_size);
}

} // namespace inkory
