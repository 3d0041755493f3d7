#include "ApplicationFixture.h"

#include "V1/application/DropArea.h"
#include "V1/application/InterfaceRegistration.h"

#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QTableView>
#include <QWindow>

namespace inkory::test
{

namespace
{

class WelcomeWindowTest : public ApplicationFixture
{
protected:
    WelcomeWindowTest()
    {
        registerApplicationInterfaceDescriptions();
        documentController.setDocumentFactory([] { return std::make_unique<PDFDocumentModel>(); });
    }

    void addRecent(const QUrl &url)
    {
        documentController.noteNewRecentDocumentURL(url);
        EXPECT_TRUE(QTest::qWaitFor([&] { return documentController.recentDocumentURLs().contains(url); }));
        QTest::qWait(2); // times differ by a millisecond at least
    }
    /// Runs the window's session; the action runs inside, and the person closes the window if that leaves it open.
    int runSession(const std::function<void()> &action)
    {
        QTimer::singleShot(0, qApp, [&, action] {
            action();
            QTimer::singleShot(0, &controller, [this] {
                if (controller.window()->isVisible())
                    controller.window()->close();
            });
        });
        documentController.setSessionThatAllowsOpening(controller.window());
        return runModalForWindow(*controller.window());
    }
    template <class T> T &part(const char *name) { return *controller.window()->findChild<T *>(QLatin1String(name)); }
    QTableView &table() { return part<QTableView>("recentDocumentsTableView"); }
    QPushButton &openButton() { return part<QPushButton>("openButton"); }

    /// Whether the window takes these files when they are dragged over it; the same for performing the drop.
    bool drag(const QList<QUrl> &urls, bool drop = false)
    {
        QMimeData data;
        if (!urls.isEmpty())
            data.setUrls(urls);
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(controller.window(), &enter);
        if (!drop)
            return enter.isAccepted();
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(controller.window(), &event);
        return event.isAccepted();
    }
    QStringList openNames() const
    {
        QStringList names;
        for (const Document *document : documentController.documents())
            names.append(document->displayName());
        return names;
    }

    KRDocumentController documentController;
    WelcomeWindowController controller{QStringLiteral("WelcomeWindow")};
};

} // namespace

TEST_F(WelcomeWindowTest, WithoutRecentDocumentsItShowsBothMessages)
{
    controller.showWindow();
    EXPECT_TRUE(part<QLabel>("noRecentTextField").isVisible());
    EXPECT_TRUE(part<QLabel>("dragFilesTextField").isVisible());
    EXPECT_EQ(table().model()->rowCount(), 0);
    EXPECT_FALSE(openButton().isEnabled());
}

TEST_F(WelcomeWindowTest, ListsRecentDocumentsByNameWithTheirPathAsToolTip)
{
    const QUrl first = makeFile(QStringLiteral("first.pdf"));
    const QUrl second = makeFile(QStringLiteral("<b>second.pdf"));
    addRecent(first);
    addRecent(second);
    controller.showWindow();
    EXPECT_FALSE(part<QLabel>("noRecentTextField").isVisible());
    EXPECT_FALSE(part<QLabel>("dragFilesTextField").isVisible());
    const QAbstractItemModel &model = *table().model();
    ASSERT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.index(0, 0).data().toString(), QStringLiteral("<b>second.pdf"));
    EXPECT_EQ(model.index(1, 0).data().toString(), QStringLiteral("first.pdf"));
    EXPECT_EQ(model.index(1, 0).data(Qt::ToolTipRole).toString(), first.toLocalFile());
    EXPECT_EQ(model.index(0, 0).data(Qt::ToolTipRole).toString(), second.toLocalFile().toHtmlEscaped());
}

TEST_F(WelcomeWindowTest, OpenButtonFollowsTheSelection)
{
    addRecent(makeFile(QStringLiteral("a.pdf")));
    controller.showWindow();
    EXPECT_FALSE(openButton().isEnabled());
    table().selectRow(0);
    EXPECT_TRUE(openButton().isEnabled());
    table().clearSelection();
    EXPECT_FALSE(openButton().isEnabled());
}

TEST_F(WelcomeWindowTest, OpensTheSelectedDocumentByButtonDoubleClickAndReturn)
{
    addRecent(makeFile(QStringLiteral("a.pdf")));
    const std::vector<std::function<void(QTableView &, QPushButton &)>> ways = {
        [](QTableView &, QPushButton &button) { button.click(); },
        [](QTableView &list, QPushButton &) {
            const QPoint row = list.visualRect(list.model()->index(0, 0)).center();
            QTest::mouseDClick(list.window()->windowHandle(), Qt::LeftButton, {},
                               list.viewport()->mapTo(list.window(), row));
        },
        [](QTableView &list, QPushButton &) { QTest::keyClick(&list, Qt::Key_Return); }};
    for (const auto &way : ways) {
        WelcomeWindowController welcome(QStringLiteral("WelcomeWindow"));
        QTimer::singleShot(0, qApp, [&] {
            auto *list = welcome.window()->findChild<QTableView *>();
            list->selectRow(0);
            way(*list, *welcome.window()->findChild<QPushButton *>(QStringLiteral("openButton")));
        });
        documentController.setSessionThatAllowsOpening(welcome.window());
        EXPECT_EQ(runModalForWindow(*welcome.window()), modalResponseStop);
        EXPECT_FALSE(welcome.window()->isVisible());
        EXPECT_FALSE(welcome.wasDismissedByUser());
        EXPECT_EQ(openNames(), QStringList(QStringLiteral("a.pdf")));
        documentController.documents().first()->close();
    }
}

