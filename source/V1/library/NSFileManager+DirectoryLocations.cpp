#include "V1/library/NSFileManager+DirectoryLocations.h"

#include "platform/core/DisplayText.h"
#include "platform/core/Log.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <sys/stat.h>

namespace inkory
{

namespace
{

QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domainMask)
{
    if (directory != SearchPathDirectory::ApplicationSupport || domainMask != SearchPathDomain::User)
        return {};
    const QString path = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return path.isEmpty() ? QStringList() : QStringList(path);
}

} // namespace

Result<void> createPrivateDirectory(const QString &path)
{
    if (QFileInfo(path).isDir())
        return {};
    const QString parent = QFileInfo(path).path();
    if (parent != path) {
        if (auto made = createPrivateDirectory(parent); !made)
            return made;
    }
    constexpr mode_t onlyForTheOwner = 0700;
    if (::mkdir(QFile::encodeName(path).constData(), onlyForTheOwner) == 0)
        return {};
    const QString reason = qt_error_string(errno);
    if (QFileInfo(path).isDir()) // another process was faster
        return {};
    return Error{QCoreApplication::translate("DirectoryLocations", "The folder “%1” cannot be created (%2).")
                     .arg(displayable(path), reason)};
}

Result<QString> findOrCreateDirectory(SearchPathDirectory directory, SearchPathDomain domainMask,
                                      const QString &pathComponent)
{
    const QStringList paths = searchPaths(directory, domainMask);
    if (paths.isEmpty())
        return Error{QCoreApplication::translate("Errors", "No path found for directory in domain.")};
    QString path = paths.constFirst();
    if (!pathComponent.isEmpty())
        path += QLatin1Char('/') + pathComponent;
    if (const auto made = createPrivateDirectory(path); !made)
        return made.error();
    return path;
}

Result<QString> applicationSupportDirectory()
{
    auto found = findOrCreateDirectory(SearchPathDirectory::ApplicationSupport, SearchPathDomain::User, executableName);
    if (!found)
        logLine(
            QStringLiteral("Unable to find or create application support directory:\n%1").arg(found.error().message));
    return found;
}

} // namespace inkory
