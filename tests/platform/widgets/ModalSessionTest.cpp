#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

namespace inkory
{

/// Runs inside the session that is started next.
const auto inSession = [](auto action) { QTimer::singleShot(0, qApp, action); };

TEST(ModalSession, NestedSessionsEndFromTheInnermostOutwards)
{
    QWidget outer;
    QWidget inner;
    inSession([&] {
        inSession([] {
            stopModalWithCode(3); // both in one pass of the event loop
            stopModalWithCode(4);
            stopModalWithCode(5); // nobody is left
        });
        EXPECT_EQ(runModalForWindow(inner, &outer), 3);
    });
    EXPECT_EQ(runModalForWindow(outer), 4);
    EXPECT_EQ(modalWindow(), nullptr);
}

TEST(ModalSession, IsAbortedAtOnceWhileTheProgramQuits)
{
    QWidget window;
    inSession([&] {
        inSession([] { QCoreApplication::exit(0); });
        EXPECT_EQ(runModalForWindow(window), modalResponseAbort);
        EXPECT_EQ(runModalForWindow(window), modalResponseAbort);
    });
    EXPECT_EQ(QApplication::exec(), 0);
}

} // namespace inkory
