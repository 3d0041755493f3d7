#include "V1/editing/StampDrag.h"
#include "platform/pdf/PageGeometry.h"
#include "support/Tools.h"

using namespace inkory;

namespace
{

/// A page of 600 x 800 units whose upper left corner, as shown, is `top` pixels below that of a view of 800 pixels'
/// height, and 10 pixels to the right of it. Unturned, at zoom 1 and with top 0, y is the same in both spaces.
PageInView shownPage(int rotation, double zoom = 1, double top = 0)
{
    const QTransform toView = shownPageTransform({0, 0, 600, 800}, rotation) * QTransform::fromScale(zoom, zoom) *
                              QTransform::fromTranslate(10, top) * QTransform(1, 0, 0, -1, 0, 800);
    const QTransform toPage = toView.inverted();
    return {rotation, [=](const PageRect &rect) { return fromQRectF<ViewSpace>(toView.mapRect(toQRectF(rect))); },
            [=](const ViewRect &rect) { return fromQRectF<PageSpace>(toPage.mapRect(toQRectF(rect))); },
            [=](const ViewPoint &point) {
                const QPointF mapped = toPage.map(QPointF(point.x, point.y));
                return PagePoint{mapped.x(), mapped.y()};
            }};
}

void expectNear(const PageRect &found, const PageRect &wanted, double tolerance = 1e-9)
{
    test::expectNear(toQRectF(found), toQRectF(wanted), tolerance);
}

// The frame (100, 600, 40, 100) of an unturned page is shown 100 units right of and 100 units below its page's corner,
// and the other page's corner is 1424 units below that one's at half size and 812 at double size: so it is shown from
// 1324, or 712, units above.
TEST(StampDrag, CrossingKeepsThePlaceOnScreenAndGoesWhereThePointerGoes)
{
    struct
    {
        int rotation;
        double zoom;
        bool isOdd;
        PageRect frame;  // in the space of a page of this rotation below the unturned one
        PagePoint moved; // by 10 pixels to the right and 6 upward
    } const cases[] = {
        {0, 0.5, false, {100, 2024, 40, 100}, {20, 12}},      {90, 0.5, true, {-1324, 100, 100, 40}, {-12, 20}},
        {180, 0.5, false, {460, -1324, 40, 100}, {-20, -12}}, {270, 0.5, true, {1824, 660, 100, 40}, {12, -20}},
        {0, 2, false, {100, 1412, 40, 100}, {5, 3}},          {90, 2, true, {-712, 100, 100, 40}, {-3, 5}},
        {180, 2, false, {460, -712, 40, 100}, {-5, -3}},      {270, 2, true, {1212, 660, 100, 40}, {3, -5}}};
    for (const auto &[rotation, zoom, isOdd, frame, moved] : cases) {
        SCOPED_TRACE(rotation);
        EXPECT_EQ(isOddTurn(0, rotation), isOdd);
        EXPECT_EQ(isOddTurn(rotation, 180), isOdd);
        const PageInView from = shownPage(0, zoom, 20);
        const PageInView to = shownPage(rotation, zoom, zoom < 1 ? 732 : 1644);
        expectNear(frameOnOtherPage({100, 600, 40, 100}, from, to), frame);
        expectNear(movedFrame({1, 2, 3, 4}, to, {{300, 400}, {310, 406}}), {1 + moved.x, 2 + moved.y, 3, 4});
    }
}

constexpr PageRect wide{100, 500, 100, 40};
const auto kept = Proportions::Kept;
const auto freely = Proportions::Free;

// At the minimum the raw step is cut, and only then made proportional. (100, 500, 40, 100) is shown 100 wide and 40
// high on pages that lie on their side. The corner that stays is the one with the smallest x and y at 90 degrees, the
// largest x and smallest y at 180, the largest of both at 270.
TEST(StampDrag, ResizingKeepsTheUpperLeftCorner)
{
    struct
    {
        PageRect frame;
        QPointF step; // pixels to the right, pixels upward
        Proportions proportions;
        PageRect wanted;
        int rotation = 0;
        double zoom = 1;
    } const cases[] = {{wide, {50, 0}, kept, {100, 480, 150, 60}}, //
                       {wide, {-50, 0}, kept, wide},               // cancelled by the comparison
                       {wide, {0, -30}, kept, wide},               // the same
                       {wide, {0, 10}, kept, {100, 510, 75, 30}},
                       {wide, {10, -20}, kept, {100, 496, 110, 44}}, // width: 0.1 > -0.5
                       {wide, {-10, -20}, kept, {100, 504, 90, 36}}, // width: -0.1 > -0.5
                       {wide, {-50, -30}, freely, {100, 470, 50, 70}},
                       {{100, 500, 60, 30}, {0, 10}, kept, {100, 506, 48, 24}},
                       {{100, 500, 100, 30}, {-40, -30}, kept, {100, 512, 60, 18}},
                       {wide, {-90, 30}, freely, {100, 516, 24, 24}},
                       {wide, {0, 80}, freely, {100, 528, 100, 12}, 0, 2},
                       {wide, {0, 1}, freely, {100, 492, 100, 48}, 0, 0.5},
                       {{1, 2, 0, 5}, {30, 0}, freely, {1, 2, 0, 5}},
                       {{1, 2, 10, 4}, {0, 0}, freely, {1, 2, 10, 4}}, // below the minimum
                       {{100, 500, 40, 100}, {50, 0}, kept, {100, 500, 60, 150}, 90},
                       {wide, {50, 0}, kept, {50, 500, 150, 60}, 180},
                       {{100, 500, 40, 100}, {50, 0}, kept, {80, 450, 60, 150}, 270},
                       {wide, {50, 0}, kept, {100, 490, 125, 50}, 0, 2},
                       {{100, 500, 200, 80}, {50, 0}, kept, {100, 460, 300, 120}, 0, 0.5}};
    for (const auto &[frame, step, proportions, wanted, rotation, zoom] : cases) {
        SCOPED_TRACE(step.x());
        const PointerStep pointer{{40, 50}, {40 + step.x(), 50 + step.y()}};
        expectNear(resizedFrame(frame, shownPage(rotation, zoom), pointer, proportions), wanted);
    }
}

TEST(StampDrag, StepsCountInSinglePrecision)
{
    const auto resized = [](QPointF step, Proportions proportions) {
        return resizedFrame({100, 500, 100, 33}, shownPage(0), {{0, 0}, {step.x(), step.y()}}, proportions);
    };
    // The nearest to 0.1 and to 0.33: 0.100000001490116 and 0.330000013113022.
    expectNear(resized({0.1, 0}, freely), {100, 500, 100.100000001490116, 33}, 1e-12);
    expectNear(resized({1, 0}, kept), {100, 499.669999986886978, 101, 33.330000013113022}, 1e-12);
}

} // namespace
