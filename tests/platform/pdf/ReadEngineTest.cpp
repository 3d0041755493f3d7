#include "platform/pdf/PageSourceFixture.h"
#include "support/Helpers.h"
#include "support/PdfSamples.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>

using namespace inkory;
using test::wholeFirstPage;

namespace
{

using test::makePdf;
using test::PageSpec;

struct ReadEngine : test::PageSourceFixture
{
    Result<PageText> readText(int page)
    {
        return awaited([&](auto done) { m_source->readText(page, DrawPriority::Visible, done); },
                       Result<PageText>(Error()));
    }

    Result<FindReply> find(const FindRequest &request)
    {
        return awaited([&](auto done) { m_source->find(request, done); }, Result<FindReply>(Error()));
    }
};

// The helper is locked up, and may read the tables for such text all the same.
TEST_F(ReadEngine, ReadsTextThatNeedsTables)
{
    const QByteArray descriptor = "/FontDescriptor << /Type /FontDescriptor /FontName /Some /Flags 4 /FontBBox [0 -200 "
                                  "1000 900] /ItalicAngle 0 /Ascent 800 /Descent -200 /CapHeight 700 /StemV 80 >>";
    const QByteArray font =
        "<< /Type /Font /Subtype /Type0 /BaseFont /Some /Encoding /90ms-RKSJ-H /DescendantFonts [<< "
        "/Type /Font /Subtype /CIDFontType0 /BaseFont /Some /CIDSystemInfo << /Registry (Adobe) "
        "/Ordering (Japan1) /Supplement 2 >> " +
        descriptor + " >>] >>";
    open(makePdf({PageSpec{.contents = {"BT /F1 20 Tf 72 700 Td <93FA967B8CEA> Tj ET"},
                           .resources = "<< /Font << /F1 " + font + " >> >>"}}));
    const auto text = readText(0);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->text, u"\u65E5\u672C\u8A9E"_qs);
    EXPECT_NEAR(text->boxes.at(2).x(), 112, 0.1);
    const auto found = find({u"\u672C\u8A9E"_qs, 0, 1});
    ASSERT_TRUE(found && found->hits.size() == 1);
    EXPECT_NEAR(found->hits[0].areas.at(0).width(), 40, 0.1);
}

TEST_F(ReadEngine, ReadsLinksAndTheOutline)
{
    const PageSpec page{.contents = {""},
                        .more = " /Annots [" + test::linkAnnotation("72 692 172 712", "/Dest [7 0 R /XYZ 0 692 0]") +
                                test::linkAnnotation("0 0 9 9", "/A << /S /URI /URI (https://example.org/) >>") + "]"};
    open(makePdf({page, page}, {}, "/Outlines 8 0 R",
                 {"<< /First 9 0 R /Last 9 0 R >>", "<< /Title <FEFF00C4> /Dest [7 0 R /XYZ 0 692 0] >>"}));
    const auto links = awaited([&](auto done) { m_source->readLinks(0, DrawPriority::Visible, done); },
                               Result<std::vector<PageLink>>(Error()));
    ASSERT_TRUE(links);
    EXPECT_EQ(*links, (std::vector<PageLink>{{{72, 80, 100, 20}, PageDestination{1, 100}, {}},
                                             {{0, 783, 9, 9}, {}, u"https://example.org/"_qs}}));
    const auto outline =
        awaited([&](auto done) { m_source->readOutline(done); }, Result<std::vector<OutlineItem>>(Error()));
    ASSERT_TRUE(outline);
    EXPECT_EQ(*outline, (std::vector<OutlineItem>{{u"\u00C4"_qs, 0, PageDestination{1, 100}, false}}));
}

TEST_F(ReadEngine, ReadsTheLongestPage)
{
    QByteArray content = "BT /F1 6 Tf 7 TL 10 4990 Td ";
    for (int line = 0; line < 700; ++line)
        content += "(" + QByteArray(150, 'a') + ") Tj T* ";
    open(makePdf({PageSpec{.mediaBox = "0 0 612 5000", .contents = {content + "ET"}}}));
    const auto text = readText(0);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->text.size(), PageText::mostCharacters);
    EXPECT_EQ(text->text.at(150), u'\n');
    const auto found = find({u"aaaaaaaaaa"_qs, 0, 1});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->hits.size(), 9'933U) << "662 lines with 15 each, and a piece";
}

