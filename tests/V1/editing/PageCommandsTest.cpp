#include "V1/editing/EditingFixture.h"

using namespace inkory;
using namespace inkory::test;

// Lying, the first page ends 226 pixels below the view's upper edge, the middle being at 250.
TEST_F(EditingFixture, TurningTwiceTurnsTheSamePage)
{
    open(threePages());
    view->setScaleFactor(0.35);
    for (int turn = 0; turn < 2; ++turn) {
        view->rotateCurrentPageClockwise();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(page(0).rotation(), 180);
    undoManager.undo();
    view->rotateCurrentPageClockwise();
    EXPECT_EQ(page(0).rotation(), 180);
    view->setScaleFactor(3);
    view->scrollToVisible({0, 0, 600, 1}, &page(0)); // its lower edge, which is above the view when it lies
    view->rotateCurrentPageClockwise();
    EXPECT_EQ(view->currentPageIndex(), 0);
}

TEST_F(EditingFixture, FlippingNothingIsHarmless)
{
    view->flipDocument();
    view->fitPageSize();
    view->fitPageWidth();
    EXPECT_DOUBLE_EQ(view->scaleFactor(), 1);
}

TEST_F(EditingFixture, FittingUsesTheWholeViewAndTheUnturnedMediaBox)
{
    open(makePdf({PageSpec{.mediaBox = "0 0 700 250", .rotate = "90"}}));
    // Exactly as wide as the view and half as high.
    view->fitPageWidth();
    EXPECT_DOUBLE_EQ(view->scaleFactor(), static_cast<double>(0.95F));
    view->zoomActualSize();
    EXPECT_DOUBLE_EQ(view->scaleFactor(), 1);
    view->fitPageSize();
    EXPECT_DOUBLE_EQ(view->scaleFactor(), static_cast<double>(0.95F));
}
