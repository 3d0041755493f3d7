#include "platform/core/FileIdentity.h"

#include <QFile>

#include <sys/stat.h>

namespace inkory
{

std::optional<FileIdentity> FileIdentity::of(const QString &path)
{
    struct stat status = {};
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    constexpr qint64 nanoseconds = 1'000'000'000;
    return FileIdentity{status.st_dev, status.st_ino, status.st_size,
                        status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec,
                        status.st_ctim.tv_sec * nanoseconds + status.st_ctim.tv_nsec};
}

} // namespace inkory
