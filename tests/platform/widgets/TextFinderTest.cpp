#include "platform/widgets/TextFinder.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

#include <deque>

using namespace inkory;
using ::testing::ElementsAre;

namespace
{

/// Remembers what it was asked for, to be answered by the test.
class AskedSource : public PageSource
{
public:
    struct Asked
    {
        FindRequest request;
        std::function<void(const Result<FindReply> &)> done;
    };

    void open(std::shared_ptr<DocumentFile>, const SecretBytes &, std::function<void(const OpenOutcome &)>) override {}
    void callAfterFirstPage(std::function<void()>) override {}
    DrawToken draw(const DrawRequest &, DrawPriority, std::function<void(const Result<QImage> &)>) override
    {
        return 0;
    }
    DrawToken readLinks(int, DrawPriority, std::function<void(const Result<std::vector<PageLink>> &)>) override
    {
        return 0;
    }
    DrawToken readOutline(std::function<void(const Result<std::vector<OutlineItem>> &)>) override { return 0; }
    DrawToken readText(int, DrawPriority, std::function<void(const Result<PageText> &)>) override { return 0; }
    DrawToken find(const FindRequest &request, std::function<void(const Result<FindReply> &)> done) override
    {
        asked = {request, std::move(done)};
        return ++lastToken;
    }
    void cancel(DrawToken token) override { cancelled.push_back(token); }

    Asked asked;
    DrawToken lastToken = 0;
    std::vector<DrawToken> cancelled;
};

FindHit hit(int page, double top)
{
    return {page, {QRectF(100, top, 50, 10)}};
}

/// Four pages of 612 x 792.
class TextFinderTest : public ::testing::Test
{
protected:
    TextFinderTest()
    {
        for (int i = 0; i < 4; ++i)
            document.insertPage(std::make_unique<PDFPage>(PageGeometry{}, i), i);
        finder.setDocument(&document, &source);
    }

    /// What the finder waits for, as {first page, end}.
    std::vector<int> range() const { return {source.asked.request.firstPage, source.asked.request.endPage}; }
    void answer(std::vector<FindHit> hits, int nextPage)
    {
        const bool hasText = !hits.empty();
        answer(FindReply{std::move(hits), nextPage, hasText, false});
    }
    void answer(const Result<FindReply> &reply)
    {
        const auto done = source.asked.done;
        done(reply);
    }
    void searchFrom(int page, double heightOnPage)
    {
        finder.search(QStringLiteral("word"), {page, PagePoint{0, 792 - heightOnPage}});
    }
    std::vector<int> pagesOfHits() const
    {
        std::vector<int> pages;
        for (const FindHit &found : finder.hits())
            pages.push_back(found.page);
        return pages;
    }