TEST_F(WelcomeWindowTest, ARecentDocumentThatIsGoneLeavesTheWindowOpenWithoutAMessage)
{
    const QUrl url = makeFile(QStringLiteral("a.pdf"));
    addRecent(url);
    runSession([&] {
        QFile::remove(url.toLocalFile());
        table().selectRow(0);
        openButton().click();
        EXPECT_TRUE(controller.window()->isVisible());
    });
    EXPECT_TRUE(alerts.isEmpty());
    EXPECT_TRUE(controller.wasDismissedByUser());
}

TEST_F(WelcomeWindowTest, TheOpenPanelsChoiceAbortsTheSession)
{
    OpenPanel::setResponder([&](const OpenPanel &) { return QList<QUrl>({makeFile(QStringLiteral("a.pdf"))}); });
    QTimer::singleShot(0, qApp, [&] {
        part<QPushButton>("openPanelButton").click();
        EXPECT_TRUE(controller.window()->isVisible());
    });
    documentController.setSessionThatAllowsOpening(controller.window());
    EXPECT_EQ(runModalForWindow(*controller.window()), modalResponseAbort);
    EXPECT_FALSE(controller.window()->isVisible());
    EXPECT_EQ(openNames(), QStringList(QStringLiteral("a.pdf")));
}

TEST_F(WelcomeWindowTest, CancellingTheOpenPanelLeavesTheWindowOpen)
{
    OpenPanel::setResponder([](const OpenPanel &) { return QList<QUrl>(); });
    controller.showWindow();
    controller.openDocument();
    QTest::qWait(150);
    EXPECT_TRUE(controller.window()->isVisible());
}

TEST_F(WelcomeWindowTest, ClosingItStopsTheSession)
{
    EXPECT_EQ(runSession([] {}), modalResponseStop);
    EXPECT_TRUE(controller.wasDismissedByUser());
    EXPECT_TRUE(openNames().isEmpty());
}

TEST_F(WelcomeWindowTest, JudgesFilesByTheirContent)
{
    EXPECT_TRUE(WelcomeWindowController::isValidPdfDocument(makeFile(QStringLiteral("a.txt")).toLocalFile()));
    EXPECT_FALSE(WelcomeWindowController::isValidPdfDocument(makeFile(QStringLiteral("b.pdf"), "text").toLocalFile()));
    EXPECT_FALSE(WelcomeWindowController::isValidPdfDocument(folder.path()));
    EXPECT_FALSE(WelcomeWindowController::isValidPdfDocument(folder.filePath(QStringLiteral("none.pdf"))));
}

TEST_F(WelcomeWindowTest, TakesADragOnlyWithAPdfAmongTheFiles)
{
    controller.showWindow();
    const QUrl pdf = makeFile(QStringLiteral("a.pdf"));
    const QUrl text = makeFile(QStringLiteral("b.txt"), "text");
    auto &area = part<DropArea>("dropArea");
    EXPECT_TRUE(drag({text, pdf}));
    EXPECT_EQ(area.look(), DropArea::Look::Inviting);
    EXPECT_FALSE(drag({text}));
    EXPECT_EQ(area.look(), DropArea::Look::Quiet);
    EXPECT_FALSE(drag({QUrl::fromLocalFile(folder.path())}));
    EXPECT_FALSE(drag({}));
    EXPECT_FALSE(drag({QUrl(QStringLiteral("http://localhost/a.pdf"))}));
}

TEST_F(WelcomeWindowTest, ADropOpensThePdfFilesInTheirOrder)
{
    const QUrl b = makeFile(QStringLiteral("b.pdf"));
    const QUrl a = makeFile(QStringLiteral("a.pdf"));
    const QUrl text = makeFile(QStringLiteral("c.txt"), "text");
    EXPECT_EQ(runSession([&] { EXPECT_TRUE(drag({b, text, a}, true)); }), modalResponseStop);
    EXPECT_FALSE(controller.wasDismissedByUser());
    EXPECT_EQ(openNames(), QStringList({QStringLiteral("b.pdf"), QStringLiteral("a.pdf")}));
}

TEST_F(WelcomeWindowTest, ADropWithoutPdfFilesIsRefused)
{
    controller.showWindow();
    EXPECT_FALSE(drag({makeFile(QStringLiteral("c.txt"), "text")}, true));
    EXPECT_TRUE(controller.window()->isVisible());
}

TEST_F(WelcomeWindowTest, ALongNameWidensTheColumn)
{
    addRecent(makeFile(QString(120, u'w') + QStringLiteral(".pdf")));
    addRecent(makeFile(QStringLiteral("short.pdf")));
    controller.showWindow();
    const int width = table().columnWidth(0);
    EXPECT_GT(width, table().fontMetrics().horizontalAdvance(QString(120, u'w')));
    controller.window()->resize(controller.window()->minimumSize());
    QCoreApplication::processEvents();
    EXPECT_EQ(table().columnWidth(0), width);
}

TEST_F(WelcomeWindowTest, EveryControlHasANameForScreenReaders)
{
    addRecent(makeFile(QStringLiteral("a.pdf")));
    controller.showWindow();
    EXPECT_FALSE(table().accessibleName().isEmpty());
    EXPECT_TRUE(
        table().model()->index(0, 0).data(Qt::AccessibleTextRole).toString().startsWith(QStringLiteral("a.pdf, in ")));
    for (const auto *button : controller.window()->findChildren<QPushButton *>()) {
        EXPECT_FALSE(button->text().isEmpty());
        EXPECT_NE(button->focusPolicy(), Qt::NoFocus);
    }
}

} // namespace inkory::test
