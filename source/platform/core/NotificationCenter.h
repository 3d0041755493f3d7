#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <vector>

namespace inkory
{

/// One posted message: its name, the object it is about (compared by identity only), and what else the poster says.
struct Notification
{
    QString name;
    const void *object = nullptr;
    QVariantMap userInfo;
};

/// Named messages between objects that do not know each other. Signals and slots need a sender that is a QObject and
/// known at the time of connecting; here an observer subscribes to a name, from one object or from any.
///
/// Main thread only: observers are called within post(), in the order of their subscription.
class NotificationCenter
{
public:
    using Handler = std::function<void(const Notification &)>;

    /// The centre that the whole process shares.
    static NotificationCenter &defaultCenter();

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;

    /// Calls the handler for every notification of this name, from this object or, with nullptr, from any. The
    /// subscription ends with the observer; it is not owned. Subscribing again with the same three replaces the
    /// handler.
    void addObserver(QObject *observer, const QString &name, const void *object, Handler handler);

    /// Ends the observer's subscriptions to the name from this object (nullptr: the ones from any object).
    void removeObserver(QObject *observer, const QString &name, const void *object);

    /// Observers added during the delivery do not receive it; observers removed or destroyed during it do not either.
    void post(const QString &name, const void *object, const QVariantMap &userInfo = {});

private:
    struct Subscription
    {
        quint64 id = 0;
        QPointer<QObject> observer;
        QString name;
        const void *object = nullptr;
        Handler handler;
    };

    std::vector<Subscription> m_subscriptions;
    quint64 m_lastId = 0;
};

} // namespace inkory
