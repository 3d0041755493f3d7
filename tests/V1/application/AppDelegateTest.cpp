#include "ApplicationFixture.h"

#include "platform/core/NotificationCenter.h"

namespace inkory::test
{

namespace
{

class AppDelegateTest : public ApplicationFixture
{
protected:
    /// Runs the program from its start until it ends by itself; `steps` are run one after the other, each once
    /// everything before has had its effect.
    int run(const QList<QUrl> &files, std::vector<std::function<void()>> steps)
    {
        QTimer::singleShot(0, qApp, [&] { delegate.launch(files); });
        QTimer timer;
        std::size_t next = 0;
        timer.callOnTimeout([&] {
            if (next < steps.size())
                steps[next++]();
            else
                QCoreApplication::exit(stuck);
        });
        timer.start(stepInterval);
        return QApplication::exec();
    }
    static QList<Document *> documents() { return DocumentController::sharedDocumentController()->documents(); }
    static QWidget *welcomeWindow()
    {
        QWidget *window = modalWindow();
        return window && window->objectName() == QStringLiteral("WelcomeWindow") && window->isVisible() ? window
                                                                                                        : nullptr;
    }
    static void open(const QUrl &url)
    {
        DocumentController::sharedDocumentController()->openDocumentWithContentsOfURL(url,
                                                                                      DocumentController::Display::Yes);
    }
    static void closeWelcomeWindow()
    {
        ASSERT_NE(welcomeWindow(), nullptr);
        welcomeWindow()->close();
    }

