#include "platform/widgets/PageImageStore.h"
#include "ShownView.h"

using namespace inkory;
using namespace inkory::test;

namespace
{

class PageImages : public OpenedDocument
{
protected:
    PageImages() { store.setDocument(&document); }

    bool comes(int page, double scale, const QRect &needed)
    {
        return QTest::qWaitFor([&] { return store.piece(*document.pageAtIndex(page), scale, needed) != nullptr; },
                               5000);
    }

    PageImageStore store{DrawPriority::Visible};
};

// 14,000 points at 2.4 pixels each are longer than an image may be, though the whole page has few pixels.
TEST_F(PageImages, AVeryLongPageIsDrawnInParts)
{
    open(makePdf({PageSpec{.mediaBox = "0 0 14000 100"}}));
    EXPECT_TRUE(comes(0, 2.4, QRect(0, 0, 600, 240)));
    EXPECT_TRUE(comes(0, 2.4, QRect(33'000, 0, 600, 240)));
    EXPECT_TRUE(comes(0, 1, QRect(0, 0, 600, 100)));
}

TEST_F(PageImages, WhatTheLastFrameShowedIsNotDropped)
{
    open(makePdf(std::vector<PageSpec>(4, PageSpec{.mediaBox = "0 0 1000 800"})));
    const QRect whole(0, 0, 3300, 2640); // 35 MB each: three are more than the store keeps for nothing
    for (int page = 0; page < 4; ++page)
        ASSERT_TRUE(comes(page, 3.3, whole));
    store.cancelStaleRequests();
    for (int page = 1; page < 4; ++page)
        EXPECT_TRUE(comes(page, 3.3, whole));
    store.cancelStaleRequests();
    for (int page = 1; page < 4; ++page)
        EXPECT_NE(store.piece(*document.pageAtIndex(page), 3.3, whole), nullptr) << page;
}

// 26 MB each: four are too many.
TEST_F(PageImages, WhatIsFarFromTheShownPagesGoesFirst)
{
    open(makePdf(std::vector<PageSpec>(30, PageSpec{.mediaBox = "0 0 1000 800"})));
    const QRect whole(0, 0, 2850, 2280);
    for (const int page : {12, 9, 20, 10}) {
        ASSERT_TRUE(comes(page, 2.85, whole));
        store.cancelStaleRequests();
        store.cancelStaleRequests();
    }
    const auto isHeld = [&](int page) { return store.standIn(*document.pageAtIndex(page)) != nullptr; };
    EXPECT_TRUE(isHeld(10) && isHeld(9) && isHeld(12));
    EXPECT_FALSE(isHeld(20)) << "shown later than page 12, but further away";
    EXPECT_LE(store.heldBytes(), 96 << 20);
}

TEST_F(PageImages, DrawsAheadOnlyWhatIsMissingAndHasRoom)
{
    open(makePdf(std::vector<PageSpec>(4, PageSpec{.mediaBox = "0 0 1000 800"})));
    const QRect whole(0, 0, 1000, 800);
    ASSERT_TRUE(comes(0, 1, whole));
    QSignalSpy arrivals(&store, &PageImageStore::pieceArrived);
    store.drawAhead({document.pageAtIndex(0), document.pageAtIndex(1), document.pageAtIndex(2)}, 1);
    store.cancelStaleRequests(); // nothing that is shown is missing
    ASSERT_TRUE(QTest::qWaitFor([&] { return arrivals.size() == 2; }, 5000));
    EXPECT_NE(store.piece(*document.pageAtIndex(1), 1, whole, PageImageStore::Missing::Leave), nullptr);
    EXPECT_EQ(store.piece(*document.pageAtIndex(3), 1, whole, PageImageStore::Missing::Leave), nullptr);
    EXPECT_FALSE(arrivals.wait(200));

    store.drawAhead({document.pageAtIndex(3)}, 1);
    EXPECT_EQ(store.piece(*document.pageAtIndex(0), 2, whole), nullptr);
    store.cancelStaleRequests(); // now something is
    EXPECT_TRUE(arrivals.wait(5000));
    EXPECT_FALSE(arrivals.wait(200));
    store.drawAhead({document.pageAtIndex(3)}, 5); // 80 MB beside what is shown, in one image too many
    EXPECT_FALSE(arrivals.wait(200));
}

TEST_F(PageImages, AWholePageStaysBelowAPartOfIt)
{
    open(makePdf({PageSpec{.mediaBox = "0 0 1000 800"}}));
    const PDFPage &page = *document.pageAtIndex(0);
    ASSERT_TRUE(comes(0, 1, QRect(0, 0, 1000, 800)));
    ASSERT_TRUE(comes(0, 20, QRect(9000, 9000, 600, 400)));
    EXPECT_EQ(store.standIn(page)->scale, 20);
    ASSERT_NE(store.backdrop(page), nullptr);
    EXPECT_EQ(store.backdrop(page)->scale, 1);
    EXPECT_NE(store.piece(page, 1, QRect(0, 0, 1000, 800)), nullptr);
}

} // namespace
