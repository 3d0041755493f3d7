#include "V1/editing/EditingFixture.h"

using namespace inkory;
using namespace inkory::test;

namespace
{

TEST_F(EditingFixture, TurningAPageIsUndoneAndRedoneAlsoFromAnotherPage)
{
    open(threePages());
    view->setScaleFactor(0.5);
    view->rotateCurrentPageCounterClockwise();
    QCoreApplication::processEvents();
    EXPECT_EQ(page(0).rotation(), 270);
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Rotate"));
    view->goToPage(2);
    undoManager.undo();
    EXPECT_EQ(page(0).rotation(), 0);
    EXPECT_EQ(page(2).rotation(), 0);
    undoManager.redo();
    EXPECT_EQ(page(0).rotation(), 270);
    view->rotateCurrentPageByAngle(0);
    QCoreApplication::processEvents();
    undoManager.undo();
    EXPECT_FALSE(undoManager.canUndo()) << "no turn, no step";
}

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

TEST_F(EditingFixture, FlippingReversesAndTurnsEverything)
{
    open(manyPages(5));
    std::vector<PDFPage *> order;
    for (int i = 0; i < 5; ++i)
        order.push_back(document.pageAtIndex(i));
    const auto expectOrder = [&](const std::vector<int> &indices, int rotation) {
        for (std::size_t i = 0; i < indices.size(); ++i) {
            const PDFPage *found = document.pageAtIndex(static_cast<int>(i));
            EXPECT_EQ(found, order[static_cast<std::size_t>(indices[i])]) << i;
            EXPECT_EQ(found->rotation(), rotation);
            EXPECT_EQ(document.indexForPage(found), static_cast<int>(i));
        }
    };
    view->flipDocument();
    QCoreApplication::processEvents();
    expectOrder({4, 3, 2, 1, 0}, 180);
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Rotate Document"));
    undoManager.undo();
    expectOrder({0, 1, 2, 3, 4}, 0);
    undoManager.redo();
    expectOrder({4, 3, 2, 1, 0}, 180);
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

} // namespace
