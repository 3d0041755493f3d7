#include "V1/editing/GestureFixture.h"

#include <QShortcut>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <set>

using namespace inkory;
using namespace inkory::test;

namespace
{

/// Where everything is.
struct State
{
    struct Place
    {
        const KRPDFPage *page = nullptr;
        int rotation = 0;
        PageRect frame;
    };
    std::map<const KRStamp *, Place> stamps;
    std::vector<std::pair<const PDFPage *, int>> pages; // in order, with their rotations
    std::map<const PDFPage *, KRPDFPage::StampList> stacks;
};

class RandomGestures : public GestureFixture
{
protected:
    int random(int low, int high) { return std::uniform_int_distribution(low, high)(generator); }
    bool chance(int percent) { return random(1, 100) <= percent; }

    State state() const
    {
        State found;
        for (const auto &stamp : view->stampViews())
            found.stamps[stamp.get()] = {stamp->pdfPage(), stamp->stampRotation(), stamp->frame()};
        for (int i = 0; i < document.pageCount(); ++i) {
            found.pages.emplace_back(&page(i), page(i).rotation());
            found.stacks[&page(i)] = page(i).stamps();
        }
        return found;
    }

    // The window is larger than the view: drags leave the view, but not the window.
    QPoint pointIn(QRect area) { return {random(area.left(), area.right()), random(area.top(), area.bottom())}; }

    void randomPress()
    {
        const QRect area = view->viewport()->rect();
        QPoint at = pointIn(area);
        const auto &stamps = view->stampViews();
        if (!stamps.empty() && chance(85)) {
            const KRStamp &stamp = *stamps[static_cast<std::size_t>(random(0, static_cast<int>(stamps.size()) - 1))];
            at = chance(70) ? leftEndOf(stamp) : middleOf(stamp);
            if (view->selectedStampView() && chance(30))
                at = chance(70) ? handle() : view->stampViewToolbar()->mapTo(&window, QPoint(1, 12));
        }
        press(QPoint(std::clamp(at.x(), 0, area.right()), std::clamp(at.y(), 0, area.bottom())));
        isHeld = true;
        const QWidget *under = window.childAt(position);
        isGesture = !qobject_cast<const QAbstractButton *>(under); // a click on a button turns the stamp
        trackedAtPress = trackedFrame();
    }

    void randomMove()
    {
        const QRect area = window.rect();
        const QPoint to = chance(50) ? position + QPoint(random(-30, 30), random(-30, 30)) : pointIn(area);
        const QPoint inside(std::clamp(to.x(), 0, area.right()), std::clamp(to.y(), 0, area.bottom()));
        moveBy(inside - position, chance(30) ? Qt::ShiftModifier : Qt::NoModifier);
    }

    PageRect trackedFrame() const
    {
        return view->selectedStampView() ? view->selectedStampView()->placement().lastFrame : PageRect{};
    }

    void letGo()
    {
        if (isHeld && isGesture && !isCancelled && trackedFrame() != trackedAtPress)
            turned.insert(view->selectedStampView());
        release();
        if (std::exchange(isHeld, false) && isGesture && !isCancelled)
            expectSelectedOnItsPage();
    }

    void randomKey()
    {
        static constexpr std::array keys{Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right};
        const KRStamp *selected = view->selectedStampView();
        const PageRect before = selected ? selected->frame() : PageRect{};
        const int choice = random(0, 9);
        if (choice < 4) {
            key(keys[static_cast<std::size_t>(choice)], chance(40) ? Qt::ShiftModifier : Qt::NoModifier);
            if (selected && selected->frame() != before)
                nudged.insert(selected);
            if (!isHeld)
                expectSelectedOnItsPage();
        } else if (choice == 4) {
            key(Qt::Key_Delete);
        } else if (choice < 7) {
            isCancelled = true;
            key(Qt::Key_Escape);
        } else {
            key(choice == 9 ? Qt::Key_Y : Qt::Key_Z, Qt::ControlModifier);
        }
    }

    void changeView()
    {
        const int choice = random(0, 4);
        if (choice == 0)
            view->setScaleFactor(random(20, 120) / 100.0);
        else if (choice == 1)
            view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() + random(-200, 200));
        else if (choice == 2)
            view->flipDocument();
        else
            view->rotateCurrentPageByAngle(chance(50) ? 90 : -90);
    }

    void placeStamp()
    {
        useImageTool();
        click(pointIn(view->viewport()->rect()));
        view->setCurrentToolType(ToolTypeSelect);
    }

