#include "platform/core/NotificationCenter.h"

#include <gtest/gtest.h>

#include <memory>

using namespace inkory;

TEST(NotificationCenter, DestroyedObserversHearNothingAlsoDuringTheDelivery)
{
    const QString name = u"CHANGED"_qs;
    int heard = 0;
    const auto count = [&](const Notification &) { ++heard; };
    NotificationCenter center;
    QObject observer;
    auto late = std::make_unique<QObject>();
    {
        QObject early;
        center.addObserver(&early, name, nullptr, count);
    }
    center.addObserver(&observer, name, nullptr, [&](const Notification &) { late.reset(); });
    center.addObserver(late.get(), name, nullptr, count);
    center.post(name, nullptr);
    EXPECT_FALSE(late);
    EXPECT_EQ(heard, 0);
}
