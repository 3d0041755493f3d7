#include "platform/core/SettingsFormat.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QUrl>

#include <algorithm>

namespace inkory
{

QVariant normalizedSetting(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
        return value.toDouble();
    case QMetaType::QUrl:
        return value.toUrl().toString(QUrl::FullyEncoded);
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        const auto isString = [](const QVariant &each) { return each.typeId() == QMetaType::QString; };
        return std::all_of(list.begin(), list.end(), isString) ? QVariant(value.toStringList()) : value;
    }
    default:
        return value;
    }
}

QVariantMap normalizedSettings(QVariantMap values)
{
    for (QVariant &each : values)
        each = normalizedSetting(each);
    return values;
}

std::optional<QVariantMap> settingsFromBytes(const QByteArray &bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    return document.isObject() ? std::optional(normalizedSettings(document.object().toVariantMap())) : std::nullopt;
}

QByteArray settingsToBytes(const QVariantMap &values)
{
    return QJsonDocument(QJsonObject::fromVariantMap(values)).toJson();
}

} // namespace inkory
