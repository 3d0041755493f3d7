#include "ApplicationFixture.h"

#include "V1/application/DocumentStatePage.h"
#include "V1/application/NoticeStrip.h"
#include "V1/library/ImageStampCollection.h"
#include "V1/library/ImageStampSelectionController.h"
#include "platform/core/NotificationCenter.h"
#include "platform/widgets/PDFThumbnailView.h"
#include "platform/widgets/SegmentedControl.h"

#include <QAction>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>
#include <QWindow>

namespace inkory::test
{

/// The window of an open document of three pages, and a library with one signature.
class PDFWindowControllerTest : public DocumentWindowFixture
{
protected:
    PDFWindowControllerTest() : DocumentWindowFixture(threePages())
    {
        ImageStampCollection::forgetSharedState();
        QImage(40, 20, QImage::Format_RGB32).save(urlOf("s.png").toLocalFile());
        ImageStampCollection::addImages(QList<QUrl>({urlOf("s.png")}));
    }
    ~PDFWindowControllerTest() override { ImageStampSelectionController::releaseShared(); }

    /// What the person does when the signature dialog comes.
    static void answerDialog(void (ImageStampSelectionController::*answer)())
    {
        QTimer::singleShot(0, qApp, [answer] {
            if (modalWindow())
                (ImageStampSelectionController::sharedImageStampSelection().*answer)();
        });
    }
    void click(const char *control, int segment) { part<SegmentedControl>(control).button(segment)->click(); }
};

TEST_F(PDFWindowControllerTest, KeysChooseToolsByTheirPlaceAndOnlyAlone)
{
    enum : quint32 { SPlace = 39, VPlace = 55, CapsLock = 2 };
    const auto toolAfter = [this](quint32 place, Qt::Key key, Qt::KeyboardModifiers modifiers, quint32 native) {
        controller.setCurrentToolType(ToolTypeTextStamp);
        answerDialog(&ImageStampSelectionController::setImageStamp);
        QKeyEvent event(QEvent::KeyPress, key, modifiers, place, 0, native);
        QCoreApplication::sendEvent(&view, &event);
        return view.currentToolType();
    };
    EXPECT_EQ(toolAfter(VPlace, Qt::Key_K, {}, 0), ToolTypeSelect);
    EXPECT_EQ(toolAfter(SPlace, Qt::Key_O, {}, 0), ToolTypeImageStamp);
    EXPECT_EQ(toolAfter(60, Qt::Key_V, {}, 0), ToolTypeTextStamp);
    EXPECT_EQ(toolAfter(VPlace, Qt::Key_V, Qt::ShiftModifier, 0), ToolTypeTextStamp);
    EXPECT_EQ(toolAfter(VPlace, Qt::Key_V, {}, CapsLock), ToolTypeTextStamp);
}

TEST_F(PDFWindowControllerTest, ChoosesASignatureAndFallsBackToSelectWithoutOne)
{
    answerDialog(&ImageStampSelectionController::setImageStamp);
    part<QAction>("actionSignatureTool").trigger();
    EXPECT_EQ(controller.currentToolType(), ToolTypeImageStamp);
    EXPECT_EQ(view.stampImage(), ImageStampCollection::stampImageAtIndex(0));
    answerDialog(&ImageStampSelectionController::closeDialog);
    click("toolSelectionControl", 1);
    EXPECT_EQ(controller.currentToolType(), ToolTypeSelect);
    EXPECT_EQ(part<SegmentedControl>("toolSelectionControl").selectedSegment(), 0);
    NotificationCenter::defaultCenter().post(QStringLiteral("PDF_VIEW_REQUEST_CHANGE_TOOL"), nullptr,
                                             {{QStringLiteral("toolType"), 2}});
    EXPECT_EQ(controller.currentToolType(), ToolTypeTextStamp);
    part<QAction>("actionSelectTool").trigger();
    EXPECT_EQ(controller.currentToolType(), ToolTypeSelect);
}

TEST_F(PDFWindowControllerTest, ZoomsAndTurnsByTheTagsOfItsControls)
{
    click("zoomControl", 1);
    EXPECT_EQ(view.scaleFactor(), 1);
    click("zoomControl", 0);
    EXPECT_GT(view.scaleFactor(), 1);
    click("zoomOutControl", 0);
    EXPECT_NEAR(view.scaleFactor(), 1, 1e-6);
    click("zoomControl", 2);
    EXPECT_NEAR(view.scaleFactor() * 792, view.viewBounds().height * 0.95, 0.01);
    click("zoomControl", 3);
    EXPECT_NEAR(view.scaleFactor() * 612, view.viewBounds().width * 0.95, 0.01);

    const PDFPage *page = view.currentPage();
    click("rotateControl", 0);
    EXPECT_EQ(page->rotation(), 270);
    click("rotateControl", 1);
    EXPECT_EQ(page->rotation(), 0);
    click("rotateControl", 2);
    EXPECT_EQ(page->rotation(), 180);
    EXPECT_EQ(controller.pdfDoc()->indexForPage(page), 2);
}

TEST_F(PDFWindowControllerTest, ThePageAreaAsksForPasswordsUntilOneFitsAndSaysWhyAFileIsNotShown)
{
    const PDFDocumentModel &locked =
        open(makeFile("b.pdf", troubleSample(QStringLiteral("encrypted-with-password")).bytes));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !locked.pdfDoc()->message().isEmpty(); }));
    auto *field = locked.pdfWindowController()->window()->findChild<QLineEdit *>(QStringLiteral("passwordField"));
    const auto *sidePanel = field->window()->findChild<PDFThumbnailView *>();
    for (const char *password : {"wrong", "secret"}) {
        EXPECT_TRUE(field->isVisible() && field->isEnabled() && field->text().isEmpty());
        EXPECT_FALSE(sidePanel->isVisible());
        EXPECT_EQ(field->window()->focusWidget(), field);
        QTest::keyClicks(field, QLatin1String(password));
        QSignalSpy changed(locked.pdfDoc(), &inkory::PDFDocument::stateChanged);
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_TRUE(changed.wait());
    }
    EXPECT_TRUE(!field->isVisible() && locked.pdfWindowController()->pdfView()->isVisible());
    EXPECT_TRUE(sidePanel->isVisible());

    PDFDocumentModel &bad = open(makeFile("c.pdf", "no PDF at all"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !bad.pdfDoc()->message().isEmpty(); }));
    const auto *label =
        bad.pdfWindowController()->window()->findChild<QLabel *>(QStringLiteral("documentStateMessage"));
    EXPECT_TRUE(label->isVisible() && label->text() == bad.pdfDoc()->message());
    bad.saveDocument(nullptr);
    EXPECT_FALSE(bad.isSaving());
    EXPECT_EQ(questions.value(0).value(1), bad.pdfDoc()->message());
}

