#include "platform/engine/FoldedText.h"
#include "platform/engine/PageHits.h"
#include "platform/engine/TextCollector.h"

#include <QList>

#include <gtest/gtest.h>

#include <cmath>

using namespace inkory;

namespace
{

using Range = FoldedText::Range;

std::vector<Range> found(const QString &text, const QString &query)
{
    return FoldedText(text).occurrencesOf(FoldedText(query), 100);
}

TEST(FoldedTextTest, FindsWhateverIsWrittenOtherwise)
{
    const std::tuple<QString, QString, Range> cases[] = {
        {u"Große Straße"_qs, u"STRASSE"_qs, {6, 12}},
        {u"a caf\u00E9!"_qs, u"Cafe"_qs, {2, 6}},
        {u"a cafe\u0301!"_qs, u"caf\u00E9"_qs, {2, 7}}, // the mark belongs to the letter before it
        {u"o\uFB03ce"_qs, u"fic"_qs, {1, 3}},           // a part of a ligature takes all of it
        {u"o\uFB03ce"_qs, u"of"_qs, {0, 2}},
        {u"\U0001D400 \U0001D401x"_qs, u"a b"_qs, {0, 5}},
        {u"one \u00A0\n two"_qs, u"one\ttwo"_qs, {0, 10}},
        {u"ex\u00ADam\u00AD\nple"_qs, u"example"_qs, {0, 10}},
        {u"\u03A3\u03AF\u03C3\u03C5\u03C6\u03BF\u03C2"_qs, u"\u03C3\u03B9\u03C3\u03C5\u03C6\u03BF\u03C3"_qs, {0, 7}},
        {u"\uFF21\uFF22\uFF23"_qs, u"bc"_qs, {1, 3}}};
    for (const auto &[text, query, range] : cases)
        EXPECT_EQ(found(text, query), std::vector{range}) << text.toStdString() << ", " << query.toStdString();
}

TEST(FoldedTextTest, FindsNothingTwiceAndNothingBlank)
{
    EXPECT_EQ(found(u"aaaaa"_qs, u"aa"_qs), (std::vector<Range>{{0, 2}, {2, 4}}));
    EXPECT_EQ(found(u"\uFB03"_qs, u"f"_qs), (std::vector<Range>{{0, 1}})) << "both are in one character";
    for (const QString &blank : {u""_qs, u" \n"_qs, u"\u00AD"_qs, u"\u0301"_qs})
        EXPECT_TRUE(found(u"a \u00AD \u0301"_qs, blank).empty());
    EXPECT_TRUE(found(u"one two"_qs, u"onetwo"_qs).empty());
    EXPECT_EQ(FoldedText(QString(9, u'x')).occurrencesOf(FoldedText(u"x"), 3).size(), 3U);
}

PageText everywhere(const QString &text)
{
    return {text, std::vector(static_cast<std::size_t>(text.size()), QRectF(0, 0, 1, 1))};
}

TEST(FoldedTextTest, AWordMayBeDividedAtItsHyphen)
{
    const PageText page = everywhere(u"exam-\nple well\u2010\nknown pre-\nand, exam-\nple"_qs);
    const auto count = [&page](QStringView query) {
        FindReply reply;
        addHits(0, page, FoldedText(query), reply);
        return reply.hits.size();
    };
    EXPECT_EQ(count(u"example"), 2U);
    EXPECT_EQ(count(u"exam- ple"), 2U);
    EXPECT_EQ(count(u"well\u2010known"), 1U);
    EXPECT_EQ(count(u"pre- and"), 1U);
    EXPECT_EQ(count(u"pre-"), 1U) << "in one reading like in another";
    EXPECT_EQ(count(u"ple wellknown pre"), 1U);
}

TEST(FoldedTextTest, SaysWhatIsLeftOut)
{
    const auto replyTo = [](const PageText &page) {
        FindReply reply;
        addHits(0, page, FoldedText(u"x"), reply);
        return reply;
    };
    const FindReply all = replyTo(everywhere(QString(10'000, u'x')));
    EXPECT_TRUE(all.hits.size() == 10'000 && !all.isCut);
    const FindReply most = replyTo(everywhere(QString(10'001, u'x')));
    EXPECT_TRUE(most.hits.size() == 10'000 && most.isCut);
    EXPECT_TRUE(replyTo({u"y"_qs, {{}}, true}).isCut);
    EXPECT_FALSE(replyTo(everywhere(u" \n"_qs)).hasText);
}

QString collected(const QString &asItStands)
{
    TextCollector collector;
    double x = 0;
    for (const char32_t character : asItStands.toUcs4())
        character == ' ' ? collector.endWord() : collector.add(character, {x += 10, 0, 10, 10});
    collector.endLine();
    return collector.take().text;
}

// Capitals stand for letters that are read from right to left.
TEST(TextCollectorTest, PutsWhatIsReadFromTheRightInItsOrder)
{
    const auto asHebrew = [](const char *text) {
        QString made = QString::fromLatin1(text);
        for (QChar &unit : made)
            unit = unit.isUpper() ? QChar(0x05D0 + unit.unicode() - 'A') : unit;
        return made.replace(QLatin1Char('*'), QChar(0x05B0)); // a vowel sign
    };
    const std::pair<const char *, const char *> cases[] = {{"abc def", "abc def"},
                                                           {"CBA", "ABC"},
                                                           {"FE DCBA", "ABCD EF"},
                                                           {"say (DC BA) now", "say (AB CD) now"},
                                                           {"12 CBA", "ABC 12"},
                                                           {"34 12 CBA", "ABC 12 34"},
                                                           {"FED xyz 12 CBA", "ABC xyz 12 DEF"},
                                                           {"C*BA*", "A*BC*"},
                                                           {"3.5 BA ab", "3.5 AB ab"}};
    for (const auto &[stands, reads] : cases)
        EXPECT_EQ(collected(asHebrew(stands)), asHebrew(reads)) << stands;
}

TEST(TextCollectorTest, LeavesOutWhatIsTooMuchOrNoPlace)
{
    TextCollector collector;
    collector.add(U'a', {std::nan(""), 0, 1, 1});
    collector.add(U'\0', {0, 0, 1, 1});
    collector.add(U'b', {0, 3e9, 1, 1});
    collector.add(U'\U0001D400', {0, 0, 1, 1});
    collector.endLine();
    for (int i = 0; i < 60'000; ++i)
        collector.add(U'\U0001D400', {0, 0, 1, 1});
    collector.endLine();
    EXPECT_TRUE(collector.isFull());
    const PageText text = collector.take();
    EXPECT_TRUE(text.isCut);
    EXPECT_EQ(text.text.size(), 99'999) << "five units, and as many pairs as fit";
    EXPECT_TRUE(text.text.startsWith(u"ab\U0001D400\n\U0001D400"_qs));
    EXPECT_EQ(text.boxes.size(), 99'999U);
    EXPECT_TRUE(text.boxes[0].isNull() && text.boxes[1].isNull() && text.boxes[3].isNull());
    EXPECT_EQ(text.boxes[2], QRectF(0, 0, 1, 1));
}

} // namespace
