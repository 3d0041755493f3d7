#include "V1/editing/GestureFixture.h"

#include <QPointingDevice>
#include <QShortcut>

#include <memory>

using namespace inkory;
using namespace inkory::test;

constexpr PageRect start{200, 600, 100, 40};

TEST_F(GestureFixture, AStampFollowsThePointerAndItsMoveIsOneStep)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    press(middleOf(stamp));
    EXPECT_EQ(view->selectedStampView(), &stamp);
    moveBy({30, 0});
    EXPECT_EQ(stamp.stampMode(), StampModeDragging);
    moveBy({-120, 25});
    EXPECT_EQ(stamp.frame(), (PageRect{110, 575, 100, 40}));
    EXPECT_FALSE(undoManager.canUndo()) << "not before the release";
    release();
    EXPECT_EQ(stamp.stampMode(), StampModeSelected);
    EXPECT_EQ(view->viewport()->cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Stamp Size && Position"));
    click(position);
    undoManager.undo();
    EXPECT_EQ(stamp.frame(), start);
    EXPECT_FALSE(undoManager.canUndo());
    undoManager.redo();
    EXPECT_EQ(stamp.frame(), (PageRect{110, 575, 100, 40}));
}

TEST_F(GestureFixture, TheHandleResizesInProportionOrFreely)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    click(middleOf(stamp));
    press(handle());
    moveBy({-30, 0}); // straight to the left: nothing
    release();
    EXPECT_EQ(stamp.frame(), start);
    EXPECT_FALSE(undoManager.canUndo());
    press(handle());
    EXPECT_TRUE(view->isResizing());
    moveBy({20, 0});
    EXPECT_EQ(stamp.frame(), (PageRect{200, 592, 120, 48}));
    EXPECT_EQ(view->viewport()->cursor().shape(), Qt::BitmapCursor);
    moveBy({-50, 52}, Qt::ShiftModifier);
    release();
    EXPECT_EQ(stamp.frame(), (PageRect{200, 540, 70, 100}));
    EXPECT_FALSE(view->isResizing());
    QCoreApplication::processEvents();
    undoManager.undo();
    EXPECT_EQ(stamp.frame(), start);
    EXPECT_FALSE(undoManager.canUndo());
}

// Shown at a quarter of its size, the first page lies above the second, which is turned by 90 degrees.
TEST_F(GestureFixture, AStampGoesOntoATurnedPageAndKeepsItsLookThere)
{
    openTurnedPages();
    view->setScaleFactor(0.25);
    KRStamp &stamp = addStamp(0, start);
    const ViewRect before = view->stampRect(stamp); // 25 x 10 pixels
    std::vector<const PDFPage *> redrawn;
    const QObject watcher; // the view tells of its pages to the end
    QObject::connect(view, &PDFView::pageAppearanceChanged, &watcher,
                     [&](const PDFPage *each) { redrawn.push_back(each); });
    press(leftEndOf(stamp));
    moveBy({10, 230});
    EXPECT_EQ(redrawn, (std::vector<const PDFPage *>{&page(0), &page(1), &page(0)}))
        << "the first for the turned frame";
    release();
    EXPECT_EQ(stamp.pdfPage(), &page(1));
    EXPECT_TRUE(page(0).stamps().empty());
    ASSERT_EQ(page(1).stamps().size(), 1U);
    EXPECT_NEAR(stamp.frame().width, 100, 1e-9);
    EXPECT_NEAR(stamp.frame().height, 40, 1e-9);
    const ViewRect after = view->stampRect(stamp);
    expectNear(toQRectF(after), {before.x + 10, before.maxY() - 230 - 25, 10, 25}, 1e-9);

    const PageRect there = stamp.frame();
    QCoreApplication::processEvents();
    undoManager.undo();
    EXPECT_EQ(stamp.pdfPage(), &page(0));
    EXPECT_TRUE(page(1).stamps().empty());
    // Turning the frame replaced the tracked one: what comes back is the frame as it was turned on its old page, about
    // the corner shown at the top left.
    EXPECT_EQ(stamp.frame(), (PageRect{200, 540, 40, 100}));
    undoManager.redo();
    EXPECT_EQ(stamp.pdfPage(), &page(1));
    EXPECT_EQ(stamp.frame(), there);
}

TEST_F(GestureFixture, ADragToATurnedPageAndBackIsUndoneToWhereItBegan)
{
    openTurnedPages();
    view->setScaleFactor(0.25);
    KRStamp &stamp = addStamp(0, start);
    press(leftEndOf(stamp));
    moveBy({10, 230});
    EXPECT_EQ(stamp.pdfPage(), &page(1));
    moveBy({0, -230});
    release();
    EXPECT_NEAR(stamp.frame().x, 240, 1e-9);
    undoManager.undo();
    EXPECT_EQ(stamp.frame(), start);
    EXPECT_FALSE(undoManager.canUndo());
}

