#include "platform/pdf/ReadingMessages.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

using namespace inkory;

namespace
{

/// A connection that nobody answers: enough to make messages.
class EngineMessages : public ::testing::Test
{
protected:
    EngineMessages()
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        sd_bus_new(&m_bus);
        sd_bus_set_fd(m_bus, ends[0], ends[0]);
        sd_bus_negotiate_fds(m_bus, 1);
        sd_bus_start(m_bus);
        m_otherEnd = ends[1];
    }
    ~EngineMessages() override
    {
        sd_bus_close_unref(m_bus);
        ::close(m_otherEnd);
    }

    template <class Value> BusMessage sent(const Value &value)
    {
        sd_bus_message *message = nullptr;
        sd_bus_message_new_method_call(m_bus, &message, nullptr, engineBus::path, engineBus::interface, "Any");
        EXPECT_TRUE(append(message, value));
        EXPECT_GE(sd_bus_message_seal(message, 1, 0), 0);
        EXPECT_GE(sd_bus_message_rewind(message, 1), 0);
        return BusMessage(message);
    }

    sd_bus *m_bus = nullptr;
    int m_otherEnd = -1;
};

TEST_F(EngineMessages, ComeThroughAsTheyWereSent)
{
    const PageGeometry page{{-10, 5, 300, 400}, {0, 10, 200, 300}, 270};
    const BusMessage survey =
        sent(Survey{{WriteProblem::ChangesForbidden, true, {page, PageGeometry()}}, {{612.5, 0}}});
    const auto surveyed = readSurvey(survey.get());
    ASSERT_TRUE(surveyed);
    EXPECT_EQ(surveyed->structure.problem, WriteProblem::ChangesForbidden);
    EXPECT_TRUE(surveyed->structure.isRepaired);
    EXPECT_EQ(surveyed->structure.pages, (std::vector<PageGeometry>{page, PageGeometry()}));
    EXPECT_EQ(surveyed->drawnSizes, std::vector<QSizeF>{QSizeF(612.5, 0)});

    const OverlayPiece line{5, {}, {{u"a"_qs, 0, 1.5}, {u"\u05D0b"_qs, 1.5, 2}}, 14, {1, 2, 3, 4, 5, 6}};
    WriteMessage write{{0, 7, SecretBytes("secret")},
                       {{3, 90, {{4, u"\u00E4"_qs, {}, 0, {}}, line}, {1.5, -2}}},
                       {0, 1000},
                       100,
                       {},
                       0};
    write.images = {{{10, 20}, QImage::Format_ARGB32, 200, 0}, {{9, 9}, QImage::Format_RGB32, 100, 55}};
    const BusMessage written = sent(write);
    const auto read = readWrite(written.get());
    ASSERT_TRUE(read);
    EXPECT_EQ(QByteArray(read->document.password.data()), "secret");
    EXPECT_EQ(read->pages, write.pages);
    EXPECT_EQ(read->images[0].offset, 200);
    EXPECT_EQ(read->images[1].jpegSize, 55);
    EXPECT_EQ(read->overlaysSize, 100);
}

TEST_F(EngineMessages, BringWhatWasRead)
{
    const PageText text{u"a\U0001D400"_qs, {{1, 2, 3, 4}, {-5, 0.5, 1e9, 1}, {}}, true};
    EXPECT_EQ(readPageText(sent(text).get()), text);
    const std::vector<PageLink> links{{{1, 2, 3, 4}, PageDestination{7, {}}, {}},
                                      {{1, 2, 3, 4}, {}, u"https://\u00E4.example"_qs},
                                      {{1, 2, 3, 4}, PageDestination{0, 0.5}, {}}};
    EXPECT_EQ(readPageLinks(sent(links).get()), links);
    const std::vector<OutlineItem> outline{
        {u"One"_qs, 0, PageDestination{7, 20}, true}, {u""_qs, 1, {}, false}, {u"\u00C4"_qs, 0, {}, true}};
    EXPECT_EQ(readOutline(sent(outline).get()), outline);
    const FindReply found{{{3, {{1, 2, 3, 4}}}, {3, {{1, 2, 3, 4}, {5, 6, 7, 8}}}}, 5, true, false};
    EXPECT_EQ(readFindReply(sent(found).get()), found);
    EXPECT_EQ(readFind(sent(FindMessage{4, {u"a b"_qs, 2, 9}}).get())->request, (FindRequest{u"a b"_qs, 2, 9}));
}

