#include "ShownView.h"

#include "support/Helpers.h"

#include <QPushButton>

#include <csignal>
#include <stop_token>
#include <thread>

using namespace inkory;
using namespace inkory::test;

namespace
{

using PDFViewTest = ShownView<>;

// A shown box of 300 x 500 at (100, 200): where its corners come to stand when the page is turned clockwise.
TEST_F(PDFViewTest, ConversionFollowsRotationCropBoxAndZoom)
{
    struct
    {
        const char *rotate;
        ViewPoint lowerLeft; // of the crop box, relative to the shown page's lower left corner, in points
        ViewPoint lowerRight;
    } const cases[] = {{"0", {0, 0}, {300, 0}},
                       {"90", {0, 300}, {0, 0}},
                       {"180", {300, 500}, {0, 500}},
                       {"270", {500, 0}, {500, 300}}};
    std::vector<PageSpec> pages(6);
    for (std::size_t i = 0; i < 4; ++i)
        pages[i + 1] = PageSpec{.cropBox = "100 200 400 700", .rotate = cases[i].rotate};
    open(makePdf(pages));
    for (int index = 1; index <= 4; ++index) {
        SCOPED_TRACE(index);
        const auto &[rotate, lowerLeft, lowerRight] = cases[index - 1];
        const PDFPage *page = document.pageAtIndex(index);
        for (const double zoom : {1.0, 0.5, 3.0}) {
            view.setScaleFactor(zoom);
            view.goToPage(index);
            const ViewRect shown = view.convertRectFromPage({100, 200, 300, 500}, page);
            EXPECT_NEAR(shown.maxY(), view.height() - PageLayout::margin, 1) << "the page's top is at the view's";
            const auto expectAt = [&](PagePoint corner, ViewPoint relative) {
                const ViewPoint found = view.convertPointFromPage(corner, page);
                EXPECT_NEAR(found.x, shown.x + relative.x * zoom, 1e-6);
                EXPECT_NEAR(found.y, shown.y + relative.y * zoom, 1e-6);
                const PagePoint back = view.convertPointToPage(found, page);
                EXPECT_NEAR(back.x, corner.x, 1e-9);
                EXPECT_NEAR(back.y, corner.y, 1e-9);
            };
            expectAt({100, 200}, lowerLeft);
            expectAt({400, 200}, lowerRight);
            EXPECT_EQ(view.pageForPoint(shown.center(), PageSearch::Exact), page);
        }
    }
}

TEST_F(PDFViewTest, PointsBesideThePagesBelongToTheNearestOne)
{
    open(manyPages(3));
    const ViewRect second = view.convertRectFromPage({0, 0, 612, 792}, document.pageAtIndex(1));
    EXPECT_EQ(view.pageForPoint({second.x - 5, second.center().y}, PageSearch::Nearest), document.pageAtIndex(1));
    EXPECT_EQ(view.pageForPoint({second.x - 5, second.center().y}, PageSearch::Exact), nullptr);
    EXPECT_EQ(view.pageForPoint({300, second.y - 2}, PageSearch::Nearest), document.pageAtIndex(1));
    EXPECT_EQ(view.pageForPoint({300, second.y - 10}, PageSearch::Nearest), document.pageAtIndex(2));
    EXPECT_EQ(view.pageForPoint({300, 1e6}, PageSearch::Nearest), document.pageAtIndex(0));
}

TEST_F(PDFViewTest, ShowsThePagesContentWhereTheConversionsSay)
{
    open(makePdf({PageSpec{
        .cropBox = "50 50 500 600", .rotate = "90", .contents = {rectangleContent(100, 120, 40, 20, "0 0 1")}}}));
    for (const double zoom : {0.75, 1.37}) {
        view.setScaleFactor(zoom);
        ASSERT_TRUE(isDrawn());
        const QRect blue = findInkBounds(view.viewport()->grab().toImage(), Qt::blue);
        const ViewRect expected = view.convertRectFromPage({100, 120, 40, 20}, document.pageAtIndex(0));
        // The drawing library covers every pixel that the square touches.
        EXPECT_NEAR(blue.left(), expected.x, 1.01);
        EXPECT_NEAR(blue.top(), view.height() - expected.maxY(), 1.01);
        EXPECT_NEAR(blue.width(), expected.width, 2.01);
        EXPECT_NEAR(blue.height(), expected.height, 2.01);
    }
}

class FailingView : public ShownView<>
{
protected:
    QPushButton *button() const { return view.findChild<QPushButton *>(QStringLiteral("drawAgainButton")); }
    bool isOffered() const { return button() && button()->isVisible(); }
    bool offers() const
    {
        return QTest::qWaitFor([this] { return view.isContentComplete() && isOffered(); }, 10000);
    }
};

// The third page is counted but missing.
TEST_F(FailingView, APageThatCannotBeDrawnOffersToTryAgainWhereThereIsRoom)
{
    open(makePdf({{}, {}}).replace("/Count 2", "/Count 3"));
    view.setScaleFactor(0.5);
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    ASSERT_TRUE(offers());
    EXPECT_TRUE(button()->accessibleName().contains(u'3'));
    button()->setFocus();
    QTest::keyClick(button(), Qt::Key_Return);
    EXPECT_TRUE(!isOffered() && view.window()->focusWidget() == &view);
    EXPECT_TRUE(offers()) << "it was tried again";
    view.setScaleFactor(PDFView::minScaleFactor); // 61 x 79 pixels are too few
    EXPECT_TRUE(QTest::qWaitFor([this] { return view.isContentComplete() && !isOffered(); }, 10000));
}

TEST_F(FailingView, TryingAgainDrawsAPageThatFailedForTheMoment)
{
    // Not next to the first page: that one may be drawn by now.
    open(makePdf({{}, {}, {}, PageSpec{.contents = {rectangleContent(100, 600, 100, 100, "0 0 1")}}}));
    ASSERT_TRUE(isDrawn());
    std::optional<std::jthread> killer{[](const std::stop_token &stop) { // on a busy machine, a timer may be too late
        while (!stop.stop_requested())
            signalHelpers(SIGKILL);
    }};
    view.goToPage(3);
    ASSERT_TRUE(offers());
    killer.reset();
    button()->click();
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return !findInkBounds(view.viewport()->grab().toImage(), Qt::blue).isEmpty(); }, 10000));
}

} // namespace
