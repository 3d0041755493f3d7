#include "platform/pdf/ReadingMessages.h"

#include "fuzz/UnconnectedBus.h"

#include <gtest/gtest.h>

#include <limits>

using namespace inkory;

namespace
{

template <class Value> BusMessage sent(const Value &value)
{
    BusMessage message = fuzz::newMessage();
    EXPECT_TRUE(append(message.get(), value));
    fuzz::seal(message.get());
    EXPECT_GE(sd_bus_message_rewind(message.get(), 1), 0);
    return message;
}

TEST(EngineMessages, AreRefusedWithReadingsThatTheTypesDoNotPromise)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const QRectF box(1, 2, 3, 4);
    const PageText texts[] = {{u"a"_qs, {}},
                              {u"a"_qs, {{nan, 0, 1, 1}}},
                              {u"a"_qs, {{0, 0, 3e9, 1}}},
                              {u"a"_qs, {{0, 0, -1, 1}}},
                              {QString(QChar(0xD800)), {box}},
                              {QString(100'001, u'a'), std::vector(100'001, box)}};
    EXPECT_TRUE(readPageText(sent(PageText{u"a"_qs, {box}}).get()));
    for (const PageText &text : texts)
        EXPECT_FALSE(readPageText(sent(text).get())) << text.text.size();

    const PageLink links[] = {{box, {}, {}},
                              {box, {}, u"file:///etc/passwd"_qs},
                              {{}, {}, u"https://x"_qs},
                              {box, PageDestination{-1, {}}, {}},
                              {box, PageDestination{maxPageCount, {}}, {}},
                              {box, PageDestination{0, nan}, {}},
                              {box, PageDestination{0, 14'401}, {}},
                              {box, PageDestination{0, {}}, u"https://x"_qs},
                              {box, {}, u"https://"_qs + QString(2'041, u'x')}};
    EXPECT_TRUE(readPageLinks(sent(std::vector{PageLink{box, PageDestination{}, {}}}).get()));
    for (const PageLink &link : links)
        EXPECT_FALSE(readPageLinks(sent(std::vector{link}).get())) << link.address.toStdString();
    EXPECT_FALSE(readPageLinks(sent(std::vector(5'001, PageLink{box, PageDestination{}, {}})).get()));

    const std::vector<OutlineItem> outlines[] = {
        {{u"a"_qs, 1, {}, false}},
        {{u"a"_qs, 0, {}, false}, {u"a"_qs, 2, {}, false}},
        {{QString(501, u'a'), 0, {}, false}},
        {{QString(QChar(0xD83D)), 0, {}, false}, {QString(QChar(0xDE00)), 0, {}, false}},
        std::vector(20'001, OutlineItem{})};
    EXPECT_TRUE(readOutline(sent(std::vector{OutlineItem{u"a"_qs, 0, {}, false}}).get()));
    for (const auto &outline : outlines)
        EXPECT_FALSE(readOutline(sent(outline).get())) << outline.size();

    const FindReply replies[] = {
        {{{0, {}}}, 1}, {{{1, {box}}}, 1}, {{{2, {box}}, {1, {box}}}, 3}, {{{0, {{0, 0, nan, 1}}}}, 1}, {{}, 0}};
    EXPECT_TRUE(readFindReply(sent(FindReply{{{0, {box}}}, 1}).get()));
    for (const FindReply &reply : replies)
        EXPECT_FALSE(readFindReply(sent(reply).get())) << reply.hits.size();
    EXPECT_FALSE(readFind(sent(FindMessage{4, {u"a"_qs, 9, 9}}).get()));
}

TEST(EngineMessages, AreRefusedWithValuesThatTheTypesDoNotPromise)
{
    const auto isOpenReply = [](const OpenReply &reply) { return readOpenReply(sent(reply).get()).has_value(); };
    EXPECT_TRUE(isOpenReply({OpenProblem::None, false, maxPageCount, {1, 14'400}}));
    EXPECT_FALSE(isOpenReply({OpenProblem::None, false, maxPageCount + 1, {1, 1}}));
    EXPECT_FALSE(isOpenReply({OpenProblem::None, false, 1, {std::numeric_limits<double>::quiet_NaN(), 1}}));
    EXPECT_FALSE(isOpenReply({static_cast<OpenProblem>(99), false, 1, {1, 1}}));

    const auto isSurvey = [](const PageGeometry &page) {
        return readSurvey(sent(Survey{{WriteProblem::None, false, {page}}, {}}).get()).has_value();
    };
    EXPECT_FALSE(isSurvey({{0, 0, 14'401, 1}, {0, 0, 1, 1}, 0}));
    EXPECT_FALSE(isSurvey({{0, 0, 10, 10}, {0, 0, 0, 1}, 0}));
    EXPECT_FALSE(isSurvey({{0, 0, 10, 10}, {0, 0, 10, 10}, 45}));

    const auto isDraw = [](const DrawRequest &request, qint64 size) {
        return readDraw(sent(DrawMessage{1, request, {0, size}}).get()).has_value();
    };
    EXPECT_TRUE(isDraw({0, 0, 1, {0, 0, 10, 10}}, 400));
    EXPECT_FALSE(isDraw({0, 0, 1, {0, 0, 10, 10}}, 396)) << "the buffer would be too small";
    EXPECT_FALSE(isDraw({0, 0, 1, {0, 0, 40'000, 1}}, 160'000));
    EXPECT_FALSE(isDraw({-1, 0, 1, {0, 0, 10, 10}}, 400));
    EXPECT_FALSE(isDraw({0, 4, 1, {0, 0, 10, 10}}, 400));

    WriteMessage write{{0, 7, {}}, {}, {0, 1000}, 100, {{{10, 20}, QImage::Format_ARGB32, 201, 0}}, 0};
    EXPECT_FALSE(readWrite(sent(write).get())) << "201 + 10 × 20 × 4 is past the payload's end";
    const double infinity = std::numeric_limits<double>::infinity();
    const OverlayPiece pieces[] = {{-1, {}, {}, 0, {}},
                                   {0, QString(QChar(0xD800)), {}, 0, {}},
                                   {0, {}, {{QString(QChar(0xD800)), 0, 1}}, 14, {}},
                                   {0, {}, {{{}, 0, 1}}, 14, {}},
                                   {0, {}, {{u"a"_qs, 0, -1}}, 14, {}},
                                   {0, {}, {{u"a"_qs, infinity, 1}}, 14, {}},
                                   {0, {}, {{u"a"_qs, 0, 1}}, 0, {}},
                                   {0, u"a"_qs, {{u"a"_qs, 0, 1}}, 14, {}},
                                   {0, QString(4'000'001, u'a'), {}, 0, {}}};
    EXPECT_TRUE(readWrite(sent(WriteMessage{{0, 7, {}}, {{0, 0, {{}}, {}}}, {0, 9}, 9, {}, 0}).get()));
    for (const OverlayPiece &piece : pieces)
        EXPECT_FALSE(readWrite(sent(WriteMessage{{0, 7, {}}, {{0, 0, {piece}, {}}}, {0, 9}, 9, {}, 0}).get()))
            << &piece - pieces;
    EXPECT_FALSE(readBool(sent(OpenReply()).get())) << "another kind of message";
    const auto isImage = [](QSize pixels) {
        return readImageReply(sent(ImageReply{ImageProblem::None, pixels, QImage::Format_RGB32, {1, 1}, 0}).get());
    };
    EXPECT_TRUE(isImage({5000, 2500}));
    EXPECT_FALSE(isImage({5000, 2501})) << "more than 12.5 million pixels";
    EXPECT_FALSE(isImage({0, 5}));
}

} // namespace
