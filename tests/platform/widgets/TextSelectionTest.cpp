#include "platform/widgets/TextSelection.h"
#include "platform/widgets/TextGeometry.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <limits>

using namespace inkory;

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Characters 10 wide and 12 high in lines of 15; the last argument's lines stand 300 further to the right.
PageText page(const QStringList &lines, const QStringList &secondColumn = {})
{
    PageText made;
    const auto add = [&](const QStringList &column, double left) {
        for (int line = 0; line < column.size(); ++line) {
            if (!made.text.isEmpty()) {
                made.text += u'\n';
                made.boxes.emplace_back();
            }
            for (int i = 0; i < column[line].size(); ++i) {
                made.text += column[line][i];
                made.boxes.push_back(column[line][i] == u' ' ? QRectF()
                                                             : QRectF(left + 10 * i, 100 + 15 * line, 10, 12));
            }
        }
    };
    add(lines, 50);
    add(secondColumn, 350);
    return made;
}

int inFileOrder(int sourceIndex)
{
    return sourceIndex;
}

TEST(TextGeometry, APointHitsTheNearestLineInHeightThenTheNearestBoundary)
{
    const TextGeometry text(page({QStringLiteral("one two"), QStringLiteral("x"), QStringLiteral("last")}));
    EXPECT_EQ(text.boundaryAt({50 + 14, 106}), 1); // left half of "n"
    EXPECT_EQ(text.boundaryAt({50 + 16, 106}), 2);
    EXPECT_EQ(text.boundaryAt({0, 106}), 0);
    EXPECT_EQ(text.boundaryAt({400, 106}), 7) << "beyond the line's end";
    EXPECT_EQ(text.boundaryAt({85, 122}), 9) << "beside the short line, not in the longer one below";
    EXPECT_EQ(text.boundaryAt({50, -1000}), 0);
    EXPECT_EQ(text.boundaryAt({1000, 1000}), 14);
    EXPECT_EQ(text.characterAt({50 + 16, 106}), 1);
    EXPECT_TRUE(text.isOverText({50 + 35, 106})) << "the gap between words";
    EXPECT_FALSE(text.isOverText({50 + 75, 106}));
}

TEST(TextGeometry, GapsBetweenTheLinesOfAColumnDoNotBelongToAnotherColumn)
{
    PageText columns = page({QStringLiteral("left"), QStringLiteral("down")}, {QStringLiteral("right")});
    for (std::size_t i = 10; i < columns.boxes.size(); ++i)
        columns.boxes[i].translate(0, 8); // from 108 to 120: beside the gap from 112 to 115
    EXPECT_EQ(TextGeometry(columns).boundaryAt({50, 114}), 5);
    EXPECT_EQ(TextGeometry(columns).boundaryAt({351, 114}), 10);
    EXPECT_EQ(TextGeometry(page({QStringLiteral("ab   cd")})).areas({0, 7}).size(), 2U) << "as wide as a column's gap";
}

// Four letters that stand from right to left, each left of the one before.
TEST(TextGeometry, BoxesTellTheDirectionOfText)
{
    PageText hebrew = page({QStringLiteral("ab \u05d0\u05d1\u05d2\u05d3")});
    for (std::size_t i = 3; i < 7; ++i)
        hebrew.boxes[i] = QRectF(80 + 10.0 * (6 - static_cast<double>(i)), 100, 10, 12);
    const TextGeometry text(hebrew);
    EXPECT_EQ(text.boundaryAt({118, 105}), 3) << "right half of the first letter: before it";
    EXPECT_EQ(text.boundaryAt({112, 105}), 4);
    EXPECT_EQ(text.boundaryAt({82, 105}), 7);
    EXPECT_EQ(text.areas({4, 6}), std::vector<QRectF>{QRectF(90, 100, 20, 12)});
    EXPECT_EQ(text.areas({1, 4}), (std::vector<QRectF>{QRectF(60, 100, 10, 12), QRectF(110, 100, 10, 12)}));

    PageText joined = page({QStringLiteral("ab\u05d0\u05d1")});
    std::swap(joined.boxes[2], joined.boxes[3]);
    EXPECT_EQ(TextGeometry(joined).areas({1, 3}),
              (std::vector<QRectF>{QRectF(60, 100, 10, 12), QRectF(80, 100, 10, 12)}));

    PageText upwards = page({QStringLiteral("up")});
    upwards.boxes = {QRectF(50, 110, 12, 10), QRectF(50, 100, 12, 10)};
    EXPECT_EQ(TextGeometry(upwards).boundaryAt({56, 101}), 2);
    EXPECT_EQ(TextGeometry(upwards).boundaryAt({56, 119}), 0);
}

