#include "platform/core/DurableFile.h"

#include "platform/core/DisplayText.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace inkory
{

namespace
{

constexpr int longestLinkChain = 40;

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(DurableFile)
};

/// What the system's error number means for somebody who wants to write the file at the path.
Error errorForPerson(int number, const QString &path)
{
    const QFileInfo info(path);
    switch (number) {
    case ENOSPC:
        return {Text::tr("There is no space left on the disk.")};
    case EDQUOT:
        return {Text::tr("Your share of the disk is used up.")};
    case EFBIG:
        return {Text::tr("The file is larger than is allowed here.")};
    case EROFS:
        return {Text::tr("The folder is read-only.")};
    case EACCES:
    case EPERM:
        return {Text::tr("You are not allowed to write to “%1”.").arg(displayable(path))};
    case ENOENT:
        return {Text::tr("The folder “%1” does not exist.").arg(displayable(info.path()))};
    case ENOTDIR:
        return {Text::tr("“%1” is not a folder.").arg(displayable(info.path()))};
    case EISDIR:
        return {Text::tr("“%1” is a folder.").arg(displayable(path))};
    case ENXIO:
        return {Text::tr("“%1” is not a regular file.").arg(displayable(path))};
    case ENAMETOOLONG:
        return {Text::tr("The file name “%1” is too long.").arg(displayable(info.fileName()))};
    case ELOOP:
        return {Text::tr("The link “%1” leads nowhere.").arg(displayable(path))};
    case EIO:
        return {Text::tr("The disk reported an error.")};
    default:
        return {Text::tr("The file could not be written: %1.").arg(qt_error_string(number))};
    }
}

/// A name that was not valid UTF-8 on the disk has replacement characters in its QString, and would be written
/// elsewhere.
bool canBeWrittenAsItIs(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar::Null) && !path.contains(QChar::ReplacementCharacter) &&
           QFile::decodeName(QFile::encodeName(path)) == path;
}

/// The file that the path leads to through symbolic links, whether it exists or not.
std::optional<QString> resolvedLinks(const QString &path)
{
    QString resolved = path;
    for (int length = 0; length < longestLinkChain; ++length) {
        const QFileInfo info(resolved);
        if (!info.isSymLink())
            return resolved;
        resolved = info.symLinkTarget();
    }
    return std::nullopt;
}

/// Looks before anything is written for what would make the writing fail, since QSaveFile tells no error number.
/// Answers 0 or the number.
int obstacle(const QString &path)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(path).path());
    if (::access(folder.constData(), F_OK) != 0)
        return errno;
    if (!QFileInfo(QFileInfo(path).path()).isDir())
        return ENOTDIR;

    struct stat existing = {};
    const QByteArray name = QFile::encodeName(path);
    if (::stat(name.constData(), &existing) != 0) {
        if (errno != ENOENT)
            return errno;
    } else {
        if (S_ISDIR(existing.st_mode))
            return EISDIR;
        if (!S_ISREG(existing.st_mode))
            return ENXIO; // renaming would put a file in the place of a device or pipe
        if (::access(name.constData(), W_OK) != 0)
            return errno;
    }
    return ::access(folder.constData(), W_OK | X_OK) != 0 ? errno : 0;
}

/// Labels and access lists, as far as the new file's system takes them.
void copyExtendedAttributes(const QByteArray &oldName, int newFile)
{
    const ssize_t listSize = ::listxattr(oldName.constData(), nullptr, 0);
    if (listSize <= 0)
        return;
    QByteArray list(listSize, 0);
    list.truncate(
        std::max<ssize_t>(0, ::listxattr(oldName.constData(), list.data(), static_cast<std::size_t>(listSize))));
    for (const QByteArray &name : list.split('\0')) {
        if (!name.startsWith("user.") && name != "system.posix_acl_access")
            continue;
        QByteArray value(std::max<ssize_t>(0, ::getxattr(oldName.constData(), name.constData(), nullptr, 0)), 0);
        const auto size = static_cast<std::size_t>(value.size());
        if (::getxattr(oldName.constData(), name.constData(), value.data(), size) == value.size())
            ::fsetxattr(newFile, name.constData(), value.constData(), size, 0);
    }
}

/// For an open file. A file system without modes refuses, and has nothing to keep.
bool setMode(int file, mode_t mode)
{
    return ::fchmod(file, mode) == 0 || errno == EPERM || errno == ENOSYS || errno == EOPNOTSUPP;
}

/// Makes the new file's owner, mode and extended attributes those of the old one, as far as the system allows.
bool takeOverAttributes(int newFile, const QString &path, unsigned modeIfNew)
{
    struct stat created = {};
    if (::fstat(newFile, &created) != 0)
        return false;
    struct stat old = {};
    const QByteArray name = QFile::encodeName(path);
    // QSaveFile creates the file with mode 0666, so the mode that it has shows what the umask leaves.
    if (::stat(name.constData(), &old) != 0)
        return setMode(newFile, created.st_mode & modeIfNew);

    mode_t mode = old.st_mode & 07777;
    if (old.st_uid != created.st_uid || old.st_gid != created.st_gid)
        if (::fchown(newFile, old.st_uid, old.st_gid) != 0 &&
            ::fchown(newFile, static_cast<uid_t>(-1), old.st_gid) != 0)
            mode &= 0777; // rights of another owner's or group's programs are not handed to this one's
    copyExtendedAttributes(name, newFile);
    return setMode(newFile, mode);
}

/// File systems that answer EINVAL have no such operation.
bool syncToDisk(int file)
{
    int outcome = 0;
    do {
        outcome = ::fsync(file);
    } while (outcome != 0 && errno == EINTR);
    return outcome == 0 || errno == EINVAL;
}

/// Until the folder is on the disk, a power cut can bring back the old file.
bool syncFolderToDisk(const QString &folder)
{
    const int file = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) {
        if (errno != EACCES)
            return false;
        ::sync(); // a folder that may be written but not read
        return true;
    }
    const bool synced = syncToDisk(file);
    const int number = errno;
    ::close(file);
    errno = number;
    return synced;
}

} // namespace

Result<void> replaceFileDurably(const QString &path, const QByteArray &bytes, unsigned modeIfNew)
{
    if (!canBeWrittenAsItIs(path))
        return Error{Text::tr("The file name “%1” cannot be written as it is.").arg(displayable(path))};
    const std::optional<QString> target = resolvedLinks(path);
    if (!target)
        return errorForPerson(ELOOP, path);
    if (const int number = obstacle(*target); number != 0)
        return errorForPerson(number, *target);

    // QSaveFile can report success for a short or buffered write on a full disk, hence each check. Unless it commits,
    // it removes what it has written.
    QSaveFile file(*target);
    errno = 0;
    const bool written = file.open(QIODevice::WriteOnly) && takeOverAttributes(file.handle(), *target, modeIfNew) &&
                         file.write(bytes) == bytes.size() && file.flush() && file.error() == QFileDevice::NoError &&
                         file.size() == bytes.size() && syncToDisk(file.handle());
    if (!written || !file.commit())
        return errorForPerson(errno, *target);
    if (!syncFolderToDisk(QFileInfo(*target).path()))
        return errorForPerson(errno, *target);
    return {};
}

} // namespace inkory
