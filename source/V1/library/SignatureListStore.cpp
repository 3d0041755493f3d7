#include "V1/library/SignatureListStore.h"

#include "platform/core/DurableFile.h"
#include "platform/core/Log.h"
#include "platform/core/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>

namespace inkory
{

namespace
{

const QString urlListKey = QStringLiteral("IMAGE_STAMP_URL_LIST");
// The spelling is the one that is stored on people's disks.
const QString migrationDoneKey = QStringLiteral("STAMPS_SANDBOX_MIGRAION_DONE");
const QString copyIsNewerKey = QStringLiteral("NEWER_THAN_SETTINGS");

constexpr qint64 largestCopyBytes = 16LL * 1024 * 1024;
constexpr unsigned onlyForTheOwner = 0600;
constexpr int lockPatienceMilliseconds = 80; // the window stands still meanwhile

QByteArray readSmallFile(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || file.size() > largestCopyBytes || !file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

/// `current` with what has been added and removed between `before` and `after`.
QStringList withChange(const QStringList &current, const QStringList &before, const QStringList &after)
{
    if (current == before)
        return after;
    QStringList merged;
    for (const QString &url : current) {
        if (after.contains(url) || !before.contains(url))
            merged.append(url);
    }
    for (const QString &url : after) {
        if (!before.contains(url))
            merged.append(url);
    }
    merged.removeDuplicates();
    return merged;
}

} // namespace

std::optional<SignatureListStore::Copy> SignatureListStore::copyFromBytes(const QByteArray &bytes)
{
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    if (!object.value(urlListKey).isArray() || !object.value(migrationDoneKey).isBool())
        return std::nullopt;
    Copy copy{.contents = {.urls = {}, .migrationDone = object.value(migrationDoneKey).toBool()},
              .isNewerThanSettings = object.value(copyIsNewerKey).toBool()};
    const QJsonArray urls = object.value(urlListKey).toArray();
    for (const auto &url : urls) {
        if (const QString key = url.toString(); !key.isEmpty())
            copy.contents.urls.append(key);
    }
    return copy;
}

QByteArray SignatureListStore::bytesOfCopy(const Copy &copy)
{
    const QJsonObject object{{urlListKey, QJsonArray::fromStringList(copy.contents.urls)},
                             {migrationDoneKey, copy.contents.migrationDone},
                             {copyIsNewerKey, copy.isNewerThanSettings}};
    return QJsonDocument(object).toJson();
}

std::optional<SignatureListStore::Copy> SignatureListStore::readCopy() const
{
    if (m_copyPath.isEmpty() || !QFileInfo::exists(m_copyPath))
        return std::nullopt;
    const std::optional<Copy> copy = copyFromBytes(readSmallFile(m_copyPath));
    if (!copy)
        logLine(QStringLiteral("Unable to read the list of signatures in '%1'").arg(m_copyPath));
    return copy;
}

std::optional<SignatureListStore::Contents> SignatureListStore::read() const
{
    const std::optional<Copy> copy = readCopy();
    UserDefaults &defaults = UserDefaults::standard();
    defaults.refresh();
    const auto urls = defaults.storedStringList(urlListKey);
    if (copy && (copy->isNewerThanSettings || !urls))
        return copy->contents;
    return urls ? std::optional(Contents{*urls, defaults.boolean(migrationDoneKey)}) : std::nullopt;
}

Result<void> SignatureListStore::writeChange(const QStringList &before, QStringList &urls) const
{
    QLockFile lock(m_copyPath + QStringLiteral(".lock"));
    if (!m_copyPath.isEmpty() && !lock.tryLock(lockPatienceMilliseconds)) // better than to lose the change
        logLine(QStringLiteral("The list of signatures is changed without the lock '%1'").arg(lock.fileName()));
    if (const auto current = read())
        urls = withChange(current->urls, before, urls);
    return write({urls, true});
}

Result<void> SignatureListStore::write(const Contents &contents) const
{
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setStringList(urlListKey, contents.urls);
    defaults.setBoolean(migrationDoneKey, contents.migrationDone);
    const auto settingsWritten = defaults.synchronize();
    if (m_copyPath.isEmpty())
        return settingsWritten;

    const QByteArray bytes = bytesOfCopy({.contents = contents, .isNewerThanSettings = !settingsWritten});
    if (readSmallFile(m_copyPath) == bytes) // a start that changes nothing writes nothing
        return {};
    const auto copyWritten = replaceFileDurably(m_copyPath, bytes, onlyForTheOwner);
    if (copyWritten)
        return {};
    logLine(QStringLiteral("Unable to save the list of signatures to '%1'. error:\n%2")
                .arg(m_copyPath, copyWritten.error().message));
    return settingsWritten;
}

} // namespace inkory