TEST(TextGeometry, ALineIsOneAreaAndNeighboursMeetHalfway)
{
    PageText lines = page({QStringLiteral("two words"), QStringLiteral("second")});
    for (QRectF &box : lines.boxes)
        box.setHeight(box.height() * 1.5); // 18 high in lines of 15
    const TextGeometry text(lines);
    EXPECT_EQ(text.areas({0, 12}), (std::vector<QRectF>{QRectF(50, 100, 90, 16.5), QRectF(50, 116.5, 20, 16.5)}));
    EXPECT_TRUE(text.areas({3, 4}).empty()) << "a space has no place";
}

TEST(TextGeometry, UnusableBoxesAreLeftOutAndTheTextIsKept)
{
    PageText bad = page({QStringLiteral("abcdef")});
    bad.boxes = {{nan, 0, 5, 5}, {0, 0, 1e6, 1e6}, {-500, -500, 10, 10}, {10, 10, -5, 5}};
    const TextGeometry text(bad);
    EXPECT_EQ(text.text(), QStringLiteral("abcdef"));
    EXPECT_EQ(text.areas({0, 6}), std::vector<QRectF>{QRectF(0, 0, 14'400, 14'400)});
    EXPECT_EQ(text.boundaryAt({14'399, 5}), 6) << "what follows has no place of its own";
    EXPECT_TRUE(TextGeometry(PageText{QStringLiteral("abc"), {}}).isEmpty());
    EXPECT_EQ(TextGeometry().boundaryAt({1, 1}), 0);
    EXPECT_EQ(TextGeometry().characterAt({1, 1}), -1);
}

TEST(TextSelection, AWordEndsAtPunctuation)
{
    const QString text = QStringLiteral("Don't stop.\nNext line");
    EXPECT_EQ(wordAround(text, 2), (TextRange{0, 5}));
    EXPECT_EQ(wordAround(text, 9), (TextRange{6, 10}));
    EXPECT_EQ(wordAround(text, 10), (TextRange{10, 11}));
    EXPECT_TRUE(lineAround(text, 21).isEmpty() && wordAround(text, 99).isEmpty());
}

TEST(TextSelection, DraggingBackwardsKeepsTheWordOrLineItBeganWith)
{
    const QString text = QStringLiteral("one two three\nfour");
    const auto range = [&](TextSelection::Unit unit, qsizetype anchor, qsizetype end) {
        TextSelection selection({0, anchor}, unit);
        selection.extendTo({0, end});
        return selection.rangeOn(0, text, inFileOrder);
    };
    using Unit = TextSelection::Unit;
    EXPECT_EQ(range(Unit::Character, 5, 2), (TextRange{2, 5}));
    EXPECT_EQ(range(Unit::Word, 5, 5), (TextRange{4, 7}));
    EXPECT_EQ(range(Unit::Word, 5, 9), (TextRange{4, 13}));
    EXPECT_EQ(range(Unit::Word, 5, 1), (TextRange{0, 7}));
    EXPECT_EQ(range(Unit::Line, 5, 15), (TextRange{0, 18}));
    EXPECT_EQ(range(Unit::Character, 99, 3), (TextRange{3, 18}));
}

TEST(TextSelection, FollowsTheOrderOfThePagesAndLeavesOutControlCharacters)
{
    const std::vector<QString> texts{QStringLiteral("first\x07 page"), QStringLiteral("mid\u00addle\nline"),
                                     QStringLiteral("last page")};
    const auto textOf = [&](int index) { return &texts.at(static_cast<std::size_t>(index)); };
    TextSelection selection({0, 7}, TextSelection::Unit::Character);
    selection.extendTo({2, 4});
    EXPECT_EQ(selection.plainText({0, 1, 2}, textOf, inFileOrder), QStringLiteral("page\nmiddle\nline\nlast"));
    const auto backwards = [](int sourceIndex) { return 2 - sourceIndex; };
    EXPECT_EQ(selection.plainText({2, 1, 0}, textOf, backwards), QStringLiteral(" page\nmiddle\nline\nfirst "));
    EXPECT_EQ(selection.span(backwards), std::pair(0, 2));
    EXPECT_TRUE(selection.rangeOn(3, texts[0], inFileOrder).isEmpty());
}

} // namespace
