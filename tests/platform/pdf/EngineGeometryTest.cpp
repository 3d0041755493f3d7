#include "platform/pdf/PageGeometry.h"

#include <gtest/gtest.h>

namespace inkory
{

namespace
{

TEST(PageGeometry, BringsRotationsToAQuarterTurn)
{
    EXPECT_EQ(normalizedRotation(0), 0);
    EXPECT_EQ(normalizedRotation(450), 90);
    EXPECT_EQ(normalizedRotation(-90), 270);
    EXPECT_EQ(normalizedRotation(-720), 0);
    EXPECT_EQ(normalizedRotation(45), 0);
    EXPECT_EQ(normalizedRotation(-2147483647), 0);
}

struct Corner
{
    int rotation;
    QPointF shownLowerLeft;  // where the box's corner (10, 20) appears
    QPointF shownUpperRight; // where its corner (410, 620) appears
    QSizeF shownSize;
};

class ShownTransform : public testing::TestWithParam<Corner>
{
};

TEST_P(ShownTransform, MapsTheCornersOfTheBox)
{
    const PageRect box{10, 20, 400, 600};
    const QTransform transform = shownPageTransform(box, GetParam().rotation);
    EXPECT_EQ(transform.map(QPointF(10, 20)), GetParam().shownLowerLeft);
    EXPECT_EQ(transform.map(QPointF(410, 620)), GetParam().shownUpperRight);
    EXPECT_EQ(shownSize(box, GetParam().rotation), GetParam().shownSize);
}

INSTANTIATE_TEST_SUITE_P(Rotations, ShownTransform,
                         testing::Values(Corner{0, {0, 600}, {400, 0}, {400, 600}},
                                         Corner{90, {0, 0}, {600, 400}, {600, 400}},
                                         Corner{180, {400, 0}, {0, 600}, {400, 600}},
                                         Corner{270, {600, 400}, {0, 0}, {600, 400}}));

} // namespace

} // namespace inkory
