#include "platform/core/NotificationCenter.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace inkory
{
namespace
{

const QString name = QStringLiteral("CHANGED");

class NotificationCenterTest : public ::testing::Test
{
protected:
    NotificationCenter::Handler noting(const QString &text)
    {
        return [this, text](const Notification &) { m_heard << text; };
    }

    NotificationCenter m_center;
    QObject m_observer;
    int m_object = 0;
    int m_otherObject = 0;
    QStringList m_heard;
};

TEST_F(NotificationCenterTest, ObserverHearsItsNameFromItsObjectOrFromAny)
{
    m_center.addObserver(&m_observer, name, &m_object, noting(u"one"_qs));
    m_center.addObserver(&m_observer, name, nullptr, noting(u"any"_qs));
    m_center.post(name, &m_object);
    m_center.post(name, &m_otherObject);
    m_center.post(u"OTHER"_qs, &m_object);
    EXPECT_EQ(m_heard, QStringList({u"one"_qs, u"any"_qs, u"any"_qs}));
}

TEST_F(NotificationCenterTest, HandlerGetsNameObjectAndUserInfo)
{
    Notification got;
    m_center.addObserver(&m_observer, name, nullptr, [&](const Notification &each) { got = each; });
    m_center.post(name, &m_object, {{u"key"_qs, 7}});
    EXPECT_EQ(got.name, name);
    EXPECT_EQ(got.object, &m_object);
    EXPECT_EQ(got.userInfo.value(u"key"_qs), QVariant(7));
}

TEST_F(NotificationCenterTest, SubscribingAgainReplacesTheHandlerInItsPlace)
{
    m_center.addObserver(&m_observer, name, nullptr, noting(u"old"_qs));
    m_center.addObserver(&m_observer, name, &m_object, noting(u"second"_qs));
    m_center.addObserver(&m_observer, name, nullptr, noting(u"new"_qs));
    m_center.post(name, &m_object);
    EXPECT_EQ(m_heard, QStringList({u"new"_qs, u"second"_qs}));
}

TEST_F(NotificationCenterTest, RemovingEndsOnlyTheNamedSubscription)
{
    QObject other;
    m_center.addObserver(&m_observer, name, nullptr, noting(u"any"_qs));
    m_center.addObserver(&m_observer, name, &m_object, noting(u"one"_qs));
    m_center.addObserver(&other, name, nullptr, noting(u"other"_qs));
    m_center.removeObserver(&m_observer, name, nullptr);
    m_center.post(name, &m_object);
    EXPECT_EQ(m_heard, QStringList({u"one"_qs, u"other"_qs}));
}

TEST_F(NotificationCenterTest, DestroyedObserversHearNothingAlsoDuringTheDelivery)
{
    auto early = std::make_unique<QObject>();
    auto late = std::make_unique<QObject>();
    m_center.addObserver(early.get(), name, nullptr, noting(u"early"_qs));
    m_center.addObserver(&m_observer, name, nullptr, [&](const Notification &) { late.reset(); });
    m_center.addObserver(late.get(), name, nullptr, noting(u"late"_qs));
    early.reset();
    m_center.post(name, nullptr);
    EXPECT_TRUE(m_heard.isEmpty());
}

TEST_F(NotificationCenterTest, ChangesDuringTheDeliveryTakeEffectAsPromised)
{
    QObject added;
    QObject removed;
    m_center.addObserver(&m_observer, name, nullptr, [&](const Notification &) {
        m_center.addObserver(&added, name, nullptr, noting(u"added"_qs));
        m_center.removeObserver(&removed, name, nullptr);
        m_center.removeObserver(&m_observer, name, nullptr); // the handler that is running outlives its subscription
        m_heard << u"first"_qs;
    });
    m_center.addObserver(&removed, name, nullptr, noting(u"removed"_qs));
    m_center.post(name, nullptr);
    EXPECT_EQ(m_heard, QStringList({u"first"_qs}));
    m_center.post(name, nullptr);
    EXPECT_EQ(m_heard, QStringList({u"first"_qs, u"added"_qs}));
}

} // namespace
} // namespace inkory
