#pragma once

#include "V1/editing/EditingFixture.h"

/// Gestures on stamps, delivered to the window. Positions are the window's.
class GestureFixture : public EditingFixture
{
protected:
    /// Four pages of 612 x 792, turned by 0, 90, 180 and 270 degrees.
    void openTurnedPages(const QByteArray &mediaBox = "0 0 612 792")
    {
        std::vector<inkory::test::PageSpec> pages;
        for (const char *rotation : {"0", "90", "180", "270"})
            pages.push_back({.mediaBox = mediaBox, .rotate = rotation});
        open(inkory::test::makePdf(pages));
    }

    /// A stamp with this frame and its baseline, unselected; nothing of it is on the undo stack.
    KRStamp &addStamp(int pageIndex, inkory::PageRect frame)
    {
        view->addStampView(KRImageStamp::create(image(), {300, 400, 0, 0}, view, &page(pageIndex)));
        const auto stamp = view->stampViews()[0];
        stamp->setFrame(frame);
        stamp->resetLastFrameAndPage();
        view->setSelectedStampView(nullptr);
        QCoreApplication::processEvents();
        undoManager.removeAllSteps();
        undoManager.markClean();
        return *stamp;
    }

    QPoint middleOf(const KRStamp &stamp) const
    {
        const inkory::ViewPoint middle = view->stampRect(stamp).center();
        return {qRound(middle.x), qRound(view->height() - middle.y)};
    }

    /// At the stamp's left edge, beside the resize handle, which covers the rest of a stamp that is shown very small.
    QPoint leftEndOf(const KRStamp &stamp) const { return {qRound(view->stampRect(stamp).x) + 2, middleOf(stamp).y()}; }

    /// In the middle of the resize handle.
    QPoint handle() const
    {
        const inkory::ViewPoint middle = view->stampOverlayResizeRect().center();
        return {qRound(middle.x), qRound(view->height() - middle.y)};
    }

    void press(QPoint at)
    {
        position = at;
        QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, position);
    }

    void moveBy(QPoint by, Qt::KeyboardModifiers modifiers = {})
    {
        position += by;
        QTest::mouseEvent(QTest::MouseMove, window.windowHandle(), Qt::LeftButton, modifiers, position);
    }

    void release() { QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, position); }

    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window.windowHandle(), which, modifiers);
    }

    QPoint position;
};