TEST_F(EngineMessages, AreRefusedWithReadingsThatTheTypesDoNotPromise)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const QRectF box(1, 2, 3, 4);
    const PageText texts[] = {{u"a"_qs, {}},
                              {u"a"_qs, {{nan, 0, 1, 1}}},
                              {u"a"_qs, {{0, 0, 3e9, 1}}},
                              {u"a"_qs, {{0, 0, -1, 1}}},
                              {QString(QChar(0xD800)), {box}},
                              {QString(100'001, u'a'), std::vector(100'001, box)}};
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
    for (const PageLink &link : links)
        EXPECT_FALSE(readPageLinks(sent(std::vector{link}).get())) << link.address.toStdString();
    EXPECT_FALSE(readPageLinks(sent(std::vector(5'001, PageLink{box, PageDestination{}, {}})).get()));

    const std::vector<OutlineItem> outlines[] = {
        {{u"a"_qs, 1, {}, false}},
        {{u"a"_qs, 0, {}, false}, {u"a"_qs, 2, {}, false}},
        {{QString(501, u'a'), 0, {}, false}},
        {{QString(QChar(0xD83D)), 0, {}, false}, {QString(QChar(0xDE00)), 0, {}, false}},
        std::vector(20'001, OutlineItem{})};
    for (const auto &outline : outlines)
        EXPECT_FALSE(readOutline(sent(outline).get())) << outline.size();

    const FindReply replies[] = {
        {{{0, {}}}, 1}, {{{1, {box}}}, 1}, {{{2, {box}}, {1, {box}}}, 3}, {{{0, {{0, 0, nan, 1}}}}, 1}, {{}, 0}};
    for (const FindReply &reply : replies)
        EXPECT_FALSE(readFindReply(sent(reply).get())) << reply.hits.size();
    EXPECT_FALSE(readFind(sent(FindMessage{4, {u"a"_qs, 9, 9}}).get()));
}

TEST_F(EngineMessages, AreRefusedWithValuesThatTheTypesDoNotPromise)
{
    const auto isOpenReply = [this](const OpenReply &reply) { return readOpenReply(sent(reply).get()).has_value(); };
    EXPECT_TRUE(isOpenReply({OpenProblem::None, false, maxPageCount, {1, 14'400}}));
    EXPECT_FALSE(isOpenReply({OpenProblem::None, false, maxPageCount + 1, {1, 1}}));
    EXPECT_FALSE(isOpenReply({OpenProblem::None, false, 1, {std::numeric_limits<double>::quiet_NaN(), 1}}));
    EXPECT_FALSE(isOpenReply({static_cast<OpenProblem>(99), false, 1, {1, 1}}));

    const auto isSurvey = [this](const PageGeometry &page) {
        return readSurvey(sent(Survey{{WriteProblem::None, false, {page}}, {}}).get()).has_value();
    };
    EXPECT_FALSE(isSurvey({{0, 0, 14'401, 1}, {0, 0, 1, 1}, 0}));
    EXPECT_FALSE(isSurvey({{0, 0, 10, 10}, {0, 0, 0, 1}, 0}));
    EXPECT_FALSE(isSurvey({{0, 0, 10, 10}, {0, 0, 10, 10}, 45}));

    const auto isDraw = [this](const DrawRequest &request, qint64 size) {
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
    for (const OverlayPiece &piece : pieces)
        EXPECT_FALSE(readWrite(sent(WriteMessage{{0, 7, {}}, {{0, 0, {piece}, {}}}, {0, 9}, 9, {}, 0}).get()))
            << &piece - pieces;
    EXPECT_FALSE(readBool(sent(OpenReply()).get())) << "another kind of message";
    const auto isImage = [this](QSize pixels) {
        return readImageReply(sent(ImageReply{ImageProblem::None, pixels, QImage::Format_RGB32, {1, 1}, 0}).get());
    };
    EXPECT_TRUE(isImage({5000, 2500}));
    EXPECT_FALSE(isImage({5000, 2501})) << "more than 12.5 million pixels";
    EXPECT_FALSE(isImage({0, 5}));
}

} // namespace
