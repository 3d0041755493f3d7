#include "platform/core/NotificationCenter.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

using namespace inkory;

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
    QStringList m_heard;
};

TEST_F(NotificationCenterTest, ObserverHearsItsNameFromItsObjectOrFromAny)
{
    m_center.addObserver(&m_observer, name, &m_object, noting(u"one"_qs));
    m_center.addObserver(&m_observer, name, nullptr, noting(u"any"_qs));
    m_center.post(name, &m_object);
    m_center.post(name, &m_observer);
    m_center.post(u"OTHER"_qs, &m_object);
    EXPECT_EQ(m_heard, QStringList({u"one"_qs, u"any"_qs, u"any"_qs}));
}

TEST_F(NotificationCenterTest, DestroyedObserversHearNothingAlsoDuringTheDelivery)
{
    auto late = std::make_unique<QObject>();
    {
        QObject early;
        m_center.addObserver(&early, name, nullptr, noting(u"early"_qs));
    }
    m_center.addObserver(&m_observer, name, nullptr, [&](const Notification &) { late.reset(); });
    m_center.addObserver(late.get(), name, nullptr, noting(u"late"_qs));
    m_center.post(name, nullptr);
    EXPECT_TRUE(m_heard.isEmpty());
}

} // namespace
