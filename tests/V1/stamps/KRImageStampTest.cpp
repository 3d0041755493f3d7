#include "V1/stamps/StampFixture.h"

using namespace inkory;

TEST_F(StampFixture, AStampIsSizedAndCentredOnThePoint)
{
    struct
    {
        const char *name;
        int imageWidth, imageHeight, pageRotation;
        PageRect frame; // for a click at (300, 400) on a US letter page
        int stampRotation;
    } const cases[] = {{"small", 100, 40, 0, {250, 380, 100, 40}, 0},
                       {"small180", 100, 40, 180, {250, 380, 100, 40}, 2},
                       {"small90", 100, 40, 90, {280, 350, 40, 100}, 1},
                       {"small270", 100, 40, 270, {280, 350, 40, 100}, 3},
                       // 306 / 1000 in single precision is 0.30599999427795…: 200 × that
                       // is 61.19999886; half of it floored is 30
                       {"wide", 1000, 200, 0, {147, 370, 306, 61.1999988555908}, 0},
                       // limits exchanged: 396 wide, 306 high; 306 / 1000 × 400 = 122.39999771
                       {"tallOn90", 400, 1000, 90, {147, 339, 306, 122.399997711182}, 1},
                       {"odd", 101, 41, 0, {250, 380, 101, 41}, 0}, // halves rounded down
                       {"exactlyHalf", 306, 10, 0, {147, 395, 306, 10}, 0},
                       {"onePixelMore", 307, 10, 0, {147, 396, 306, 9.96742665767670}, 0}};
    for (const auto &[name, width, height, pageRotation, frame, stampRotation] : cases) {
        SCOPED_TRACE(name);
        const auto page = letterPage(pageRotation);
        const auto stamp = KRImageStamp::create(image(width, height), {300, 400, 0, 0}, &host, page.get());
        test::expectNear(toQRectF(stamp->frame()), toQRectF(frame), 1e-5);
        EXPECT_EQ(stamp->stampRotation(), stampRotation);
        EXPECT_EQ(page->stamps().size(), 1U);
    }
}
