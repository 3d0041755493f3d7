#include "DocumentFixture.h"

#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QDir>
#include <QTimer>

namespace inkory::test
{

using DocumentControllerTest = DocumentFixture;

TEST_F(DocumentControllerTest, AFileThatIsOpenIsNotOpenedAgainByAnyOfItsNames)
{
    const QUrl url = makeFile("a.pdf");
    const TextDocument *document = open(url);
    ASSERT_TRUE(QFile::link(url.toLocalFile(), urlOf("link.pdf").toLocalFile()));
    EXPECT_EQ(open(urlOf("link.pdf")), document);
    EXPECT_EQ(open(urlOf(("../" + QDir(folder.path()).dirName().toUtf8() + "/a.pdf").constData())), document);
    QFile::remove(url.toLocalFile());
    EXPECT_EQ(open(url), document); // it is open although the file is gone
    EXPECT_NE(open(makeFile("b.pdf")), document);
    EXPECT_EQ(controller.documents().size(), 2);
}

TEST_F(DocumentControllerTest, RequestsWaitForTheEndOfAModalSession)
{
    QWidget dialog;
    QTimer::singleShot(0, qApp, [&] {
        controller.openDocumentsReportingFailures({makeFile("a.pdf")});
        QTest::qWait(150);
        EXPECT_TRUE(controller.isOpening());
        EXPECT_TRUE(controller.documents().isEmpty());
        dialog.hide();
        stopModal();
    });
    (void)runModalForWindow(dialog);
    EXPECT_TRUE(QTest::qWaitFor([&] { return controller.documents().size() == 1; }));
    EXPECT_FALSE(controller.isOpening());
}

TEST_F(DocumentControllerTest, TerminateSavesWhatThePersonWantsAndClosesNothingOnceCancelled)
{
    const QUrl wanted = makeFile("a.pdf");
    const QUrl unwanted = makeFile("b.pdf");
    QTimer::singleShot(0, qApp, [&] {
        open(wanted)->edit("new");
        open(unwanted)->edit("lost");
        answers = {0, -1};
        controller.terminate();
        EXPECT_FALSE(controller.isQuitting());
        EXPECT_EQ(controller.documents().size(), 2);
        answers = {0, 1};
        controller.terminate();
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(questions.size(), 4);
    EXPECT_EQ(content(wanted), "new");
    EXPECT_EQ(content(unwanted), "text");
    EXPECT_TRUE(controller.documents().isEmpty());
}

} // namespace inkory::test
