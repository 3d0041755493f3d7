#include "V1/editing/GestureFixture.h"

using namespace inkory;

constexpr PageRect start{200, 600, 100, 40};

TEST_F(GestureFixture, NudgesGoByScreenDirectionsAndJoinTheNextStep)
{
    openTurnedPages();
    struct
    {
        int pageIndex; // turned by as many quarter turns
        PagePoint up;  // one unit towards the top of the screen
        PagePoint right;
    } const cases[] = {{0, {0, 1}, {1, 0}}, {1, {-1, 0}, {0, 1}}, {2, {0, -1}, {-1, 0}}, {3, {1, 0}, {0, -1}}};
    for (const auto &[pageIndex, up, right] : cases) {
        KRStamp &stamp = addStamp(pageIndex, start);
        view->goToPage(pageIndex);
        view->setScaleFactor(0.5);
        view->setSelectedStampView(stamp.shared_from_this());
        key(Qt::Key_Up);
        EXPECT_EQ(stamp.frame(), (PageRect{200 + up.x, 600 + up.y, 100, 40}));
        key(Qt::Key_Down);
        key(Qt::Key_Right, Qt::ShiftModifier);
        EXPECT_EQ(stamp.frame(), (PageRect{200 + 10 * right.x, 600 + 10 * right.y, 100, 40}));
        key(Qt::Key_Left, Qt::ControlModifier);
        key(Qt::Key_Return);
        key(Qt::Key_Left);
        EXPECT_EQ(stamp.frame(), (PageRect{200 + 9 * right.x, 600 + 9 * right.y, 100, 40}));
        EXPECT_FALSE(undoManager.canUndo());
        EXPECT_TRUE(undoManager.isEdited());
        click(middleOf(stamp));
        QCoreApplication::processEvents();
        undoManager.undo();
        EXPECT_EQ(stamp.frame(), start);
    }
}

TEST_F(GestureFixture, ANudgeScrollsOnlyAsFarAsShowsTheStamp)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    view->setSelectedStampView(stamp.shared_from_this());
    const auto top = [&] { return view->height() - view->stampRect(stamp).maxY(); };
    view->setScaleFactor(10); // to 1000 x 400 pixels, wider than the view
    view->scrollBy({view->stampRect(stamp).x + 100, top() - 30});
    const PDFView::Place place = view->place();
    key(Qt::Key_Right);
    key(Qt::Key_Up);
    EXPECT_EQ(view->place(), place);
    view->scrollBy({0, top() + 100});
    key(Qt::Key_Up);
    EXPECT_NEAR(top(), 0, 1);
}
