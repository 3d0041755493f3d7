#pragma once

#include "platform/core/Result.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <optional>

namespace inkory
{

/// The user's persistent settings: names with a boolean, a number, a string, a list of strings or a URL each. QSettings
/// cannot be used: on a full disk its sync() destroys the settings file and reports success. Here the file is replaced
/// in one step or not at all, and a failed write keeps every value in memory for the next try.
///
/// Main thread only. A file that is missing or unreadable counts as empty (with a log line when it is unreadable, or
/// larger than 4 MB; the bad file is moved out of the way, to the name with ".damaged" appended). What the file holds
/// beyond the kinds above stays in it.
class UserDefaults
{
public:
    /// The settings of the program, in "settings.json" of QStandardPaths::AppConfigLocation.
    static UserDefaults &standard();

    /// Settings in a file of the caller's choice.
    explicit UserDefaults(QString filePath);

    /// For tests: makes standard() forget what it read and use another file from now on. References to it stay valid,
    /// and registered defaults stay registered.
    static void setStandardFilePath(const QString &filePath);

    /// Values that hold where the user has set none. They are never written to the file.
    void registerDefaults(const QVariantMap &defaults);

    /// Whether the user's own settings (not the registered ones) hold the name.
    bool hasStoredValue(const QString &name) const;

    /// False, 0, an empty string or list, or no URL where nothing is stored or the stored value is of another kind.
    bool boolean(const QString &name) const;
    double number(const QString &name) const;
    QString string(const QString &name) const;
    QStringList stringList(const QString &name) const;
    std::optional<QUrl> url(const QString &name) const;

    /// The user's own list of strings; nothing where none is stored or the stored value is of another kind.
    std::optional<QStringList> storedStringList(const QString &name) const;

    void setBoolean(const QString &name, bool value);
    /// Infinities and NaN have no place in the file: they are logged and not set.
    void setNumber(const QString &name, double value);
    void setString(const QString &name, const QString &value);
    void setStringList(const QString &name, const QStringList &value);
    /// Stored as its fully percent-encoded string.
    void setUrl(const QString &name, const QUrl &value);
    void remove(const QString &name);

    /// Takes over what another process has written to the file meanwhile. Values that are set but not written yet stay;
    /// a file that is missing or unreadable changes nothing.
    void refresh();

    /// Writes what changed to the file, durably; values that another process has changed in it meanwhile are taken over
    /// from it. A failure is logged and answered; the values stay set. Does nothing when nothing was changed.
    Result<void> synchronize();

private:
    QVariant value(const QString &name) const;
    std::optional<QVariantMap> storedInFileWithChanges() const;
    void setValue(const QString &name, const QVariant &value);

    QString m_filePath;
    QVariantMap m_registered;
    QVariantMap m_stored;
    QSet<QString> m_changedNames;
};

} // namespace inkory