TEST_F(GestureFixture, UndoingAllAndRedoingAllSavesTheSameFiles)
{
    open(textPages({"one", "two"}));
    view->setScaleFactor(0.25);
    addStamp(0, {100, 100, 100, 40});
    KRStamp &stamp = addStamp(0, start);
    const auto saved = [this] { // up to the identifier, which is new in each file
        const QByteArray bytes = document.dataRepresentation();
        return bytes.left(bytes.lastIndexOf("/ID ["));
    };
    const QByteArray first = saved();
    press(leftEndOf(stamp));
    moveBy({10, 210});
    release();
    ASSERT_EQ(stamp.pdfPage(), &page(1));
    press(handle());
    moveBy({11, 6}, Qt::ShiftModifier);
    release();
    view->rotateSelectedStampClockwise();
    QCoreApplication::processEvents();
    view->rotateCurrentPageClockwise();
    QCoreApplication::processEvents();
    click(leftEndOf(*view->stampViews()[1]));
    key(Qt::Key_Delete);
    QCoreApplication::processEvents();
    view->flipDocument();
    const QByteArray last = saved();
    EXPECT_NE(first, last);
    int steps = 0;
    for (; undoManager.canUndo(); ++steps)
        undoManager.undo();
    EXPECT_EQ(steps, 6);
    EXPECT_TRUE(saved() == first);
    while (undoManager.canRedo())
        undoManager.redo();
    EXPECT_TRUE(saved() == last);
}

TEST_F(GestureFixture, EscapeTakesAGestureBackAndTheRestOfThePressIsIgnored)
{
    openTurnedPages();
    view->setScaleFactor(0.25);
    KRStamp &stamp = addStamp(0, start);
    click(leftEndOf(stamp));
    key(Qt::Key_Right); // not tracked yet: stays, and stays untracked
    key(Qt::Key_Left);
    key(Qt::Key_Up);
    const KRStamp::Placement before = stamp.placement();
    const PageRect nudged{200, 601, 100, 40};
    for (const bool resizes : {false, true}) {
        press(resizes ? handle() : leftEndOf(stamp));
        moveBy(resizes ? QPoint(9, 9) : QPoint(0, 230));
        moveBy({5, 0});
        EXPECT_NE(stamp.frame(), nudged);
        key(Qt::Key_Escape);
        EXPECT_EQ(stamp.stampMode(), StampModeSelected);
        EXPECT_EQ(view->viewport()->cursor().shape(), Qt::ArrowCursor);
        EXPECT_FALSE(view->isResizing());
        moveBy({3, 3});
        release();
        EXPECT_EQ(stamp.frame(), nudged);
        EXPECT_EQ(stamp.placement().lastFrame, before.lastFrame) << "the tracking point as well";
        EXPECT_EQ(stamp.placement().lastPage, before.lastPage);
        EXPECT_EQ(page(0).stamps().size(), 1U);
        EXPECT_TRUE(page(1).stamps().empty());
        EXPECT_FALSE(undoManager.canUndo());
    }
    press(leftEndOf(stamp)); // and a new press is a new gesture
    moveBy({5, 0});
    release();
    EXPECT_EQ(stamp.frame(), (PageRect{220, 601, 100, 40}));
    EXPECT_TRUE(undoManager.canUndo());
}

TEST_F(GestureFixture, KeysAndCommandsWaitWhileAStampIsInTheHand)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    press(middleOf(stamp));
    moveBy({40, 0});
    release();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const QShortcut undoKey(QKeySequence(QStringLiteral("Ctrl+Z")), &window, [this] { undoManager.undo(); });
    press(position);
    moveBy({10, 10});
    key(Qt::Key_Z, Qt::ControlModifier);
    key(Qt::Key_Delete);
    key(Qt::Key_Up);
    moveBy({1, 1});
    release();
    EXPECT_EQ(stamp.frame(), (PageRect{251, 589, 100, 40}));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(stamp.frame(), (PageRect{240, 600, 100, 40}));
    key(Qt::Key_Delete);
    EXPECT_TRUE(view->stampViews().empty());
}

TEST_F(GestureFixture, AGestureThatLosesItsPointerEndsAsIfReleased)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    const auto expectSettledAt = [&](const PageRect &frame) {
        EXPECT_EQ(stamp.stampMode(), StampModeSelected);
        moveBy({7, 7});
        release();
        EXPECT_EQ(stamp.frame(), frame) << "the rest of the press counts for nothing";
        QCoreApplication::processEvents();
        undoManager.undo();
        EXPECT_EQ(stamp.frame(), start);
        EXPECT_FALSE(undoManager.canUndo());
    };
    press(middleOf(stamp));
    moveBy({10, 0});
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    expectSettledAt({210, 600, 100, 40});

    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    press(middleOf(stamp));
    moveBy({20, 0});
    QMouseEvent releasedElsewhere(QEvent::MouseMove, position, position, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view->viewport(), &releasedElsewhere);
    expectSettledAt({220, 600, 100, 40});
}