    void step()
    {
        const int choice = random(0, 99);
        if (!isHeld)
            isCancelled = false;
        if (choice < 50)
            isHeld ? randomMove() : randomPress();
        else if (choice < 65)
            isHeld ? letGo() : randomPress();
        else if (choice < 85)
            randomKey();
        else if (choice < 97 || isHeld)
            changeView();
        else
            placeStamp();
        expectInvariants();
    }

    void expectSelectedOnItsPage() const
    {
        const KRStamp *stamp = view->selectedStampView();
        if (!stamp)
            return;
        const QRectF box = toQRectF(stamp->pdfPage()->boundsForBox(DisplayBox::MediaBox));
        const QPointF center = toQRectF(stamp->frame()).center();
        EXPECT_TRUE(box.adjusted(-1e-9, -1e-9, 1e-9, 1e-9).contains(center)) << center.x() << ", " << center.y();
    }

    void expectInvariants() const
    {
        std::size_t onPages = 0;
        for (int i = 0; i < document.pageCount(); ++i) {
            onPages += page(i).stamps().size();
            for (const auto &stamp : page(i).stamps())
                EXPECT_EQ(stamp->pdfPage(), &page(i));
        }
        EXPECT_EQ(onPages, view->stampViews().size());
        for (const auto &stamp : view->stampViews()) {
            const auto &listed = stamp->pdfPage()->stamps();
            EXPECT_EQ(std::count(listed.begin(), listed.end(), stamp), 1);
            const bool isSelected = stamp.get() == view->selectedStampView();
            EXPECT_TRUE(isSelected || stamp->stampMode() == StampModeNormal);
            EXPECT_TRUE(stamp->stampMode() != StampModeDragging || isHeld);
        }
        if (view->selectedStampView()) {
            EXPECT_EQ(view->selectedStampView(), view->stampViews()[0].get());
        }
    }

    void undoAll()
    {
        while (undoManager.canUndo())
            undoManager.undo();
    }

    void redoAll()
    {
        while (undoManager.canRedo())
            undoManager.redo();
    }

    using Stamps = std::set<const KRStamp *>;

    static void expectSame(const State &found, const State &wanted, const Stamps &inexact)
    {
        EXPECT_EQ(found.pages, wanted.pages);
        EXPECT_EQ(found.stamps.size(), wanted.stamps.size());
        for (const auto &[stamp, place] : wanted.stamps) {
            const auto other = found.stamps.find(stamp);
            ASSERT_NE(other, found.stamps.end());
            EXPECT_EQ(other->second.page, place.page);
            EXPECT_EQ(other->second.rotation, place.rotation);
            if (!inexact.contains(stamp))
                expectNear(toQRectF(other->second.frame), toQRectF(place.frame), 1e-6);
        }
    }

    std::mt19937 generator;
    bool isHeld = false;
    bool isGesture = false;
    bool isCancelled = false; // Escape was pressed since the press
    Stamps nudged;
    Stamps turned; // by a drag onto a page of another orientation
    PageRect trackedAtPress;
};

// Two things are never undone exactly: a nudge, which has no step of its own, and a drag between pages whose rotations
// differ by an odd number of quarter turns, after which the frame comes back as it was turned. Choosing a stamp has no
// step either, and what comes back lies on top: the order of stamps is the same each time that all is undone, or
// redone.
TEST_F(RandomGestures, KeepEveryRuleAndAreUndoneAndRedone)
{
    openTurnedPages("0 0 300 200");
    window.resize(900, 700);
    view->viewport()->setUpdatesEnabled(false); // painting is not what this is about
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const QShortcut undoKey(QKeySequence(QStringLiteral("Ctrl+Z")), &window, [this] { undoManager.undo(); });
    const QShortcut redoKey(QKeySequence(QStringLiteral("Ctrl+Y")), &window, [this] { undoManager.redo(); });
    for (unsigned seed = 1; seed <= 1000 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        generator.seed(seed);
        view->setScaleFactor(0.6);
        for (int i = 0; i < 3; ++i)
            addStamp(i, {60.0 + 30 * i, 70, 100, 40});
        nudged.clear();
        turned.clear();
        const State first = state();
        for (int i = 0; i < 15 && !HasFailure(); ++i)
            step();
        letGo();
        QCoreApplication::processEvents();
        redoAll();
        const State last = state();
        undoAll();
        expectInvariants();
        turned.insert(nudged.begin(), nudged.end());
        const State undone = state();
        expectSame(undone, first, turned);
        redoAll();
        const State redone = state();
        expectSame(redone, last, nudged);
        undoAll();
        EXPECT_EQ(state().stacks, undone.stacks);
        redoAll();
        EXPECT_EQ(state().stacks, redone.stacks);
        undoAll();
        while (!view->stampViews().empty())
            view->deleteStampView(view->stampViews()[0]);
    }
}

} // namespace
