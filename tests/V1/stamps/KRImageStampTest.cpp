#include "V1/stamps/StampFixture.h"

using namespace inkory;

namespace
{

struct Placement
{
    const char *name;
    int imageWidth, imageHeight;
    int pageRotation;
    PageRect frame; // for a click at (300, 400) on a US letter page, worked out by hand
    int stampRotation;
};

class Placing : public StampFixture, public ::testing::WithParamInterface<Placement>
{
};

TEST_P(Placing, SizesAndCentresTheStampOnThePoint)
{
    const Placement &expected = GetParam();
    const auto page = letterPage(expected.pageRotation);
    const auto stamp =
        KRImageStamp::create(image(expected.imageWidth, expected.imageHeight), {300, 400, 0, 0}, &host, page.get());
    const PageRect frame = stamp->frame();
    EXPECT_NEAR(frame.x, expected.frame.x, 1e-5);
    EXPECT_NEAR(frame.y, expected.frame.y, 1e-5);
    EXPECT_NEAR(frame.width, expected.frame.width, 1e-5);
    EXPECT_NEAR(frame.height, expected.frame.height, 1e-5);
    EXPECT_EQ(stamp->stampRotation(), expected.stampRotation);
    EXPECT_EQ(page->stamps().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Images, Placing,
                         ::testing::Values(Placement{"small", 100, 40, 0, {250, 380, 100, 40}, 0},
                                           Placement{"small180", 100, 40, 180, {250, 380, 100, 40}, 2},
                                           Placement{"small90", 100, 40, 90, {280, 350, 40, 100}, 1},
                                           Placement{"small270", 100, 40, 270, {280, 350, 40, 100}, 3},
                                           // 306 / 1000 in single precision is 0.30599999427795…: 200 × that
                                           // is 61.19999886; half of it floored is 30
                                           Placement{"wide", 1000, 200, 0, {147, 370, 306, 61.1999988555908}, 0},
                                           // limits exchanged: 396 wide, 306 high; 306 / 1000 × 400 = 122.39999771
                                           Placement{"tallOn90", 400, 1000, 90, {147, 339, 306, 122.399997711182}, 1},
                                           Placement{"exactlyHalf", 306, 10, 0, {147, 395, 306, 10}, 0},
                                           Placement{"onePixelMore", 307, 10, 0, {147, 396, 306, 9.96742665767670}, 0}),
                         [](const auto &placement) { return std::string(placement.param.name); });

TEST_F(StampFixture, OddSizesAreCentredWithHalvesRoundedDown)
{
    const auto page = letterPage(0);
    const auto stamp = KRImageStamp::create(image(101, 41), {300, 400, 0, 0}, &host, page.get());
    EXPECT_EQ(stamp->frame(), (PageRect{250, 380, 101, 41}));
    EXPECT_FALSE(stamp->isEditable());
    EXPECT_EQ(stamp->stampType(), StampTypeImage);
}

} // namespace