    PDFDocument document;
    AskedSource source;
    TextFinder finder;
};

TEST_F(TextFinderTest, GoesFromThePlaceToTheEndAndOnFromTheBeginning)
{
    const QSignalSpy moved(&finder, &TextFinder::currentChanged);
    searchFrom(2, 300);
    EXPECT_THAT(range(), ElementsAre(2, 4));
    answer({hit(2, 200), hit(2, 296)}, 3);
    EXPECT_EQ(finder.currentIndex(), 1) << "the middle of the second one stands just below the place";
    EXPECT_EQ(moved.count(), 1);
    EXPECT_THAT(range(), ElementsAre(3, 4));
    answer({hit(3, 50)}, 4);
    EXPECT_THAT(range(), ElementsAre(0, 2));
    answer({hit(0, 1), hit(1, 1)}, 2);
    EXPECT_EQ(finder.state(), TextFinder::State::Finished);
    EXPECT_EQ(moved.count(), 1) << "later answers do not move the person";

    EXPECT_THAT(pagesOfHits(), ElementsAre(0, 1, 2, 2, 3));
    EXPECT_EQ(finder.currentIndex(), 3);
    finder.goToNext();
    EXPECT_EQ(finder.currentHit()->page, 3);
    finder.goToNext();
    EXPECT_EQ(finder.currentIndex(), 0);
    finder.goToPrevious();
    EXPECT_EQ(finder.currentIndex(), 4);
    finder.goToPrevious();
    EXPECT_EQ(*finder.currentHit(), hit(2, 296));
}

TEST_F(TextFinderTest, AnotherTextEndsTheFormerSearch)
{
    searchFrom(0, 0);
    answer({hit(0, 20)}, 1);
    finder.search(QStringLiteral("other"), {1, {}});
    EXPECT_THAT(source.cancelled, ElementsAre(2));
    EXPECT_EQ(finder.hitCount(), 0);
    EXPECT_EQ(source.asked.request, (FindRequest{QStringLiteral("other"), 1, 4}));
    finder.cancel();
    EXPECT_THAT(source.cancelled, ElementsAre(2, 3));
    finder.search(QStringLiteral(" \t"), {});
    EXPECT_TRUE(source.lastToken == 3 && finder.state() == TextFinder::State::Idle);
}

TEST_F(TextFinderTest, HitsFollowTheOrderOfThePages)
{
    searchFrom(1, 0);
    answer({hit(1, 20), hit(2, 20), hit(2, 40)}, 4);
    document.exchangePages(0, 3);
    document.exchangePages(1, 2);
    finder.notePageOrder();
    EXPECT_THAT(pagesOfHits(), ElementsAre(2, 2, 1));
    EXPECT_EQ(finder.currentIndex(), 2);

    searchFrom(2, 0); // now page 1 of the file
    for (const int page : {1, 0, 3, 2}) {
        EXPECT_THAT(range(), ElementsAre(page, page + 1));
        answer({hit(page, 20)}, page + 1);
    }
    EXPECT_THAT(pagesOfHits(), ElementsAre(3, 2, 1, 0));
    finder.goToNext();
    EXPECT_EQ(finder.currentHit()->page, 0);
}

TEST_F(TextFinderTest, EndsWhenItHasFoundTooMany)
{
    searchFrom(0, 0);
    answer(std::vector<FindHit>(FindReply::mostHitsPerPage, hit(0, 20)), 1);
    const std::vector<FindHit> many(TextFinder::mostHits - FindReply::mostHitsPerPage - 1, hit(1, 20));
    answer(many, 2);
    EXPECT_FALSE(finder.isCut());
    answer({hit(2, 20), hit(2, 40)}, 3);
    EXPECT_TRUE(finder.isCut() && finder.state() == TextFinder::State::Finished);
    EXPECT_EQ(finder.hitCount(), TextFinder::mostHits);

    searchFrom(0, 0);
    EXPECT_FALSE(finder.isCut());
    answer(FindReply{{}, 1, true, true});
    EXPECT_TRUE(finder.isCut()) << "so it was told";
    searchFrom(0, 0);
    answer(std::vector<FindHit>(TextFinder::mostHits, hit(3, 20)), 4);
    EXPECT_FALSE(finder.isCut()) << "these are all there are";
}

TEST_F(TextFinderTest, SaysThatADocumentLacksTextOnlyWhenItKnows)
{
    searchFrom(0, 0);
    answer({}, 1);
    answer(FindReply{{}, 4, true, false});
    EXPECT_FALSE(finder.documentLacksText());
    searchFrom(0, 0);
    answer({}, 1);
    EXPECT_FALSE(finder.documentLacksText());
    answer({}, 4);
    EXPECT_TRUE(finder.documentLacksText());
    searchFrom(0, 0);
    answer(Error{QStringLiteral("the helper died")});
    EXPECT_THAT(range(), ElementsAre(1, 4)) << "the page that failed is left out";
    answer({}, 4);
    EXPECT_FALSE(finder.documentLacksText());
    EXPECT_EQ(finder.failedPageCount(), 1);
}

TEST_F(TextFinderTest, TheHitAtThePlaceComesBeforeThoseInItsLine)
{
    document.exchangePages(0, 1); // of the two first pages, each is in the other's place
    finder.search(QStringLiteral("word"), {0, PagePoint{225, 792 - 205}});
    document.exchangePages(0, 1);
    finder.notePageOrder();
    FindHit second = hit(1, 200);
    second.areas.front().moveLeft(200);
    answer({hit(1, 100), hit(1, 200), second, hit(1, 300)}, 2);
    EXPECT_EQ(finder.currentIndex(), 2);
    finder.pause();
    EXPECT_THAT(source.cancelled, ElementsAre(2));
    EXPECT_EQ(finder.hitCount(), 4);
    finder.resume();
    EXPECT_EQ(source.lastToken, 3U);
}

} // namespace
