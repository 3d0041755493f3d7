#include "ApplicationFixture.h"

#include "V1/application/WelcomeWindowController.h"

#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QTableView>

namespace inkory::test
{

class WelcomeWindowTest : public OpenedDocumentFixture
{
protected:
    /// Runs the window's session, in which the action opens documents so that the window goes.
    void runSession(const std::function<void()> &action)
    {
        QTimer::singleShot(0, qApp, action);
        documentController.setSessionThatAllowsOpening(controller.window());
        EXPECT_EQ(runModalForWindow(*controller.window()), modalResponseStop);
        EXPECT_FALSE(controller.window()->isVisible() || controller.wasDismissedByUser());
        EXPECT_TRUE(questions.isEmpty());
    }
    template <class T> T &part(const char *name) { return *controller.window()->findChild<T *>(QLatin1String(name)); }

    /// Drags the files over the window and drops them if it takes them; whether it did.
    bool drop(const QList<QUrl> &urls)
    {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(controller.window(), &enter);
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        return enter.isAccepted() && QCoreApplication::sendEvent(controller.window(), &event) && event.isAccepted();
    }
    WelcomeWindowController controller{QStringLiteral("WelcomeWindow")};
};

TEST_F(WelcomeWindowTest, OpensTheSelectedDocumentUnlessItIsGone)
{
    for (const char *name : {"a.pdf", "gone.pdf"}) {
        documentController.noteNewRecentDocumentURL(makeFile(name));
        EXPECT_TRUE(QTest::qWaitFor([&] { return documentController.recentDocumentURLs().contains(urlOf(name)); }));
        QTest::qWait(2); // times differ by a millisecond at least
    }
    runSession([&] {
        QFile::remove(urlOf("gone.pdf").toLocalFile());
        auto &table = part<QTableView>("recentDocumentsTableView");
        QTest::keyClick(&table, Qt::Key_Down); // begins at the first one
        part<QPushButton>("openButton").click();
        EXPECT_TRUE(controller.window()->isVisible());
        QTest::keyClick(&table, Qt::Key_Down);
        QTest::keyClick(&table, Qt::Key_Return);
    });
    EXPECT_EQ(documents().last()->fileUrl(), urlOf("a.pdf"));
}

TEST_F(WelcomeWindowTest, ADropOpensThePdfFilesInTheirOrderAndIsRefusedWithoutAny)
{
    runSession([&] {
        EXPECT_FALSE(drop(
            {makeFile("fake.pdf", "text"), urlOf(""), urlOf("none.pdf"), QUrl(QStringLiteral("http://host/a.pdf"))}));
        EXPECT_TRUE(controller.window()->isVisible());
        EXPECT_TRUE(drop({makeFile("b.txt"), urlOf("fake.pdf"), makeFile("a.pdf")}));
    });
    ASSERT_EQ(documents().size(), 2);
    EXPECT_EQ(documents().last()->fileUrl(), urlOf("a.pdf"));
}

} // namespace inkory::test
