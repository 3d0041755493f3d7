#include "V1/editing/EditingFixture.h"
#include "V1/editing/FrameBounds.h"

using namespace inkory;
using namespace inkory::test;

TEST(FrameBounds, KeepsTheCentreInTheBox)
{
    const PageRect letter{0, 0, 612, 792};
    EXPECT_EQ(frameWithCenterInBox({-70, 100, 100, 40}, letter), (PageRect{-50, 100, 100, 40}));
    EXPECT_EQ(frameWithCenterInBox({-40, 100, 100, 40}, letter), (PageRect{-40, 100, 100, 40}));
    EXPECT_EQ(frameWithCenterInBox({562, 100, 100, 40}, letter), (PageRect{562, 100, 100, 40}))
        << "exactly on the edge";
    EXPECT_EQ(frameWithCenterInBox({600, 900, 100, 40}, letter), (PageRect{562, 772, 100, 40}));
    EXPECT_EQ(frameWithCenterInBox({0, 0, 20, 20}, {100, 200, 50, 50}), (PageRect{90, 190, 20, 20}));
}

TEST_F(EditingFixture, AClickPlacesAStampThatUndoAndRedoTakeBackAndForth)
{
    open(threePages());
    useImageTool();
    const QPoint position = windowPoint(0, {300, 700});
    const PagePoint clicked =
        view->convertPointToPage({position.x() + 0.0, view->height() - static_cast<double>(position.y())}, &page(0));
    click(position);

    ASSERT_EQ(page(0).stamps().size(), 1U);
    const auto stamp = page(0).stamps()[0];
    EXPECT_NEAR(stamp->frame().x, clicked.x - 50, 1e-9);
    EXPECT_NEAR(stamp->frame().y, clicked.y - 20, 1e-9);
    EXPECT_EQ(view->selectedStampView(), stamp.get());
    EXPECT_EQ(stamp->stampMode(), StampModeSelected);
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Add/Delete Stamp"));

    undoManager.undo();
    EXPECT_TRUE(page(0).stamps().empty());
    EXPECT_TRUE(view->stampViews().empty());
    EXPECT_EQ(view->selectedStampView(), nullptr);
    EXPECT_FALSE(undoManager.isEdited());
    undoManager.redo();
    EXPECT_EQ(page(0).stamps().size(), 1U);
    EXPECT_EQ(view->selectedStampView(), stamp.get());
    undoManager.undo();
    EXPECT_FALSE(undoManager.canUndo()) << "the release after the click sets the baseline without a step";
}

TEST_F(EditingFixture, ClicksOutsideTheDocumentOrWithoutAnImagePlaceNothing)
{
    open(textPages({"narrow"}));
    view->setScaleFactor(0.5); // 306 pixels wide in 700
    view->setCurrentToolType(ToolTypeImageStamp);
    click(windowPoint(0, {300, 700}));
    EXPECT_TRUE(view->stampViews().empty()) << "no image";
    useImageTool();
    click(QPoint(20, 100));
    EXPECT_TRUE(view->stampViews().empty()) << "beside the document";
    click(windowPoint(0, {-10, 700})); // in the margin: on the nearest page, moved so that its centre is on it
    ASSERT_EQ(view->stampViews().size(), 1U);
    EXPECT_DOUBLE_EQ(view->stampViews()[0]->frame().center().x, 0);
}

TEST_F(EditingFixture, SelectingBringsToTheFrontAndEmptySpaceDeselects)
{
    open(threePages());
    useImageTool();
    click(windowPoint(0, {300, 700}));
    const auto lower = view->stampViews()[0];
    click(windowPoint(0, {300, 640}));
    const auto upper = view->stampViews()[0];
    ASSERT_NE(lower, upper);
    view->setCurrentToolType(ToolTypeSelect);
    EXPECT_EQ(view->selectedStampView(), upper.get()) << "the select tool keeps the selection";
    undoManager.markClean();
    click(windowPoint(0, {300, 700}));
    EXPECT_EQ(page(0).stamps().back(), lower);
    EXPECT_FALSE(undoManager.isEdited()) << "where they do not touch, the order does not show";
    view->setSelectedStampView(upper);
    upper->setFrame({lower->frame().x + 50, lower->frame().y + 20, 100, 40});

    const PagePoint overlap{lower->frame().x + 75, lower->frame().y + 30};
    click(windowPoint(0, overlap));
    EXPECT_EQ(view->selectedStampView(), upper.get());
    undoManager.markClean();
    click(windowPoint(0, {lower->frame().x + 10, lower->frame().y + 10}));
    EXPECT_EQ(view->selectedStampView(), lower.get());
    EXPECT_EQ(upper->stampMode(), StampModeNormal);
    EXPECT_EQ(page(0).stamps().back(), lower);
    EXPECT_TRUE(undoManager.isEdited()) << "the order is saved";
    click(windowPoint(0, {100, 500}));
    EXPECT_EQ(view->selectedStampView(), nullptr);
    click(windowPoint(0, overlap));
    EXPECT_EQ(view->selectedStampView(), lower.get()) << "the one selected last wins";
    useImageTool();
    EXPECT_EQ(view->selectedStampView(), nullptr);
    undoManager.undo(); // of moving the upper one
    undoManager.undo();
    EXPECT_EQ(page(0).stamps(), KRPDFPage::StampList{lower});
    undoManager.redo();
    EXPECT_EQ(page(0).stamps(), (KRPDFPage::StampList{lower, upper})) << "what comes back lies on top";
    EXPECT_TRUE(undoManager.isEdited());
}
