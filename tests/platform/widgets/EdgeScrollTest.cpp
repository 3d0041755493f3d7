#include "platform/widgets/EdgeScroll.h"

#include <gtest/gtest.h>

using namespace inkory;

namespace
{

TEST(EdgeScroll, GrowsTowardsTheEdgeAndStartsWhereTheDragStarted)
{
    const OverlayRect visible{0, 0, 400, 300}; // 24 pixels along each edge scroll
    EXPECT_EQ(edgeScrollStep(visible, {200, 150}, {200, 150}), QPoint());
    EXPECT_EQ(edgeScrollStep(visible, {200, 150}, {200, 276}), QPoint());
    EXPECT_EQ(edgeScrollStep(visible, {200, 150}, {200, 277}), QPoint(0, 1));
    EXPECT_EQ(edgeScrollStep(visible, {200, 150}, {200, 300}), QPoint(0, 6));
    EXPECT_EQ(edgeScrollStep(visible, {200, 150}, {200, 1220}), QPoint(0, 24));
    EXPECT_EQ(edgeScrollStep(visible, {200, 150}, {0, 0}), QPoint(-6, -6));
    EXPECT_EQ(edgeScrollStep(visible, {200, 290}, {380, 290}), QPoint(1, 0)) << "no nearer to the lower edge";
    EXPECT_EQ(edgeScrollStep(visible, {200, 290}, {200, 294}), QPoint(0, 1));
}

} // namespace