TEST_F(GestureFixture, WhateverHappensToAHeldStampLeavesASaneState)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    const auto hold = [&] {
        press(middleOf(stamp));
        moveBy({10, 0});
    };
    const auto letGo = [&] {
        moveBy({10, 0});
        release();
        QCoreApplication::processEvents();
    };
    hold();
    view->resize(700, 440); // as a bar that opens below makes it
    EXPECT_EQ(stamp.frame(), (PageRect{210, 600, 100, 40}));
    letGo();
    undoManager.undo();

    hold();
    view->deleteSelectedStampView();
    letGo();
    EXPECT_TRUE(page(0).stamps().empty());
    undoManager.undo(); // the deletion and the move that it cut short
    EXPECT_EQ(stamp.frame(), start);
    EXPECT_EQ(page(0).stamps().size(), 1U);

    hold();
    view->setCurrentToolType(ToolTypeImageStamp);
    letGo();
    EXPECT_EQ(stamp.stampMode(), StampModeNormal);
    EXPECT_EQ(stamp.frame(), (PageRect{210, 600, 100, 40}));
    view->setCurrentToolType(ToolTypeSelect);

    hold();
    undoManager.undo(); // of the move before
    letGo();
    EXPECT_EQ(stamp.frame(), (PageRect{210, 600, 100, 40})) << "back at the start, and 10 further";
    EXPECT_EQ(stamp.stampMode(), StampModeSelected);
    hold();
    view->flipDocument();
    letGo();
    EXPECT_EQ(stamp.stampMode(), StampModeSelected);
    while (undoManager.canUndo())
        undoManager.undo();
    EXPECT_EQ(stamp.frame(), start);
    EXPECT_EQ(stamp.pdfPage(), &page(0));
}

TEST_F(GestureFixture, TheToolbarsBackgroundDragsTheStampAndARightClickMeanwhileDoesNothing)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    click(middleOf(stamp));
    QCoreApplication::processEvents();
    press(view->stampViewToolbar()->mapTo(&window, QPoint(1, 12))); // left of the first button
    moveBy({30, 0});
    QTest::mouseClick(window.windowHandle(), Qt::RightButton, {}, position);
    EXPECT_EQ(stamp.stampMode(), StampModeDragging);
    position += QPoint(0, 20);
    QTest::mouseEvent(QTest::MouseMove, window.windowHandle(), Qt::LeftButton, {}, position);
    release();
    EXPECT_EQ(stamp.frame(), (PageRect{230, 580, 100, 40}));
    EXPECT_EQ(stamp.stampMode(), StampModeSelected);
}

TEST_F(GestureFixture, AFingerDragsStampsAndOnlyThose)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    const QPoint middle = middleOf(stamp);
    const std::unique_ptr<QPointingDevice> device{QTest::createTouchDevice()};
    QTest::touchEvent(window.windowHandle(), device.get()).press(1, middle);
    for (const int way : {10, 20, 30})
        QTest::touchEvent(window.windowHandle(), device.get()).move(1, middle + QPoint(way, 0));
    QTest::touchEvent(window.windowHandle(), device.get()).release(1, middle + QPoint(30, 0));
    EXPECT_EQ(stamp.frame(), (PageRect{230, 600, 100, 40}));
    EXPECT_EQ(stamp.stampMode(), StampModeSelected);

    view->setScaleFactor(0.1); // to 10 x 4 pixels, less than the handle
    QCoreApplication::processEvents();
    const QPoint beside = middleOf(stamp) - QPoint(9, 0);
    QTest::mouseMove(window.windowHandle(), beside);
    EXPECT_EQ(view->viewport()->cursor().shape(), Qt::ArrowCursor);
    const auto tap = [&](QPoint at) {
        QTest::touchEvent(window.windowHandle(), device.get()).press(1, at);
        QTest::touchEvent(window.windowHandle(), device.get()).release(1, at);
    };
    tap(beside - QPoint(40, 0));
    EXPECT_EQ(view->selectedStampView(), nullptr);
    tap(beside);
    EXPECT_EQ(view->selectedStampView(), &stamp) << "a finger's width beside";
}

TEST_F(GestureFixture, TheViewScrollsUnderAStampHeldAtItsEdge)
{
    openTurnedPages();
    KRStamp &stamp = addStamp(0, start);
    press(middleOf(stamp));
    moveBy({0, 480 - position.y()});
    const int held = middleOf(stamp).y();
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->verticalScrollBar()->value() > 100; }, 5000));
    EXPECT_EQ(middleOf(stamp).y(), held);
    moveBy({0, -200});
    const int scrolled = view->verticalScrollBar()->value();
    QTest::qWait(60);
    EXPECT_EQ(view->verticalScrollBar()->value(), scrolled) << "not away from the edge";
    view->verticalScrollBar()->setValue(scrolled + 77); // as a wheel does
    EXPECT_EQ(middleOf(stamp).y(), held - 200);
    view->setScaleFactor(view->scaleFactor() * 2, {100, 100});
    release();
    EXPECT_NEAR(middleOf(stamp).y(), held - 200, 1);
    undoManager.undo();
    EXPECT_EQ(stamp.frame(), start);
    EXPECT_FALSE(undoManager.canUndo());
}
