#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

namespace inkory
{

/// Runs inside the session that is started next.
const auto inSession = [](auto action) { QTimer::singleShot(0, qApp, action); };

TEST(ModalSession, AnswersTheCodeWithWhichItWasStoppedAndLeavesNoModalityBehind)
{
    QWidget window;
    inSession([&] {
        EXPECT_EQ(modalWindow(), &window);
        EXPECT_EQ(QApplication::activeModalWidget(), &window);
        window.hide();
        stopModalWithCode(2);
    });
    EXPECT_EQ(runModalForWindow(window), 2);
    EXPECT_EQ(modalWindow(), nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(window.windowModality(), Qt::NonModal);
}

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
