#pragma once

#include <QtGlobal>

#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include <systemd/sd-bus.h>

// What the files share that write and read the engine's messages.

namespace inkory
{

inline bool appended(int status)
{
    return status >= 0;
}

// A container of fixed-size values. Types: 'd' for double, 'i' for qint32, 'q' for quint16, 'x' for qint64, 'y' for
// bytes.
template <class T> bool appendArray(sd_bus_message *message, char type, const std::vector<T> &values)
{
    return appended(sd_bus_message_append_array(message, type, values.data(), values.size() * sizeof(T)));
}

template <class T> bool readArray(sd_bus_message *message, char type, std::span<const T> &values)
{
    const void *data = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(message, type, &data, &size) < 0)
        return false;
    values = {static_cast<const T *>(data), size / sizeof(T)};
    return true;
}

inline bool isMessageOf(sd_bus_message *message, const char *signature)
{
    return sd_bus_message_has_signature(message, signature) > 0;
}

template <class Enum> std::optional<Enum> enumFromInt(qint32 value)
{
    if (value < 0 || value > static_cast<qint32>(Enum::Last))
        return std::nullopt;
    return static_cast<Enum>(value);
}

inline bool isWithin(double value, double limit)
{
    return std::isfinite(value) && std::abs(value) <= limit;
}

} // namespace inkory
