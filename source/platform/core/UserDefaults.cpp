#include "platform/core/UserDefaults.h"

#include "platform/core/DurableFile.h"
#include "platform/core/Log.h"
#include "platform/core/SettingsFormat.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cmath>
#include <cstdio>

namespace inkory
{

namespace
{

constexpr unsigned ownerOnly = 0600;
constexpr qint64 mostBytes = 4LL * 1024 * 1024;

/// The value in its C++ type, or that type's default where it is of another kind.
template <class T> T valueOfKind(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<T>() ? value.value<T>() : T();
}

enum class FileState { Missing, Readable, Damaged };

FileState readSettings(const QString &filePath, QVariantMap &values)
{
    const QFileInfo info(filePath);
    if (!info.exists() && !info.isSymLink())
        return FileState::Missing;
    QFile file(filePath);
    if (!info.isFile() || info.size() > mostBytes || !file.open(QIODevice::ReadOnly))
        return FileState::Damaged;
    const std::optional<QVariantMap> stored = settingsFromBytes(file.readAll());
    if (file.error() != QFileDevice::NoError || !stored)
        return FileState::Damaged;
    values = *stored;
    return FileState::Readable;
}

/// Renames instead of copying, so that it works for what cannot be read, and on a full disk.
void moveOutOfTheWay(const QString &filePath)
{
    const QString keptPath = filePath + u".damaged"_qs;
    const bool moved =
        std::rename(QFile::encodeName(filePath).constData(), QFile::encodeName(keptPath).constData()) == 0;
    logLine(u"The settings in %1 cannot be read and count as empty; %2"_qs.arg(
        filePath,
        moved ? u"the file is now %1"_qs.arg(keptPath) : u"the file could not be moved to %1"_qs.arg(keptPath)));
}

/// The one instance behind UserDefaults::standard(), and the file that tests have set for it.
UserDefaults &standardInstance(const QString &filePath = {})
{
    static UserDefaults instance(
        filePath.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + u"/settings.json"_qs
                           : filePath);
    return instance;
}

} // namespace

UserDefaults &UserDefaults::standard()
{
    return standardInstance();
}

void UserDefaults::setStandardFilePath(const QString &filePath)
{
    UserDefaults &instance = standardInstance(filePath);
    const QVariantMap registered = instance.m_registered;
    instance = UserDefaults(filePath);
    instance.m_registered = registered;
}

UserDefaults::UserDefaults(QString filePath) : m_filePath(std::move(filePath))
{
    if (readSettings(m_filePath, m_stored) == FileState::Damaged)
        moveOutOfTheWay(m_filePath);
}

void UserDefaults::registerDefaults(const QVariantMap &defaults)
{
    m_registered.insert(normalizedSettings(defaults));
}

bool UserDefaults::hasStoredValue(const QString &name) const
{
    return m_stored.contains(name);
}

bool UserDefaults::boolean(const QString &name) const
{
    return valueOfKind<bool>(value(name));
}

double UserDefaults::number(const QString &name) const
{
    return valueOfKind<double>(value(name));
}

QString UserDefaults::string(const QString &name) const
{
    return valueOfKind<QString>(value(name));
}

QStringList UserDefaults::stringList(const QString &name) const
{
    return valueOfKind<QStringList>(value(name));
}

std::optional<QStringList> UserDefaults::storedStringList(const QString &name) const
{
    const QVariant stored = m_stored.value(name);
    return stored.typeId() == QMetaType::QStringList ? std::optional(stored.toStringList()) : std::nullopt;
}

std::optional<QUrl> UserDefaults::url(const QString &name) const
{
    const QUrl url(string(name), QUrl::StrictMode);
    return url.isValid() && !url.isEmpty() ? std::optional(url) : std::nullopt;
}

void UserDefaults::setBoolean(const QString &name, bool value)
{
    setValue(name, value);
}

void UserDefaults::setNumber(const QString &name, double value)
{
    if (std::isfinite(value))
        setValue(name, value);
    else
        logLine(u"The setting %1 was not changed to a number that is not finite"_qs.arg(name));
}

void UserDefaults::setString(const QString &name, const QString &value)
{
    setValue(name, value);
}

void UserDefaults::setStringList(const QString &name, const QStringList &value)
{
    setValue(name, value);
}

void UserDefaults::setUrl(const QString &name, const QUrl &value)
{
    setValue(name, normalizedSetting(value));
}

void UserDefaults::remove(const QString &name)
{
    if (m_stored.remove(name) > 0)
        m_changedNames.insert(name);
}

std::optional<QVariantMap> UserDefaults::storedInFileWithChanges() const
{
    QVariantMap merged;
    if (readSettings(m_filePath, merged) != FileState::Readable)
        return std::nullopt;
    for (const QString &name : m_changedNames) {
        merged.remove(name);
        if (m_stored.contains(name))
            merged.insert(name, m_stored.value(name));
    }
    return merged;
}

void UserDefaults::refresh()
{
    m_stored = storedInFileWithChanges().value_or(m_stored);
}

Result<void> UserDefaults::synchronize()
{
    if (m_changedNames.isEmpty())
        return {};

    const QVariantMap merged = storedInFileWithChanges().value_or(m_stored);
    QDir().mkpath(QFileInfo(m_filePath).path());
    const Result<void> written = replaceFileDurably(m_filePath, settingsToBytes(merged), ownerOnly);
    if (!written) {
        logLine(u"The settings could not be written to %1: %2"_qs.arg(m_filePath, written.error().message));
        return written;
    }
    m_stored = merged;
    m_changedNames.clear();
    return {};
}

QVariant UserDefaults::value(const QString &name) const
{
    const auto stored = m_stored.constFind(name);
    return stored != m_stored.constEnd() ? *stored : m_registered.value(name);
}

void UserDefaults::setValue(const QString &name, const QVariant &value)
{
    const auto stored = m_stored.constFind(name);
    // QVariant's comparison takes true for equal to 1, so the kinds are compared, too.
    if (stored != m_stored.constEnd() && stored->metaType() == value.metaType() && *stored == value)
        return;
    m_stored.insert(name, value);
    m_changedNames.insert(name);
}

} // namespace inkory
