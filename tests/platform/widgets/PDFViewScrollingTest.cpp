#include "ShownView.h"

#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QProxyStyle>
#include <QWheelEvent>

#include <limits>

using namespace inkory;
using namespace inkory::test;

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

class FixedAnimations : public QProxyStyle
{
public:
    int milliseconds = 0;

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override
    {
        return hint == SH_Widget_Animation_Duration ? milliseconds : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

/// Takes fingers in one place, and notes what a mouse does.
class TouchedView : public PDFView
{
public:
    QRectF claimed; // in the viewport
    QStringList mouse;

protected:
    bool claimsTouch(const ViewPoint &point) const override
    {
        return claimed.contains(QPointF(point.x, height() - point.y));
    }
    void mousePressEvent(QMouseEvent *event) override { note("press", *event); }
    void mouseMoveEvent(QMouseEvent *event) override { note("move", *event); }
    void mouseReleaseEvent(QMouseEvent *event) override { note("release", *event); }

private:
    void note(const char *what, const QMouseEvent &event)
    {
        mouse +=
            QStringLiteral("%1 %2,%3").arg(QLatin1String(what)).arg(event.position().x()).arg(event.position().y());
    }
};

// Pages of US letter stand 12, 816, 1620 ... pixels from the top.
class Scrolled : public ShownView<TouchedView>
{
protected:
    Scrolled() { view.setStyle(&style); }
    ~Scrolled() override { view.setStyle(nullptr); }

    // How far the document's upper left corner is beyond the view's.
    QPointF position() const
    {
        const ViewRect frame = view.documentViewFrame();
        return {-frame.x, frame.maxY() - view.height()};
    }

    void turnWheel(QPoint angle, QPoint pixels = {}, Qt::KeyboardModifiers modifiers = {})
    {
        const QPointF at(200, 100);
        QWheelEvent event(at, view.mapToGlobal(at), pixels, angle, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(view.viewport(), &event);
    }

    FixedAnimations style;
    std::unique_ptr<QPointingDevice> screen{QTest::createTouchDevice()};
};

// 10,000 x (14,400 x 64 + 12) + 12 pixels.
TEST_F(Scrolled, EachOfTenThousandHugePagesIsReachedExactly)
{
    open(makePdf(std::vector<PageSpec>(10'000, PageSpec{.mediaBox = "0 0 14400 14400"})));
    view.setScaleFactor(64);
    EXPECT_EQ(view.documentViewFrame().height, 9'216'120'012.0);
    for (const int page : {9'999, 1, 5'000, 0, 9'998}) {
        view.goToPage(page);
        ASSERT_EQ(view.currentPageIndex(), page);
        const auto top = [&] { return view.convertPointFromPage({0, 14'400}, document.pageAtIndex(page)).y; };
        EXPECT_NEAR(top(), view.height() - 12, 1e-5);
        turnWheel({0, -120});
        EXPECT_NEAR(top(), view.height() - 12 + 120, 1e-5);
        turnWheel({0, 15});
        EXPECT_NEAR(top(), view.height() - 12 + 105, 1e-5);
    }
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    const double bottom = view.visibleRect().y;
    EXPECT_NEAR(view.convertPointFromPage({0, 0}, document.pageAtIndex(9'999)).y, bottom + 12, 1e-5);
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 2);
    EXPECT_NEAR(position().y() / 9'216'120'012.0, 0.5, 1e-4);
}

TEST_F(Scrolled, WheelsAndTouchpadsMoveAsFarAsTheySay)
{
    open(manyPages(5));
    view.setScaleFactor(2);
    view.goToPage(2);
    struct Turn
    {
        QPoint angle;
        QPoint pixels;
        Qt::KeyboardModifiers modifiers;
        QPointF moved;
    };
    const double notch = 40.0 * QApplication::wheelScrollLines();
    for (const Turn &turn :
         {Turn{{0, -120}, {}, {}, {0, notch}}, Turn{{0, -15}, {}, {}, {0, notch / 8}},
          Turn{{0, -120}, {0, -7}, {}, {0, 7}}, Turn{{-120, 0}, {-3, 0}, {}, {3, 0}},
          Turn{{-240, 120}, {}, {}, {2 * notch, -notch}}, Turn{{0, 120}, {}, Qt::ShiftModifier, {-notch, 0}},
          Turn{{0, 120}, {0, 11}, Qt::ShiftModifier, {-11, 0}}}) {
        const QPointF before = position();
        turnWheel(turn.angle, turn.pixels, turn.modifiers);
        EXPECT_EQ(position() - before, turn.moved);
    }
    const QPointF before = position();
    for (int i = 0; i < 120; ++i)
        turnWheel({0, -1}); // each one a fraction of a pixel at three lines and less
    EXPECT_EQ(position() - before, QPointF(0, notch));
}

TEST_F(Scrolled, NotchesGlideToExactlyTheirSum)
{
    open(manyPages(5));
    style.milliseconds = 200;
    turnWheel({0, -120});
    EXPECT_EQ(position().y(), 0) << "not at once";
    turnWheel({0, -120});
    EXPECT_TRUE(QTest::qWaitFor([this] { return position().y() == 80.0 * QApplication::wheelScrollLines(); }));
    turnWheel({0, -120});
    QTest::keyClick(&view, Qt::Key_Home);
    QTest::qWait(150);
    EXPECT_EQ(position().y(), 0) << "what comes later wins";
}

// Close to the document's corner the point under the pointer cannot be kept all the way.
TEST_F(Scrolled, ZoomingToAndFroComesBack)
{
    open(manyPages(20));
    for (const int page : {0, 10, 19}) {
        view.setScaleFactor(1);
        view.goToPage(page);
        turnWheel({}, {0, -33});
        const QPointF before = position();
        const PDFPage *anchored = view.pageForPoint({200, 380}, PageSearch::Nearest);
        const PagePoint kept = view.convertPointToPage({200, 380}, anchored);
        for (int i = 0; i < 40; ++i)
            turnWheel({0, i % 20 < 10 ? 120 : -120}, {}, Qt::ControlModifier);
        for (int i = 0; i < 40; ++i)
            turnWheel({0, i % 20 < 10 ? -120 : 120}, {}, Qt::ControlModifier);
        EXPECT_NEAR(view.scaleFactor(), 1, 1e-9);
        EXPECT_LT((position() - before).manhattanLength(), 1) << page;
        const QPointF at(200, 100);
        QNativeGestureEvent pinch(Qt::ZoomNativeGesture, screen.get(), 2, at, at, at, 2.0, {});
        QCoreApplication::sendEvent(view.viewport(), &pinch);
        EXPECT_NEAR(view.scaleFactor(), 3, 1e-9);
        EXPECT_NEAR(view.convertPointFromPage(kept, anchored).y, 380, 1);
    }
}

TEST_F(Scrolled, WhatStaysWhereItIsIsFoundAnewAfterResizing)
{
    open(manyPages(5));
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    view.setScaleFactor(1.2, {200, 380});
    view.resize(640, 700); // the end of the document stays at the lower edge
    const PDFPage *page = view.pageForPoint({200, 600}, PageSearch::Nearest);
    const PagePoint kept = view.convertPointToPage({200, 600}, page);
    view.setScaleFactor(1.5, {200, 600});
    EXPECT_NEAR(view.convertPointFromPage(kept, page).y, 600, 1);
}

TEST_F(Scrolled, KeysScroll)
{
    open(manyPages(5));
    const int shown = view.viewport()->height();
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&view, key, modifiers);
        return position().y();
    };
    EXPECT_EQ(press(Qt::Key_PageDown), shown - 40);
    EXPECT_EQ(press(Qt::Key_Space), 2 * (shown - 40));
    EXPECT_EQ(press(Qt::Key_Space, Qt::ShiftModifier), shown - 40);
    EXPECT_EQ(press(Qt::Key_PageUp), 0);
    EXPECT_EQ(press(Qt::Key_Down), 40);
    EXPECT_EQ(press(Qt::Key_Up), 0);
    EXPECT_EQ(press(Qt::Key_End), 5 * 804 + 12 - shown);
    EXPECT_EQ(view.currentPageIndex(), 4);
    EXPECT_EQ(press(Qt::Key_Home), 0);
    view.resize(900, 480); // nothing to scroll sideways
    EXPECT_EQ(press(Qt::Key_Right), 804);
    EXPECT_EQ(press(Qt::Key_Left), 0);
}

TEST_F(Scrolled, OneFingerScrollsTapsAndDragsWhatIsClaimed)
{
    open(manyPages(5));
    view.goToPage(2);
    const QPointF before = position();
    const auto touch = [&] { return QTest::touchEvent(view.viewport(), screen.get()); };
    touch().press(0, {300, 400}, view.viewport());
    for (int y = 390; y >= 200; y -= 10)
        touch().move(0, {300, y}, view.viewport());
    EXPECT_TRUE(QTest::qWaitFor([&] { return position().y() - before.y() > 120; })); // frame by frame
    EXPECT_LE(position().y() - before.y(), 200);
    touch().release(0, {300, 200}, view.viewport());
    EXPECT_EQ(view.mouse, QStringList());
    view.goToPage(1); // ends the gliding

    const auto stroke = [&](const QPoint &to, const QPoint &end) {
        touch().press(0, {300, 100}, view.viewport());
        touch().move(0, to, view.viewport());
        touch().release(0, end, view.viewport());
    };
    stroke({301, 100}, {301, 100});
    EXPECT_EQ(view.mouse.join(u';'), QStringLiteral("press 301,100;release 301,100"));
    view.mouse.clear();

    view.claimed = QRectF(250, 50, 100, 100);
    const QPointF stays = position();
    stroke({300, 300}, {300, 310});
    EXPECT_EQ(view.mouse.join(u';'), QStringLiteral("press 300,100;move 300,300;release 300,310"));
    EXPECT_EQ(position(), stays);
}

TEST_F(Scrolled, ADragFollowsItsOwnFingerOnly)
{
    open(manyPages(5));
    view.claimed = QRectF(250, 50, 100, 100);
    const QPointF stays = position();
    auto touch = QTest::touchEvent(view.viewport(), screen.get(), false);
    touch.press(3, {300, 100}, view.viewport()).commit();
    touch.stationary(3).press(1, {100, 100}, view.viewport()).commit();
    touch.move(3, {300, 200}, view.viewport()).move(1, {120, 100}, view.viewport()).commit();
    touch.stationary(3).release(1, {120, 100}, view.viewport()).commit();
    touch.stationary(3).press(2, {400, 100}, view.viewport()).commit();
    touch.release(3, {300, 210}, view.viewport()).stationary(2).commit();
    touch.move(2, {400, 300}, view.viewport()).commit();
    touch.release(2, {400, 300}, view.viewport()).commit();
    EXPECT_EQ(view.mouse.join(u';').toStdString(), "press 300,100;move 300,200;release 300,210");
    EXPECT_EQ(position(), stays);
}

TEST_F(Scrolled, TwoFingersZoomAboutWhatIsBetweenThem)
{
    open(manyPages(5));
    view.goToPage(2);
    const PDFPage *page = document.pageAtIndex(2);
    auto touch = QTest::touchEvent(view.viewport(), screen.get(), false);
    touch.press(0, {250, 200}, view.viewport()).commit();
    touch.stationary(0).press(1, {350, 200}, view.viewport()).commit();
    const PagePoint between = view.convertPointToPage({300, 280}, page);
    touch.move(0, {200, 250}, view.viewport()).move(1, {450, 250}, view.viewport()).commit();
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 2.5);
    const ViewPoint now = view.convertPointFromPage(between, page);
    EXPECT_NEAR(now.x, 325, 0.51); // whole pixels
    EXPECT_NEAR(now.y, 230, 0.51);
    touch.stationary(0).stationary(1).press(2, {450, 350}, view.viewport()).commit();
    touch.release(0, {200, 250}, view.viewport()).stationary(1).stationary(2).commit();
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 2.5) << "another pair of fingers";
    touch.stationary(1).move(2, {450, 450}, view.viewport()).commit(); // 100 pixels apart, then 200
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 5);
    touch.release(1, {450, 250}, view.viewport()).release(2, {450, 450}, view.viewport()).commit();
    EXPECT_EQ(view.mouse, QStringList());
}

// Pixel by pixel what the engine drew, also after scrolling by fractions of a pixel.
TEST_F(Scrolled, PagesAreShownAsTheyWereDrawn)
{
    open(manyPages(3));
    view.setScaleFactor(1.37);
    view.goToPage(0);
    turnWheel({0, -33});
    turnWheel({-7, 0});
    ASSERT_TRUE(isDrawn());
    const ViewPoint corner = view.convertPointFromPage({0, 792}, document.pageAtIndex(0));
    const QPoint origin(qRound(corner.x), qRound(view.height() - corner.y));
    EXPECT_NEAR(corner.x, origin.x(), 1e-9);
    const QRect region(130, 90, 400, 300);
    QImage drawn;
    document.pageSource()->draw({0, 0, 1.37, region}, DrawPriority::Visible,
                                [&](const Result<QImage> &image) { drawn = *image; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !drawn.isNull(); }, 10000));
    const QImage shown = view.viewport()->grab().toImage().convertToFormat(drawn.format());
    EXPECT_EQ(shown.copy(region.translated(origin)), drawn);
    EXPECT_FALSE(findInkBounds(drawn, Qt::black).isEmpty());
}

TEST_F(Scrolled, BadNumbersAndSizesAreHarmless)
{
    open(makePdf({PageSpec{.mediaBox = "0 0 1 1"}, PageSpec{.mediaBox = "0 0 14400 14400"}, {}}));
    for (const auto &[wanted, reached] :
         {std::pair(nan, 1.0), {1e9, PDFView::maxScaleFactor}, {0, PDFView::minScaleFactor}}) {
        view.setScaleFactor(wanted);
        EXPECT_EQ(view.scaleFactor(), reached);
    }
    view.goToPage(2);
    for (const PDFView::Place &nowhere : {PDFView::Place{-1, {}}, PDFView::Place{3, {}}, PDFView::Place{1, {nan, 0}}}) {
        view.goToPlace(nowhere);
        EXPECT_EQ(view.currentPageIndex(), 2);
    }
    for (const double zoom : {64.0, 0.1, 1.0}) {
        view.setScaleFactor(zoom);
        for (int page = 0; page < 3; ++page) {
            view.goToPage(page);
            EXPECT_EQ(view.currentPageIndex(), page);
            EXPECT_TRUE(isDrawn()) << zoom << " " << page;
        }
    }
    view.resize(0, 0);
    view.goToPage(1);
    turnWheel({0, -120});
    view.resize(640, 480);
    EXPECT_EQ(view.currentPageIndex(), 1);
    view.setDocument(nullptr);
    EXPECT_EQ(view.place(), PDFView::Place());
    view.goToPlace({0, {}});
    turnWheel({0, 120}, {}, Qt::ControlModifier);
    QTest::keyClick(&view, Qt::Key_End);
    EXPECT_EQ(view.currentPageIndex(), -1);
}

} // namespace
