#include "V1/stamps/StampFixture.h"
#include "platform/core/NotificationCenter.h"

#include <vector>

using namespace inkory;

namespace
{

struct Turn
{
    int pageRotation;
    PageRect frame; // of (10, 10, 100, 40) after one quarter turn
};

class Turning : public StampFixture, public ::testing::WithParamInterface<Turn>
{
};

// The corner shown at the top left stays: in page space the top left, bottom left, bottom right and top right one.
TEST_P(Turning, KeepsTheCornerShownAtTheTopLeft)
{
    const auto page = letterPage(GetParam().pageRotation);
    const auto stamp = stampOn(*page);
    stamp->setFrame({10, 10, 100, 40});
    stamp->rotateFrame();
    EXPECT_EQ(stamp->frame(), GetParam().frame);
}

INSTANTIATE_TEST_SUITE_P(PageRotations, Turning,
                         ::testing::Values(Turn{0, {10, -50, 40, 100}}, Turn{90, {10, 10, 40, 100}},
                                           Turn{180, {70, 10, 40, 100}}, Turn{270, {70, -50, 40, 100}}));

TEST_F(StampFixture, AQuarterTurnIsOneUndoStepThatRestoresTheFrame)
{
    const auto page = letterPage(0);
    const auto stamp = stampOn(*page);
    stamp->setFrame({10, 10, 100, 40});
    stamp->trackFrameAndPageChanges();
    endEvent();
    host.manager.removeAllSteps();

    stamp->rotateClockwise();
    endEvent();
    EXPECT_EQ(stamp->frame(), (PageRect{10, -50, 40, 100}));
    EXPECT_EQ(stamp->stampRotation(), 3);
    stamp->trackFrameAndPageChanges(); // a turn is no move
    endEvent();
    EXPECT_EQ(host.manager.undoActionName(), QStringLiteral("Rotate Stamp"));

    host.manager.undo();
    EXPECT_EQ(stamp->frame(), (PageRect{10, 10, 100, 40}));
    EXPECT_EQ(stamp->stampRotation(), 0);
    EXPECT_FALSE(host.manager.canUndo());
    host.manager.redo();
    EXPECT_EQ(stamp->frame(), (PageRect{10, -50, 40, 100}));
    EXPECT_EQ(stamp->stampRotation(), 3);
}

TEST_F(StampFixture, TwoHalfTurnsAreTwoStepsAndKeepTheFrame)
{
    const auto page = letterPage(0);
    const auto stamp = stampOn(*page);
    const PageRect before = stamp->frame();
    for (int i = 0; i < 2; ++i) {
        stamp->rotate180();
        endEvent();
    }
    EXPECT_EQ(stamp->stampRotation(), 0);
    EXPECT_EQ(stamp->frame(), before);
    host.manager.undo();
    EXPECT_EQ(stamp->stampRotation(), 2);
    host.manager.undo();
    EXPECT_FALSE(host.manager.canUndo());
}

TEST_F(StampFixture, AMoveIsTrackedOnceAndUndoneAcrossPages)
{
    const auto first = letterPage(0);
    const auto second = letterPage(0);
    const auto stamp = stampOn(*first);
    stamp->trackFrameAndPageChanges();
    endEvent();
    EXPECT_FALSE(host.manager.canUndo()) << "the first tracking only sets the baseline";

    const PageRect before = stamp->frame();
    stamp->setPdfPage(second.get());
    stamp->setFrame({1, 2, 100, 40});
    stamp->trackFrameAndPageChanges();
    stamp->trackFrameAndPageChanges();
    endEvent();
    EXPECT_EQ(host.manager.undoActionName(), QStringLiteral("Stamp Size && Position"));
    EXPECT_TRUE(first->stamps().empty());

    host.manager.undo();
    EXPECT_EQ(stamp->pdfPage(), first.get());
    EXPECT_EQ(stamp->frame(), before);
    EXPECT_EQ(first->stamps().size(), 1U);
    EXPECT_TRUE(second->stamps().empty());
    EXPECT_FALSE(host.manager.canUndo());
    host.manager.redo();
    EXPECT_EQ(stamp->pdfPage(), second.get());
    EXPECT_EQ(stamp->frame(), (PageRect{1, 2, 100, 40}));
}

TEST_F(StampFixture, EnteringTheSelectedModePutsAStampOnTop)
{
    const auto page = letterPage(0);
    const auto lower = stampOn(*page);
    const auto upper = stampOn(*page);
    EXPECT_EQ(page->stamps().back(), upper);
    upper->setStampMode(StampModeSelected);
    EXPECT_FALSE(host.manager.isEdited());
    lower->setStampMode(StampModeSelected);
    EXPECT_EQ(page->stamps().back(), lower);
    EXPECT_TRUE(host.manager.isEdited()) << "the order is saved";
    upper->setStampMode(StampModeNormal);
    upper->setStampMode(StampModeSelected);
    lower->setStampMode(StampModeSelected); // already in it: no reordering
    EXPECT_EQ(page->stamps().back(), upper);
    EXPECT_EQ(page->stamps().size(), 2U);
}

TEST_F(StampFixture, ChangesAreAnnouncedWithTheFormerFrame)
{
    const auto page = letterPage(0);
    const auto stamp = stampOn(*page);
    stamp->setFrame({10, 10, 100, 40});
    QObject observer;
    std::vector<QVariantMap> announced;
    NotificationCenter::defaultCenter().addObserver(
        &observer, stampViewNeedsRefreshNotification, stamp.get(),
        [&](const Notification &notification) { announced.push_back(notification.userInfo); });
    stamp->rotateCounterClockwise();
    ASSERT_EQ(announced.size(), 2U);
    EXPECT_EQ(announced[0].value(QStringLiteral("frame")).value<PageRect>(), (PageRect{10, 10, 100, 40}));
    EXPECT_TRUE(announced[1].isEmpty());
    EXPECT_EQ(stamp->stampRotation(), 1);
}

TEST_F(StampFixture, AStampWithoutAPageIsHarmless)
{
    const auto stamp = KRImageStamp::create(image(10, 10), {0, 0, 0, 0}, nullptr, nullptr);
    stamp->rotateClockwise();
    stamp->cleanup();
    stamp->trackFrameAndPageChanges();
    EXPECT_EQ(stamp->pdfPage(), nullptr);
}

} // namespace
