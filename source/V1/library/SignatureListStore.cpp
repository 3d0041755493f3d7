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

QByteArray copyBytes(const SignatureListStore::Contents &contents, bool copyIsNewer)
{
    const QJsonObject object{{urlListKey, QJsonArray::fromStringList(contents.urls)},
                             {migrationDoneKey, contents.migrationDone},
                             {copyIsNewerKey, copyIsNewer}};
    return QJsonDocument(object).toJson();
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

struct SignatureListStore::Copy
{
    bool readable = false;
    bool newerThanSettings = false;
    Contents contents;
};

SignatureListStore::Copy SignatureListStore::readCopy() const
{
    Copy copy;
    if (m_copyPath.isEmpty() || !QFileInfo::exists(m_copyPath))
        return copy;
    const QJsonObject object = QJsonDocument::fromJson(readSmallFile(m_copyPath)).object();
    copy.readable = object.value(urlListKey).isArray() && object.value(migrationDoneKey).isBool();
    if (!copy.readable) {
        logLine(QStringLiteral("Unable to read the list of signatures in '%1'").arg(m_copyPath));
        return copy;
    }
    copy.newerThanSettings = object.value(copyIsNewerKey).toBool();
    copy.contents.migrationDone = object.value(migrationDoneKey).toBool();
    const QJsonArray urls = object.value(urlListKey).toArray();
    for (const auto &url : urls)
        copy.contents.urls.append(url.toString());
    return copy;
}

std::optional<SignatureListStore::Contents> SignatureListStore::read() const
{
    const Copy copy = readCopy();
    UserDefaults &defaults = UserDefaults::standard();
    defaults.refresh();
    const auto urls = defaults.storedStringList(urlListKey);
    if (copy.readable && (copy.newerThanSettings || !urls))
        return copy.contents;
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

    const QByteArray bytes = copyBytes(contents, !settingsWritten);
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
