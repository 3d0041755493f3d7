#include "DocumentFixture.h"

#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QDir>
#include <QSignalSpy>
#include <QTimer>

namespace inkory::test
{

using DocumentControllerTest = DocumentFixture;

TEST_F(DocumentControllerTest, TheFirstIsTheSharedOne)
{
    EXPECT_EQ(DocumentController::sharedDocumentController(), &controller);
    {
        const DocumentController second;
        EXPECT_EQ(DocumentController::sharedDocumentController(), &controller);
    }
    EXPECT_EQ(DocumentController::sharedDocumentController(), &controller);
}

TEST_F(DocumentControllerTest, RefusesWhatIsNoFileOnThisComputer)
{
    const auto reason = [this](const QUrl &url) {
        QString message;
        controller.openDocumentWithContentsOfURL(url, DocumentController::Display::Yes, [&](const auto &outcome) {
            message = outcome ? QString() : outcome.error().message;
        });
        return message;
    };
    EXPECT_EQ(reason(QUrl::fromLocalFile(folder.filePath(QStringLiteral("none.pdf")))),
              QStringLiteral("The file does not exist."));
    EXPECT_EQ(reason(QUrl::fromLocalFile(folder.path())), QStringLiteral("This is a folder, not a document."));
    EXPECT_EQ(reason(QUrl(QStringLiteral("http://localhost/a.pdf"))),
              QStringLiteral("Only files on this computer can be opened."));
    EXPECT_EQ(reason(makeFile(QStringLiteral("a.pdf"), "unreadable")), QStringLiteral("No text."));
    EXPECT_TRUE(controller.documents().isEmpty());
    EXPECT_EQ(TextDocument::living, 0);
}

TEST_F(DocumentControllerTest, AFileThatIsOpenIsNotOpenedAgainByAnyOfItsNames)
{
    const QUrl url = makeFile(QStringLiteral("a.pdf"));
    TextDocument *document = open(url);
    ASSERT_TRUE(QFile::link(url.toLocalFile(), folder.filePath(QStringLiteral("link.pdf"))));
    EXPECT_EQ(open(QUrl::fromLocalFile(folder.filePath(QStringLiteral("link.pdf")))), document);
    EXPECT_EQ(open(QUrl::fromLocalFile(folder.path() + QStringLiteral("/../") + QDir(folder.path()).dirName() +
                                       QStringLiteral("/a.pdf"))),
              document);
    QFile::remove(url.toLocalFile());
    EXPECT_EQ(open(url), document); // it is open although the file is gone
    EXPECT_NE(open(makeFile(QStringLiteral("b.pdf"))), document);
    EXPECT_EQ(controller.documents().size(), 2);
}

TEST_F(DocumentControllerTest, OpenPanelOpensSeveralAndTellsOfEachFailure)
{
    const QUrl missing = QUrl::fromLocalFile(folder.filePath(QStringLiteral("none.pdf")));
    OpenPanel::setResponder([&](const OpenPanel &panel) {
        EXPECT_EQ(panel.selection, OpenPanel::Selection::Several);
        EXPECT_TRUE(controller.isOpening());
        return QList<QUrl>({makeFile(QStringLiteral("a.pdf")), missing, makeFile(QStringLiteral("b.pdf"))});
    });
    QSignalSpy ended(&controller, &DocumentController::openingEnded);
    controller.openDocument(nullptr);
    EXPECT_EQ(controller.documents().size(), 2);
    EXPECT_EQ(questions, QStringList(QStringLiteral("“none.pdf” could not be opened.")));
    EXPECT_EQ(ended.size(), 1);
    EXPECT_FALSE(controller.isOpening());
}

TEST_F(DocumentControllerTest, RequestsWaitForTheEndOfAModalSession)
{
    QWidget dialog;
    const QUrl url = makeFile(QStringLiteral("a.pdf"));
    QTimer::singleShot(0, qApp, [&] {
        EXPECT_EQ(open(url), nullptr);
        EXPECT_TRUE(controller.isOpening());
        QTimer::singleShot(150, qApp, [&] {
            EXPECT_TRUE(controller.documents().isEmpty());
            dialog.hide();
            stopModal();
        });
    });
    (void)runModalForWindow(dialog);
    EXPECT_TRUE(QTest::qWaitFor([&] { return controller.documents().size() == 1; }));
    EXPECT_FALSE(controller.isOpening());
}

TEST_F(DocumentControllerTest, OneWindowsSessionIsNotInTheWay)
{
    QWidget welcome;
    controller.setSessionThatAllowsOpening(&welcome);
    QTimer::singleShot(0, qApp, [&] {
        EXPECT_NE(open(makeFile(QStringLiteral("a.pdf"))), nullptr);
        welcome.hide();
        stopModal();
    });
    (void)runModalForWindow(welcome);
    EXPECT_EQ(controller.documents().size(), 1);
}

TEST_F(DocumentControllerTest, TerminateWithoutEditsClosesAllAndEndsTheProgram)
{
    QTimer::singleShot(0, qApp, [&] {
        open(makeFile(QStringLiteral("a.pdf")));
        open(makeFile(QStringLiteral("b.pdf")));
        controller.terminate();
        EXPECT_TRUE(controller.isQuitting());
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(controller.documents().isEmpty());
    EXPECT_TRUE(questions.isEmpty());
}

TEST_F(DocumentControllerTest, TerminateSavesWhatThePersonWantsFirst)
{
    const QUrl url = makeFile(QStringLiteral("a.pdf"));
    QTimer::singleShot(0, qApp, [&] {
        open(url)->edit("new");
        open(makeFile(QStringLiteral("b.pdf")))->edit("lost");
        answers = {0, 1};
        controller.terminate();
    });
    QApplication::exec();
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(content(url), "new");
    EXPECT_TRUE(controller.documents().isEmpty());
}

TEST_F(DocumentControllerTest, CancellingTerminationClosesNothing)
{
    open(makeFile(QStringLiteral("a.pdf")))->edit("new");
    open(makeFile(QStringLiteral("b.pdf")))->edit("new");
    answers = {0, -1};
    controller.terminate();
    EXPECT_EQ(questions.size(), 2);
    EXPECT_FALSE(controller.isQuitting());
    EXPECT_EQ(controller.documents().size(), 2);
}

} // namespace inkory::test
