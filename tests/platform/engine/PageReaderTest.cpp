#include "platform/engine/PageReader.h"

#include "support/PdfSamples.h"
#include "support/Tools.h"

using namespace inkory;

namespace
{

using test::expectNear;
using test::linkAnnotation;
using test::makePdf;
using test::PageSpec;

struct Reading : testing::Test
{
    void open(const QByteArray &bytes)
    {
        m_bytes = bytes;
        EXPECT_EQ(m_document.open(m_bytes, {}, OpenedDocument::Repair::IfNeeded).problem, OpenProblem::None);
    }

    QByteArray m_bytes;
    OpenedDocument m_document;
    PageReader m_reader{m_document};
    const PageReader::IsCancelled m_never = [] { return false; };
};

// The "H" of Helvetica at 10 points is 7.22 wide, and its line reaches from 2.07 below the base line to 7.18 above it.
TEST_F(Reading, PlacesAreThoseOfTheShownPage)
{
    struct
    {
        const char *rotate;
        QRectF letter, link;
        double left, top; // of the destination, on the shown page; what is not known is -1
        double fitTop;
    } const cases[] = {{"0", {20, 222.82, 7.22, 9.25}, {20, 210, 50, 20}, 40, 80, 80},
                       {"90", {67.93, 20, 9.25, 7.22}, {70, 20, 20, 50}, 220, 40, -1},
                       {"180", {172.78, 67.93, 7.22, 9.25}, {130, 70, 50, 20}, 160, 220, 220},
                       {"270", {222.82, 172.78, 9.25, 7.22}, {210, 130, 20, 50}, 80, 160, -1}};
    const QByteArray annotations =
        linkAnnotation("40 100 90 120", "/Dest [5 0 R /XYZ 60 250 0]") +
        linkAnnotation("90 120 40 100", "/Dest [5 0 R /FitH 250]") +
        linkAnnotation("0 100 90 120", "/Dest [5 0 R /XYZ null null 0]") + // as far as it is shown
        linkAnnotation("0 0 10 10", "/Dest [5 0 R /Fit]");                 // not shown
    for (const auto &turned : cases) {
        SCOPED_TRACE(turned.rotate);
        open(makePdf(
            {PageSpec{.mediaBox = "0 0 300 400",
                      .cropBox = "20 30 220 330", // 200 x 300
                      .rotate = turned.rotate,
                      .contents = {test::textContent("Hello world", 40, 100, 10) +
                                   test::textContent("Second", 40, 80, 10) + test::textContent("hidden", 230, 100, 10)},
                      .more = " /Annots [" + annotations + "]"}}));
        const PageText text = m_reader.text(0, m_never);
        EXPECT_EQ(text.text, u"Hello world\nSecond"_qs);
        ASSERT_EQ(text.boxes.size(), 18U);
        expectNear(text.boxes[0], turned.letter, 0.01);
        EXPECT_TRUE(text.boxes[5].isNull() && text.boxes[11].isNull());

        const std::vector<PageLink> links = m_reader.links(0);
        ASSERT_EQ(links.size(), 3U);
        expectNear(links[0].area, turned.link, 0.5);
        EXPECT_EQ(links[0].area, links[1].area);
        EXPECT_NEAR(links[2].area.width() * links[2].area.height(), 70 * 20, 1);
        EXPECT_NEAR(links[0].destination->top.value_or(-1), turned.top, 0.5);
        EXPECT_NEAR(links[1].destination->top.value_or(-1), turned.fitTop, 0.5);
        EXPECT_EQ(links[2].destination, PageDestination{});
    }
}

TEST_F(Reading, EachCharacterHasOneBox)
{
    const QByteArray font = test::fontOf("/u1D400 /f_f_i /uniFB03 /uni05D0 /uni05D1");
    open(makePdf({PageSpec{.contents = {test::textContent("ab", 72, 700) + test::textContent("ca", 72, 650) +
                                        test::textContent("ed", 72, 600)},
                           .resources = "<< /Font << /F1 " + font + " >> >>"}}));
    const PageText text = m_reader.text(0, m_never);
    EXPECT_EQ(text.text, u"\U0001D400ffi\n\uFB03\U0001D400\n\u05D0\u05D1"_qs);
    std::string places;
    for (const QRectF &box : text.boxes)
        places += box.isEmpty() ? '.' : 'x';
    EXPECT_EQ(places, "x.xxx.xx..xx");
    EXPECT_GT(text.boxes[10].x(), text.boxes[11].x()) << "read from the right";
}

TEST_F(Reading, OnlyHarmlessLinksAreLeft)
{
    const QByteArray address = "/A << /S /URI /URI (";
    const QByteArray harmless = linkAnnotation("0 0 9 9", "/Dest (chapter)") +
                                linkAnnotation("0 0 9 9", address + "https://example.org/a\\(b\\)) >>") +
                                linkAnnotation("0 0 9 9", address + "MAILTO:a@example.org) >>");
    const QByteArray others = linkAnnotation("0 0 9 9", "/A << /S /Launch /F (run.sh) >>") +
                              linkAnnotation("0 0 9 9", "/A << /S /JavaScript /JS (app.beep\\(\\)) >>") +
                              linkAnnotation("0 0 9 9", "/A << /S /GoToR /F (other.pdf) /D [0 /Fit] >>") +
                              linkAnnotation("0 0 9 9", address + "file:///etc/passwd) >>") +
                              linkAnnotation("0 0 9 9", address + "javascript:alert\\(\\)) >>") +
                              linkAnnotation("0 0 9 9", address + "http://" + QByteArray(2042, 'x') + ") >>") +
                              linkAnnotation("0 0 9 9", "/Dest (nowhere)") +
                              linkAnnotation("0 0 9 9", "/Dest [3 0 R /Fit]") +
                              linkAnnotation("5 5 5 5", "/Dest (chapter)");
    const PageSpec page{.contents = {""}, .more = " /Annots [" + others + harmless + others + "]"};
    open(makePdf({page, page}, {}, "/Dests << /chapter [7 0 R /XYZ 0 692 0] >>", {}));
    const std::vector<PageLink> links = m_reader.links(1);
    ASSERT_EQ(links.size(), 3U);
    EXPECT_EQ(links[0].destination, (PageDestination{1, 100}));
    EXPECT_EQ(links[1].address, u"https://example.org/a(b)"_qs);
    EXPECT_EQ(links[2].address, u"MAILTO:a@example.org"_qs);
    EXPECT_TRUE(m_reader.links(2).empty() && m_reader.links(-1).empty());
}

TEST_F(Reading, AnOutlineEndsHoweverItIsMade)
{
    // 6: the root; 7 and 8: two items on top; 9: a child that says that its own child is 7; from 10 on: one in the
    // other
    std::vector<QByteArray> objects = {
        "<< /First 7 0 R /Last 8 0 R >>",
        "<< /Title (One) /Next 8 0 R /First 9 0 R /Last 9 0 R /Count 1 /Dest [5 0 R /XYZ 0 692 0] >>",
        "<< /Title (Two\\nlines) /Next 7 0 R /First 10 0 R /Last 10 0 R /Count -1 /A << /S /GoToR /F (x) /D [0 /Fit] "
        ">> >>",
        "<< /Title (" + QByteArray(600, 'x') + ") /First 7 0 R /Last 7 0 R >>"};
    for (int number = 10; number < 60; ++number) {
        const QByteArray child = QByteArray::number(number + 1) + " 0 R";
        objects.push_back("<< /Title (Deep) /First " + child + " /Last " + child + " >>");
    }
    open(makePdf({PageSpec{.contents = {""}}}, {}, "/Outlines 6 0 R", objects));
    const std::vector<OutlineItem> outline = m_reader.outline(m_never);
    ASSERT_GE(outline.size(), 3U);
    EXPECT_EQ(outline[0], (OutlineItem{u"One"_qs, 0, PageDestination{0, 100}, true}));
    EXPECT_EQ(outline[1], (OutlineItem{QString(500, u'x'), 1, {}, false}));
    const auto second =
        std::find_if(outline.begin() + 2, outline.end(), [](const auto &item) { return item.level == 0; });
    ASSERT_NE(second, outline.end());
    EXPECT_EQ(*second, (OutlineItem{u"Two lines"_qs, 0, {}, false}));
    EXPECT_EQ(outline.back().level, OutlineItem::deepestLevel);
    EXPECT_TRUE(m_reader.outline([] { return true; }).empty());
}

TEST_F(Reading, FindsOnAllPagesInAFewCalls)
{
    std::vector<PageSpec> pages(
        300, PageSpec{.contents = {test::textContent("One Needle") + test::textContent("two needles", 72, 600)}});
    pages[7].contents = {test::textContent("a nee", 72, 700) + test::textContent("dle", 72, 682)};
    open(makePdf(pages));
    std::vector<FindHit> hits;
    int next = 5;
    for (int calls = 0; next < 290 && calls < 285; ++calls) {
        const FindReply reply = m_reader.find({u"NEEDLE"_qs, next, 290}, m_never);
        ASSERT_GT(reply.nextPage, next);
        hits.insert(hits.end(), reply.hits.begin(), reply.hits.end());
        next = reply.nextPage;
    }
    EXPECT_EQ(next, 290);
    ASSERT_EQ(hits.size(), 2U * 284);
    EXPECT_EQ(hits[0].page, 5);
    EXPECT_EQ(hits[4].page, 8);
    EXPECT_NEAR(hits[1].areas.at(0).bottom(), 792 - 600 + 0.207 * 18, 0.1);
    const FindReply split = m_reader.find({u"a nee dle"_qs, 7, 8}, m_never);
    ASSERT_EQ(split.hits.size(), 1U);
    EXPECT_EQ(split.hits[0].areas.size(), 2U);

    EXPECT_EQ(m_reader.find({u" \n"_qs, 0, 300}, m_never), (FindReply{{}, 300}));
    EXPECT_EQ(m_reader.find({u"needle"_qs, 0, 300}, [] { return true; }).nextPage, 1);
    EXPECT_EQ(m_reader.find({u"needle"_qs, 300, 400}, m_never), (FindReply{{}, 400}));
}

} // namespace