TEST_F(ReadEngine, SearchingComesAfterAllThatIsDrawnAndIsGivenUp)
{
    const std::vector<pid_t> others = test::helperProcesses(); // of former tests
    ASSERT_EQ(open(test::manyPages(2'000)).state, OpenOutcome::State::Open);
    QString order;
    const auto note = [&order](char what) { return [&order, what](const auto &) { order += QLatin1Char(what); }; };
    m_source->find({u"page 7"_qs, 0, 2'000}, note('f'));
    m_source->readOutline(note('o'));
    m_source->draw(wholeFirstPage, DrawPriority::Ahead, note('a'));
    m_source->readText(1, DrawPriority::Visible, note('t'));
    m_source->draw({1, 0, 1, {0, 0, 612, 792}}, DrawPriority::Visible, note('v'));
    ASSERT_TRUE(QTest::qWaitFor([&] { return order.size() == 5; }, 10'000));
    EXPECT_EQ(order, u"tvafo"_qs);

    std::vector<pid_t> helpers = test::helperProcesses();
    std::erase_if(helpers, [&](pid_t helper) { return std::ranges::find(others, helper) != others.end(); });
    ASSERT_FALSE(helpers.empty());
    const pid_t helper = std::ranges::min(helpers); // the other one is for visible pages
    kill(helper, SIGSTOP);
    const DrawToken token = m_source->find({u"page"_qs, 0, 2'000}, note('x'));
    QTest::qWait(5); // it is sent
    m_source->cancel(token);
    m_source->cancel(m_source->find({u"page"_qs, 9, 9}, note('x')));
    kill(helper, SIGCONT);
    ASSERT_TRUE(draw(wholeFirstPage, DrawPriority::Thumbnail));
    EXPECT_FALSE(order.contains(u'x'));
    EXPECT_THAT(test::helperProcesses(), testing::Contains(helper)) << "it gave up by itself";
}

TEST_F(ReadEngine, FailsOverTheFirstPageOnly)
{
    ASSERT_EQ(open(test::manyPages(2'000)).state, OpenOutcome::State::Open);
    for (const FindRequest &request : {FindRequest{u"a"_qs, 3, 3}, FindRequest{QString(1'001, u'a'), 0, 1},
                                       FindRequest{u"a"_qs, -1, 1}, FindRequest{QString(QChar(0xD800)), 0, 1}})
        EXPECT_FALSE(find(request));

    test::signalHelpers(SIGSTOP);
    std::optional<Result<FindReply>> answer;
    m_source->find({u"page"_qs, 0, 2'000}, [&](const Result<FindReply> &reply) { answer = reply; });
    QTest::qWait(5);
    test::signalHelpers(SIGKILL);
    ASSERT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 10'000));
    ASSERT_TRUE(*answer);
    EXPECT_EQ((*answer)->nextPage, 1) << "tried again with the page alone";
    EXPECT_EQ((*answer)->hits.size(), 1U);

    answer.reset();
    m_source->find({u"page"_qs, 0, 2'000}, [&](const Result<FindReply> &reply) { answer = reply; });
    while (!answer) {
        test::signalHelpers(SIGKILL);
        QTest::qWait(1);
    }
    ASSERT_FALSE(*answer);
    EXPECT_EQ(answer->error().message, QStringLiteral("This page cannot be searched."));
}

TEST_F(ReadEngine, AnAnswerMayDestroyTheSourceOrOpenAgain)
{
    open(test::threePages());
    int opened = 0;
    m_source->readText(0, DrawPriority::Visible,
                       [&](const auto &) { m_source->open(m_file, {}, [&](const OpenOutcome &) { ++opened; }); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return opened == 1; }, 10'000));
    EXPECT_EQ(readText(2)->text, u"Third page"_qs);
    EXPECT_EQ(readText(3)->text, QString());
    m_source->find({u"page"_qs, 0, 3}, [&](const auto &) { m_source.reset(); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_source; }, 10'000));
}

} // namespace
