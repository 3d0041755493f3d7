#include "platform/core/NotificationCenter.h"

#include <algorithm>
#include <utility>

namespace inkory
{

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(QObject *observer, const QString &name, const void *object, Handler handler)
{
    Q_ASSERT(observer && handler);
    std::erase_if(m_subscriptions, [](const Subscription &each) { return each.observer.isNull(); });
    const auto existing = std::find_if(m_subscriptions.begin(), m_subscriptions.end(), [&](const Subscription &each) {
        return each.observer == observer && each.name == name && each.object == object;
    });
    if (existing != m_subscriptions.end())
        existing->handler = std::move(handler);
    else
        m_subscriptions.push_back({++m_lastId, observer, name, object, std::move(handler)});
}

void NotificationCenter::removeObserver(QObject *observer, const QString &name, const void *object)
{
    std::erase_if(m_subscriptions, [&](const Subscription &each) {
        return each.observer.isNull() || (each.observer == observer && each.name == name && each.object == object);
    });
}

void NotificationCenter::post(const QString &name, const void *object, const QVariantMap &userInfo)
{
    std::vector<quint64> receivers;
    for (const Subscription &each : m_subscriptions)
        if (each.name == name && (each.object == nullptr || each.object == object))
            receivers.push_back(each.id);

    // Handlers may subscribe, unsubscribe, destroy observers and post, so each receiver is looked up anew, by its
    // number.
    const Notification notification{name, object, userInfo};
    for (const quint64 id : receivers) {
        const auto found = std::find_if(m_subscriptions.begin(), m_subscriptions.end(),
                                        [id](const Subscription &each) { return each.id == id; });
        if (found == m_subscriptions.end() || found->observer.isNull())
            continue;
        const Handler handler = found->handler;
        handler(notification);
    }
}

} // namespace inkory
