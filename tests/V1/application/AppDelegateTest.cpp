#include "ApplicationFixture.h"

#include "V1/application/AppDelegate.h"
#include "platform/core/PlatformVersion.h"

namespace inkory::test
{

class AppDelegateTest : public ApplicationFixture
{
protected:
    ~AppDelegateTest() override { setPlatformVersion(2000); }

    /// Runs the program from its start until it ends by itself with the status; `steps` are run one after the other,
    /// each once everything before has had its effect.
    void run(const QList<QUrl> &files, std::vector<std::function<void()>> steps, int status = 0)
    {
        QTimer::singleShot(0, qApp, [&] { delegate.launch(files); });
        QTimer timer;
        std::size_t next = 0;
        timer.callOnTimeout([&] { next < steps.size() ? steps[next++]() : QCoreApplication::exit(99); });
        timer.start(250);
        EXPECT_EQ(QApplication::exec(), status);
    }
    static bool isWelcoming()
    {
        const QWidget *window = modalWindow();
        return window && window->objectName() == QStringLiteral("WelcomeWindow") && window->isVisible();
    }
    static void closeWelcomeWindow()
    {
        ASSERT_TRUE(isWelcoming());
        modalWindow()->close();
    }

    AppDelegate delegate;
};

TEST_F(AppDelegateTest, OnlyTheLastDocumentBringsTheWelcomeWindowBack)
{
    const auto closeOne = [] {
        EXPECT_FALSE(isWelcoming());
        documents().first()->close();
        EXPECT_FALSE(isWelcoming()); // not in the call that closes the document
    };
    run({makeFile("a.pdf"), makeFile("b.pdf")}, {closeOne, closeOne, closeWelcomeWindow});
}

TEST_F(AppDelegateTest, ADocumentOpenedFromOutsideEndsTheWelcomeWindowAndQuittingCanBeCancelled)
{
    const auto openFromOutside = [this] {
        EXPECT_TRUE(isWelcoming());
        open(makeFile("a.pdf")).undoManager().noteChangeWithoutStep();
    };
    const auto quitInVain = [] {
        EXPECT_FALSE(isWelcoming());
        QCoreApplication::quit();
        EXPECT_EQ(documents().size(), 1);
    };
    answers = {1, -1, 0};
    run({urlOf("none.pdf")}, {openFromOutside, quitInVain, QCoreApplication::quit});
    EXPECT_EQ(questions.size(), 3);
    EXPECT_EQ(questions.value(0).value(0), QStringLiteral("“none.pdf” could not be opened."));
    EXPECT_TRUE(documents().isEmpty());
}

TEST_F(AppDelegateTest, RefusesTwoEarlyReleases)
{
    for (const auto &[version, isRefused] : {std::pair(1503.9, false), {1504, true}, {1504.6, true}, {1504.7, false}}) {
        setPlatformVersion(version);
        EXPECT_EQ(AppDelegate().applicationWillFinishLaunching() == AppDelegate::Launch::Refused, isRefused);
    }
    setPlatformVersion(1504.3);
    run({}, {}, 1);
    EXPECT_EQ(questions.size(), 3);
}

} // namespace inkory::test
