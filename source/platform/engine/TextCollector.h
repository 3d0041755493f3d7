#pragma once

#include "platform/pdf/PageText.h"

#include <QString>

#include <vector>

namespace inkory
{

/// Makes a PageText of the characters of a page, which come word by word and line by line, as they stand on the page:
/// within a line from its left end to its right one. Text that is read from right to left is put in its order.
class TextCollector
{
public:
    /// How many units are to be expected.
    void reserve(qsizetype units);

    /// Control characters are left out, and boxes that are no place.
    void add(char32_t character, const QRectF &box);
    /// Where a space stands between this word and the next one of its line.
    void endWord();
    void endLine();

    /// Whether something had to be left out as there is no room for more.
    bool isFull() const { return m_text.isCut; }

    /// What has been collected up to the last line's end.
    PageText take();

    struct Character
    {
        char32_t code = 0;
        QRectF box;
    };

private:
    void append(const Character &character);

    PageText m_text;
    std::vector<Character> m_line;
    bool m_isFromRight = false; // whether something in the line is read from right to left
};

} // namespace inkory