    static constexpr int stepInterval = 250;
    static constexpr int stuck = 99;
    AppDelegate delegate;
};

} // namespace

TEST_F(AppDelegateTest, StartWithoutFilesShowsTheWelcomeWindowAndClosingItEndsTheProgram)
{
    const int status = run({}, {[&] {
                               EXPECT_FALSE(delegate.welcomeWindowDisplayed());
                               EXPECT_TRUE(documents().isEmpty());
                               closeWelcomeWindow();
                           }});
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(delegate.welcomeWindowDisplayed());
}

TEST_F(AppDelegateTest, StartWithAFileShowsNoWelcomeWindowUntilItIsClosed)
{
    const int status = run({makeFile(QStringLiteral("a.pdf"))},
                           {[&] {
                                EXPECT_EQ(welcomeWindow(), nullptr);
                                ASSERT_EQ(documents().size(), 1);
                                EXPECT_FALSE(delegate.welcomeWindowDisplayed());
                                documents().first()->close();
                                EXPECT_EQ(welcomeWindow(), nullptr); // not in the call that closes the document
                            },
                            [] { closeWelcomeWindow(); }});
    EXPECT_EQ(status, 0);
}

TEST_F(AppDelegateTest, OnlyTheLastDocumentBringsTheWelcomeWindowBack)
{
    const int status = run({makeFile(QStringLiteral("a.pdf")), makeFile(QStringLiteral("b.pdf"))},
                           {[] { documents().first()->close(); },
                            [&] {
                                EXPECT_EQ(welcomeWindow(), nullptr);
                                documents().first()->close();
                                open(makeFile(QStringLiteral("c.pdf"))); // in time: nothing is to be shown
                            },
                            [] {
                                EXPECT_EQ(welcomeWindow(), nullptr);
                                documents().first()->close();
                            },
                            [] { closeWelcomeWindow(); }});
    EXPECT_EQ(status, 0);
}

TEST_F(AppDelegateTest, AFileThatCannotBeOpenedIsToldAndTheWelcomeWindowFollows)
{
    const QUrl missing = QUrl::fromLocalFile(folder.filePath(QStringLiteral("none.pdf")));
    const int status = run({missing}, {[] { closeWelcomeWindow(); }});
    EXPECT_EQ(status, 0);
    EXPECT_EQ(questions(), QStringList(QStringLiteral("“none.pdf” could not be opened.")));
}

TEST_F(AppDelegateTest, ADocumentOpenedFromOutsideEndsTheWelcomeWindow)
{
    const int status = run({}, {[&] { open(makeFile(QStringLiteral("a.pdf"))); },
                                [] {
                                    EXPECT_EQ(welcomeWindow(), nullptr);
                                    EXPECT_EQ(documents().size(), 1);
                                    DocumentController::sharedDocumentController()->terminate();
                                }});
    EXPECT_EQ(status, 0);
}

TEST_F(AppDelegateTest, UntitledDocumentsAreNeverMadeAndTheWelcomeWindowIsShownOnce)
{
    const int status = run({}, {[] { closeWelcomeWindow(); }});
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(delegate.applicationShouldOpenUntitledFile()); // would run a session if it were not shown yet
    EXPECT_TRUE(documents().isEmpty());
}

TEST_F(AppDelegateTest, QuittingClosesTheWelcomeWindowWithoutShowingAnother)
{
    EXPECT_EQ(run({}, {[] { QCoreApplication::quit(); }}), 0);
}

TEST_F(AppDelegateTest, QuittingWithAnEditedDocumentAsksAndCanBeCancelled)
{
    answers = {-1, 0};
    const int status =
        run({makeFile(QStringLiteral("a.pdf"))}, {[] {
                                                      documents().first()->undoManager().noteChangeWithoutStep();
                                                      QCoreApplication::quit();
                                                      EXPECT_EQ(documents().size(), 1);
                                                  },
                                                  [] { QCoreApplication::quit(); }});
    EXPECT_EQ(status, 0);
    EXPECT_EQ(alerts.size(), 2);
    EXPECT_TRUE(documents().isEmpty());
}

TEST_F(AppDelegateTest, RegistersItsOneDefault)
{
    EXPECT_EQ(delegate.applicationWillFinishLaunching(), AppDelegate::Launch::Allowed);
    EXPECT_FALSE(UserDefaults::standard().boolean(QStringLiteral("NSFunctionBarAPIEnabled")));
    EXPECT_FALSE(UserDefaults::standard().hasStoredValue(QStringLiteral("NSFunctionBarAPIEnabled")));
}

TEST_F(AppDelegateTest, TheNotificationOfAClosedDocumentNamesTheControllerAndComesAfterTheRemoval)
{
    (void)delegate.applicationWillFinishLaunching();
    auto *controller = DocumentController::sharedDocumentController();
    QObject observer;
    int posted = 0;
    NotificationCenter::defaultCenter().addObserver(&observer, QStringLiteral("DOCUMENT_REMOVED"), nullptr,
                                                    [&](const Notification &notification) {
                                                        ++posted;
                                                        EXPECT_EQ(notification.object, controller);
                                                        EXPECT_TRUE(notification.userInfo.isEmpty());
                                                        EXPECT_EQ(documents().size(), 1);
                                                    });
    open(makeFile(QStringLiteral("a.pdf")));
    open(makeFile(QStringLiteral("b.pdf")));
    documents().first()->close();
    EXPECT_EQ(posted, 1);
}

struct GateCase
{
    double version;
    bool refused;
};

class AppDelegateGate : public AppDelegateTest, public ::testing::WithParamInterface<GateCase>
{
};

TEST_P(AppDelegateGate, RefusesTwoEarlyReleases)
{
    setPlatformVersion(GetParam().version);
    std::vector<std::function<void()>> steps;
    if (!GetParam().refused)
        steps.emplace_back([] { closeWelcomeWindow(); });
    EXPECT_EQ(run({}, steps), GetParam().refused ? 1 : 0);
    ASSERT_EQ(alerts.size(), GetParam().refused ? 1 : 0);
    if (!GetParam().refused)
        return;
    EXPECT_EQ(DocumentController::sharedDocumentController(), nullptr);
    EXPECT_TRUE(delegate.welcomeWindowDisplayed());
    EXPECT_EQ(alerts.first().messageText, QStringLiteral("Your MacOS Sierra is not up to date"));
    EXPECT_EQ(alerts.first().informativeText,
              QStringLiteral("It appears that you are running MacOS Sierra 10.12 which isn't updated to the latest "
                             "MacOS version.\n\nOn MacOS Sierra, Inkory requires at least version 10.12.2 to run."));
    EXPECT_TRUE(alerts.first().buttons.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(, AppDelegateGate,
                         ::testing::Values(GateCase{1503.9, false}, GateCase{1504, true}, GateCase{1504.3, true},
                                           GateCase{1504.6, true}, GateCase{1504.7, false}, GateCase{1404, false}));

} // namespace inkory::test