TEST_F(PDFWindowControllerTest, SaveAsksItsQuestionAndClosingDoesNot)
{
    document.undoManager().noteChangeWithoutStep();
    answers = {0};
    document.saveDocument(nullptr);
    EXPECT_EQ(questions.value(0).join(u'|'),
              QStringLiteral("Save the document?|This will permanently modify the document.|OK|Cancel"));
    EXPECT_FALSE(document.isSaving());

    QFile::remove(document.fileUrl().toLocalFile());
    document.saveDocument(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !document.isSaving(); }));
    EXPECT_EQ(qpdfCheck(document.fileUrl().toLocalFile()), QString());

    document.undoManager().noteChangeWithoutStep();
    document.close();
    EXPECT_TRUE(QTest::qWaitFor([] { return documents().isEmpty(); }));
    EXPECT_EQ(questions.size(), 4);
    EXPECT_EQ(questions.value(2).first(), QStringLiteral("“a.pdf” was moved or deleted by another program."));
    EXPECT_EQ(questions.last().first(), QStringLiteral("Save changes to “a.pdf” before closing?"));
}

TEST_F(PDFWindowControllerTest, ForeignNamesAreShownAsOneHarmlessLine)
{
    const PDFDocumentModel &foreign = open(makeFile("a\n\u202eb&<b>[*].pdf"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return documentController.recentDocumentURLs().contains(foreign.fileUrl()); }));
    EXPECT_TRUE(
        foreign.pdfWindowController()->window()->windowTitle().startsWith(QStringLiteral("a \ufffdb&<b>[*][*].pdf")));
    auto &menu = part<QMenu>("menuOpenRecent");
    Q_EMIT menu.aboutToShow();
    EXPECT_EQ(menu.actions().first()->text(), QStringLiteral("a \ufffdb&&<b>[*].pdf"));
    EXPECT_TRUE(menu.actions().first()->toolTip().contains(QStringLiteral("/a \ufffdb&amp;&lt;b&gt;[*].pdf")));
}

