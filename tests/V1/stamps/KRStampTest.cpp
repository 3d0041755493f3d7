#include "V1/stamps/StampFixture.h"

using namespace inkory;

// The corner shown at the top left stays: in page space the top left, bottom left, bottom right and top right one.
TEST_F(StampFixture, AQuarterTurnKeepsTheCornerShownAtTheTopLeft)
{
    for (const auto &[rotation, turned] : {std::pair(0, PageRect{10, -50, 40, 100}),
                                           {90, {10, 10, 40, 100}},
                                           {180, {70, 10, 40, 100}},
                                           {270, {70, -50, 40, 100}}}) {
        const auto page = letterPage(rotation);
        const auto stamp = stampOn(*page);
        stamp->setFrame({10, 10, 100, 40});
        stamp->trackFrameAndPageChanges();
        stamp->rotateClockwise();
        stamp->trackFrameAndPageChanges(); // a turn is no move
        endEvent();
        EXPECT_EQ(host.manager.undoActionName(), QStringLiteral("Rotate Stamp"));
        EXPECT_EQ(stamp->frame(), turned) << rotation;
        stamp->rotate180();
        EXPECT_EQ(stamp->frame(), turned) << rotation;
    }
}

TEST_F(StampFixture, AStampWithoutAPageIsHarmless)
{
    const auto stamp = KRImageStamp::create(image(10, 10), {0, 0, 0, 0}, nullptr, nullptr);
    stamp->rotateClockwise();
    stamp->cleanup();
    stamp->trackFrameAndPageChanges();
    EXPECT_EQ(stamp->pdfPage(), nullptr);
}
