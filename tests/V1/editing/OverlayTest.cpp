#include "V1/editing/EditingFixture.h"
#include "support/Helpers.h"

#include <QTimer>

#include <csignal>

using namespace inkory;
using namespace inkory::test;

namespace
{

int paintsWithin(int milliseconds, QWidget &widget)
{
    struct PaintCounter : QObject
    {
        bool eventFilter(QObject *, QEvent *event) override
        {
            paints += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
        int paints = 0;
    } counter;
    widget.installEventFilter(&counter);
    QTest::qWait(milliseconds);
    return counter.paints;
}

TEST_F(EditingFixture, TheToolbarStandsOnePixelAboveTheStampAtEveryZoomAndScrolling)
{
    open(threePages());
    useImageTool();
    EXPECT_FALSE(view->overlays().isToolbarShown());
    view->setScaleFactor(1);
    view->addImageStampView(view->convertPointFromPage({300, 600}, &page(0)));
    const StampViewOverlay *overlay = view->overlays().stampViewOverlay();
    const QWidget *toolbar = view->stampViewToolbar();
    for (const double factor : {1.0, 0.5, 1.37, 2.0}) {
        view->setScaleFactor(factor);
        view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() + 17);
        const ViewRect stamp = view->stampRect(*view->selectedStampView());
        EXPECT_NEAR(stamp.width, 100 * factor, 1e-9);
        EXPECT_NEAR(overlay->x(), stamp.x, 0.51) << factor;
        EXPECT_NEAR(overlay->y(), view->height() - stamp.maxY(), 0.51) << factor;
        EXPECT_NEAR(toolbar->geometry().bottom() + 1 + 1, view->height() - stamp.maxY(), 0.51) << factor;
        EXPECT_NEAR(toolbar->x(), stamp.x, 0.51) << factor;
        // The handle: lower right corner, as large as the resize cursor's image (16 x 16).
        const ViewRect handle = view->stampOverlayResizeRect();
        EXPECT_NEAR(handle.maxX(), stamp.maxX(), 1e-9);
        EXPECT_NEAR(handle.y, stamp.y, 1e-9);
        EXPECT_EQ(handle.width, OverlayTracking::resizeCursorSize().width());
    }
    view->setCurrentToolType(ToolTypeSelect);
    view->setScaleFactor(1);
    view->goToPage(0);
    QCoreApplication::processEvents();
    click(view->rotateStampCWButton()->mapTo(&window, QPoint(10, 10)));
    EXPECT_EQ(view->selectedStampView()->stampRotation(), 3);
    EXPECT_EQ(view->selectedStampView()->frame().height, 100);
    view->setSelectedStampView(nullptr);
    EXPECT_FALSE(overlay->isVisible());
    EXPECT_FALSE(toolbar->isVisible());
}

TEST_F(EditingFixture, TheHighlightFollowsThePointerButNotOntoTheSelectedStamp)
{
    open(threePages());
    useImageTool();
    click(windowPoint(0, {300, 700}));
    click(windowPoint(0, {300, 600}));
    const QWidget *highlight = view->overlays().highlightedViewOverlay();
    for (const QWidget *beside :
         {static_cast<QWidget *>(view->verticalScrollBar()), static_cast<QWidget *>(view->rotateStampCWButton())}) {
        QTest::mouseMove(window.windowHandle(), windowPoint(0, {300, 700}));
        EXPECT_TRUE(QTest::qWaitFor([&] { return highlight->isVisible(); }, 1000));
        EXPECT_EQ(view->viewport()->cursor().shape(), Qt::ArrowCursor);
        QTest::mouseMove(window.windowHandle(), beside->mapTo(&window, beside->rect().center()));
        view->viewport()->repaint();
        QCoreApplication::processEvents();
        EXPECT_FALSE(highlight->isVisible());
    }
    QTest::mouseMove(window.windowHandle(), windowPoint(0, {300, 600}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !highlight->isVisible(); }, 1000));
    QTest::mouseMove(window.windowHandle(), windowPoint(0, {100, 500}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return view->viewport()->cursor().shape() == Qt::BitmapCursor; }, 1000))
        << "the stamp cursor over empty page area";
    EXPECT_EQ(view->rotateStampCWButton()->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(EditingFixture, AnIdleWindowPaintsNothing)
{
    open(threePages());
    useImageTool();
    click(windowPoint(0, {300, 600}));
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->isContentComplete(); }, 10000));
    QTest::qWait(100);
    EXPECT_EQ(paintsWithin(1000, *view->viewport()), 0);
    view->viewport()->update();
    const int paints = paintsWithin(200, *view->viewport());
    EXPECT_TRUE(paints == 1 || paints == 2) << paints;
}

TEST_F(EditingFixture, APageThatTakesLongSaysSoAndShowsItsStamps)
{
    open(threePages());
    useImageTool();
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->isContentComplete(); }, 10000));
    QTimer stopper;
    QObject::connect(&stopper, &QTimer::timeout, [] { signalHelpers(SIGSTOP); });
    stopper.start(1);
    signalHelpers(SIGSTOP);
    view->goToPage(2);
    click(windowPoint(2, {200, 700}));
    const auto picture = [this] { return view->viewport()->grab().toImage(); };
    const auto saysSo = [&] { // in the middle of what is seen
        return !findInkBounds(picture().copy(250, 235, 180, 40), QColor(0x60, 0x60, 0x60), 40).isEmpty();
    };
    QTest::qWait(100);
    EXPECT_FALSE(saysSo());
    EXPECT_EQ(paintsWithin(1000, *view->viewport()), 1);
    EXPECT_TRUE(saysSo());
    view->setSelectedStampView(nullptr);
    EXPECT_EQ(findInkBounds(picture(), Qt::blue, 60).size(), QSize(100, 40));
    stopper.stop();
    signalHelpers(SIGCONT);
    EXPECT_TRUE(QTest::qWaitFor([this] { return view->isContentComplete(); }, 10000));
    EXPECT_FALSE(saysSo());
}

} // namespace
