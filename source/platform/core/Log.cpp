#include "platform/core/Log.h"

#include <QCoreApplication>
#include <QDateTime>

#include <cstdio>
#include <mutex>
#include <utility>

namespace inkory
{

namespace
{

struct Listening
{
    std::mutex mutex;
    std::function<void(const QString &)> listener;
};

Listening &listening()
{
    static Listening instance;
    return instance;
}

} // namespace

void logLine(const QString &message)
{
    const QString now = QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss.zzz"_qs);
    const QByteArray line =
        u"%1 inkory[%2] %3\n"_qs.arg(now, QString::number(QCoreApplication::applicationPid()), message).toUtf8();
    std::function<void(const QString &)> listener;
    {
        const std::lock_guard lock(listening().mutex);
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
        listener = listening().listener;
    }
    // Called without the lock: a listener may log, too.
    if (listener)
        listener(message);
}

void setLogListener(std::function<void(const QString &)> listener)
{
    const std::lock_guard lock(listening().mutex);
    listening().listener = std::move(listener);
}

} // namespace inkory
