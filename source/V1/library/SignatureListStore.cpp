#include "V1/library/SignatureListStore.h"

#include "platform/core/DurableFile.h"
#include "platform/core/Log.h"
#include "platform/core/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace inkory
{

namespace
{

const QString urlListKey = QStringLiteral("IMAGE_STAMP_URL_LIST");
// The spelling is the one that is stored on people's disks.
const QString migrationDoneKey = QStringLiteral("STAMPS_SANDBOX_MIGRAION_DONE");
const QString copyIsNewerKey = QStringLiteral("NEWER_THAN_SETTINGS");

constexpr qint64 largestCopyBytes = 16 * 1024 * 1024;
constexpr unsigned onlyForTheOwner = 0600;

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
    for (const QJsonValue &url : urls)
        copy.contents.urls.append(url.toString());
    return copy;
}

SignatureListStore::Contents SignatureListStore::read() const
{
    const Copy copy = readCopy();
    const UserDefaults &defaults = UserDefaults::standard();
    if (copy.readable && (copy.newerThanSettings || !defaults.hasStoredValue(urlListKey)))
        return copy.contents;
    return {defaults.stringList(urlListKey), defaults.boolean(migrationDoneKey)};
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
