#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace inkory
{

namespace
{

/// Runs inside the session that is started next.
void inSession(const std::function<void()> &action)
{
    QTimer::singleShot(0, qApp, action);
}

} // namespace

TEST(ModalSession, AnswersTheCodeWithWhichItWasStopped)
{
    QWidget window;
    inSession([&] {
        EXPECT_EQ(modalWindow(), &window);
        EXPECT_EQ(QApplication::activeModalWidget(), &window);
        stopModalWithCode(2);
    });
    EXPECT_EQ(runModalForWindow(window), 2);
    EXPECT_EQ(modalWindow(), nullptr);

    inSession(stopModal);
    EXPECT_EQ(runModalForWindow(window), modalResponseStop);
    inSession(abortModal);
    EXPECT_EQ(runModalForWindow(window), modalResponseAbort);
}

TEST(ModalSession, LeavesTheWindowAsItIsAndItsModalityBehindOnceHidden)
{
    QWidget window;
    inSession(stopModal);
    (void)runModalForWindow(window);
    EXPECT_TRUE(window.isVisible());
    inSession([&] {
        window.hide();
        stopModal();
    });
    (void)runModalForWindow(window);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(window.windowModality(), Qt::NonModal);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST(ModalSession, NestedSessionsEndFromTheInnermostOutwards)
{
    QWidget outer;
    QWidget inner;
    int innerCode = 0;
    inSession([&] {
        inSession([] {
            stopModalWithCode(3); // both in one pass of the event loop
            stopModalWithCode(4);
            stopModalWithCode(5); // nobody is left
        });
        innerCode = runModalForWindow(inner, &outer);
    });
    EXPECT_EQ(runModalForWindow(outer), 4);
    EXPECT_EQ(innerCode, 3);
}

TEST(ModalSession, TimersGoOn)
{
    QWidget window;
    QTimer timer;
    int ticks = 0;
    timer.callOnTimeout([&] {
        if (++ticks == 3)
            stopModal();
    });
    timer.start(1);
    (void)runModalForWindow(window);
    EXPECT_EQ(ticks, 3);
}

TEST(ModalSession, IsAbortedWhenItsWindowIsDestroyed)
{
    auto window = std::make_unique<QWidget>();
    inSession([&] { window.reset(); });
    EXPECT_EQ(runModalForWindow(*window), modalResponseAbort);
    EXPECT_EQ(modalWindow(), nullptr);
}

TEST(ModalSession, StoppedWhileItsWindowIsShown)
{
    struct Impatient : QWidget
    {
        void showEvent(QShowEvent *) override { stopModalWithCode(7); }
    };
    Impatient window;
    EXPECT_EQ(runModalForWindow(window), 7);
}

TEST(ModalSession, IsAbortedAtOnceWhileTheProgramQuits)
{
    QWidget first;
    QWidget second;
    int firstCode = 0;
    int secondCode = 0;
    inSession([&] {
        inSession([] { QCoreApplication::exit(0); });
        firstCode = runModalForWindow(first);
        secondCode = runModalForWindow(second);
    });
    QApplication::exec();
    EXPECT_EQ(firstCode, modalResponseAbort);
    EXPECT_EQ(secondCode, modalResponseAbort);
    EXPECT_FALSE(second.isVisible());
}

TEST(ModalSession, StopWithoutASessionDoesNothing)
{
    stopModal();
    QWidget window;
    inSession([] { stopModalWithCode(1); });
    EXPECT_EQ(runModalForWindow(window), 1);
}

} // namespace inkory
