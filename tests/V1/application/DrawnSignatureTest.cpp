#include "ApplicationFixture.h"

#include "V1/application/AppDelegate.h"
#include "V1/capture/CaptureDevices.h"
#include "V1/capture/ColorSelectButtonCell.h"
#include "V1/capture/SignatureWindowController.h"
#include "V1/library/ImageStampCollection.h"
#include "V1/library/ImageStampSelectionController.h"

#include <QAbstractButton>
#include <QAction>
#include <QWindow>

namespace inkory::test
{

/// From the signature tool through drawing to a saved page.
class DrawnSignatureTest : public ApplicationFixture
{
protected:
    DrawnSignatureTest()
    {
        ImageStampCollection::forgetSharedState();
        CaptureDevices::setTouchpadOpener([] { return Touchpad(); });
    }
    ~DrawnSignatureTest() override
    {
        ImageStampSelectionController::setSignatureWindowRunner({});
        ImageStampSelectionController::releaseShared();
        SignatureWindowController::releaseShared();
        CaptureDevices::setTouchpadOpener({});
    }

    /// Acts in the modal window of that name when it is there.
    static void whenShown(const char *name, const std::function<void(QWidget &)> &action)
    {
        auto *looking = new QTimer(qApp);
        looking->callOnTimeout([=] {
            QWidget *shown = modalWindow();
            if (!shown || shown->objectName() != QLatin1String(name) || !shown->isActiveWindow())
                return;
            looking->stop();
            looking->deleteLater();
            action(*shown);
        });
        looking->start(10);
    }
    static void click(QWidget &window, const char *button)
    {
        window.findChild<QAbstractButton *>(QLatin1String(button))->click();
    }
    static void draw(QWidget &window)
    {
        window.findChildren<ColorSelectButtonCell *>().at(11)->click(); // red
        const auto *pad = window.findChild<QWidget *>(QStringLiteral("signaturePadView"));
        const QPoint start = pad->mapTo(&window, QPoint(50, 50));
        QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, start);
        QTest::mouseMove(window.windowHandle(), start + QPoint(60, 0));
        QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, start + QPoint(60, 0));
        click(window, "doneButton");
    }

    AppDelegate delegate;
};

TEST_F(DrawnSignatureTest, IsPlacedByTheNextClickOnThePage)
{
    delegate.applicationWillFinishLaunching();
    PDFDocumentModel &document = open(makeFile("a.pdf", makePdf({{}})));
    PDFWindowController &controller = *document.pdfWindowController();
    QWidget &window = *controller.window();
    ASSERT_TRUE(QTest::qWaitFor([&] { return document.pdfDoc()->canSave(); }));

    whenShown("ImageStampSelection", [](QWidget &dialog) { click(dialog, "createSignatureButton"); });
    whenShown("SignatureWindow", draw);
    window.findChild<QAction *>(QStringLiteral("actionSignatureTool"))->trigger();
    EXPECT_EQ(controller.currentToolType(), ToolTypeImageStamp);
    ASSERT_EQ(ImageStampCollection::count(), 1);
    KRPDFView &view = *controller.pdfView();
    EXPECT_EQ(view.stampImage(), ImageStampCollection::stampImageAtIndex(0));

    const QPoint middle = view.viewport()->mapTo(&window, view.viewport()->rect().center());
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, middle);
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(window.windowHandle(), Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !document.isDocumentEdited() && !document.isSaving(); }));
    // A line of 5 points, 60 long, in its own size.
    const QImage page = renderWithPdftoppm(document.fileUrl().toLocalFile(), 1);
    const QRect ink = findInkBounds(page, Qt::red);
    EXPECT_NEAR(ink.width(), 65, 2);
    EXPECT_NEAR(ink.height(), 5, 2);
    document.close();
}

} // namespace inkory::test
