#pragma once

#include <QString>

#include <functional>

namespace inkory
{

/// Writes one line "2026-01-31 12:00:00.123 inkory[pid] message" to the process's standard error. Line breaks in the
/// message are kept. May be called from any thread.
void logLine(const QString &message);

/// For tests: while set, every message is also handed (without its time stamp) to this function, on the thread that
/// logs. An empty function ends that.
void setLogListener(std::function<void(const QString &)> listener);

} // namespace inkory
