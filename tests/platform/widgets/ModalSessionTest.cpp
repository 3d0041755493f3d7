#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

namespace inkory
{

/// Runs inside the session that is started next.
const auto inSession = [](auto action) { QTimer::singleShot(0, qApp, action); };

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