TEST_F(PDFWindowControllerTest, ARepairedDocumentSaysSoUntilTheNoticeIsClosed)
{
    EXPECT_FALSE(part<NoticeStrip>("noticeStrip").isVisible());
    const QByteArray readOnly = troubleSample(QStringLiteral("protected-against-changes")).bytes;
    for (const QByteArray &damaged : {troubleSample(QStringLiteral("no-cross-references")).bytes,
                                      QByteArray(readOnly).replace("startxref\n", "startxref\n9")}) {
        const PDFDocumentModel &repaired = open(makeFile(damaged.contains("/Encrypt") ? "c.pdf" : "b.pdf", damaged));
        EXPECT_TRUE(QTest::qWaitFor([&] { return repaired.pdfDoc()->isGeometrySettled(); }));
        const auto *strip = repaired.pdfWindowController()->window()->findChild<NoticeStrip *>();
        EXPECT_TRUE(strip->isVisible());
        EXPECT_EQ(strip->findChild<QLabel *>(QStringLiteral("noticeText"))->text().contains(QStringLiteral("sign it")),
                  repaired.pdfDoc()->canSave());
        strip->findChild<QToolButton *>()->click();
        EXPECT_FALSE(strip->isVisible());
    }
}

TEST_F(PDFWindowControllerTest, ALongOpeningCanBeCancelledWithoutAQuestion)
{
    DocumentStatePage page;
    page.show();
    page.showState(inkory::PDFDocument(), QStringLiteral("slow.pdf"));
    const auto *cancel = page.findChild<QPushButton *>(QStringLiteral("cancelOpeningButton"));
    EXPECT_FALSE(cancel->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return cancel->isVisible(); }, 3000));
    document.undoManager().noteChangeWithoutStep();
    part<QPushButton>("cancelOpeningButton").click();
    EXPECT_TRUE(documents().isEmpty() && questions.isEmpty());
}

TEST_F(PDFWindowControllerTest, APressOnTryAgainIsNoPressOnThePage)
{
    const PDFDocumentModel &failing = open(makeFile("b.pdf", makePdf({{}, {}}).replace("/Count 2", "/Count 3")));
    KRPDFView &failingView = *failing.pdfWindowController()->pdfView();
    EXPECT_TRUE(QTest::qWaitFor([&] { return failing.pdfDoc()->isGeometrySettled(); }));
    failingView.goToPage(2);
    failingView.setStampImage(ImageStampCollection::stampImageAtIndex(0));
    failingView.setCurrentToolType(ToolTypeImageStamp);
    const auto button = [&] { return failingView.findChild<QPushButton *>(QStringLiteral("drawAgainButton")); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return button() && button()->isVisible(); }));
    QWindow *shownWindow = failingView.window()->windowHandle();
    const QPoint place = button()->mapTo(failingView.window(), button()->rect().center());
    QSignalSpy refused(&failingView, &KRPDFView::placementRefused);
    QTest::mouseDClick(shownWindow, Qt::LeftButton, {}, place);
    EXPECT_EQ(refused.count(), 0);
    QTest::mouseClick(shownWindow, Qt::LeftButton, {}, place + QPoint(0, 100));
    EXPECT_EQ(refused.count(), 1);
}

} // namespace inkory::test
