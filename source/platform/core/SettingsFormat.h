#pragma once

#include <QByteArray>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace inkory
{

/// A setting in the one form of its kind, however a JSON reader or a caller spells it: numbers as double, URLs as
/// encoded strings, lists of strings as QStringList. Everything else is passed through.
QVariant normalizedSetting(const QVariant &value);
QVariantMap normalizedSettings(QVariantMap values);

/// The settings that the bytes of their file hold, normalized; nothing where it is no such file.
std::optional<QVariantMap> settingsFromBytes(const QByteArray &bytes);

QByteArray settingsToBytes(const QVariantMap &values);

} // namespace inkory
