#include "platform/engine/TextCollector.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace inkory
{

namespace
{

using Character = TextCollector::Character;
using Place = std::vector<Character>::iterator;

enum class Reading { Neutral, LeftToRight, Number, RightToLeft };

Reading readingOf(const Character &character)
{
    switch (QChar::direction(character.code)) {
    case QChar::DirL:
        return Reading::LeftToRight;
    case QChar::DirR:
    case QChar::DirAL:
        return Reading::RightToLeft;
    case QChar::DirEN:
    case QChar::DirAN:
        return Reading::Number;
    default:
        return Reading::Neutral;
    }
}

bool isMark(const Character &character)
{
    return QChar::isMark(character.code);
}

// Marks stay behind their letter.
void turnRound(Place begin, Place end)
{
    std::reverse(begin, end);
    for (Place mark = std::find_if(begin, end, isMark); mark != end; mark = std::find_if(mark, end, isMark)) {
        const Place letter = std::find_if_not(mark, end, isMark);
        const Place next = letter == end ? end : std::next(letter);
        std::reverse(mark, next);
        mark = next;
    }
}

// Whether what lies between two characters that are read against their line's direction is read so, too. Numbers with
// a space between them are two.
bool isBridged(Place from, Place to)
{
    const auto isSpace = [](const Character &character) { return QChar::isSpace(character.code); };
    const bool areNumbers = readingOf(*from) == Reading::Number && readingOf(*to) == Reading::Number;
    return !areNumbers || std::none_of(from, to, isSpace);
}

// Turns each part of the line that is read against the line's direction.
void turnParts(std::vector<Character> &line, bool (*isAgainst)(Reading), bool (*isAlong)(Reading))
{
    for (Place begin = line.begin(); begin != line.end();) {
        if (!isAgainst(readingOf(*begin))) {
            ++begin;
            continue;
        }
        Place last = begin;
        for (Place next = std::next(begin); next != line.end() && !isAlong(readingOf(*next)); ++next) {
            if (!isAgainst(readingOf(*next)))
                continue;
            if (!isBridged(last, next))
                break;
            last = next;
        }
        while (std::next(last) != line.end() && isMark(*std::next(last)))
            ++last;
        turnRound(begin, std::next(last));
        begin = std::next(last);
    }
}

void bringInOrder(std::vector<Character> &line)
{
    const auto count = [&line](Reading reading) {
        return std::count_if(line.begin(), line.end(),
                             [=](const Character &each) { return readingOf(each) == reading; });
    };
    const auto fromRight = count(Reading::RightToLeft);
    if (fromRight == 0)
        return;
    const auto isFromRight = [](Reading reading) { return reading == Reading::RightToLeft; };
    const auto isFromLeft = [](Reading reading) {
        return reading == Reading::LeftToRight || reading == Reading::Number;
    };
    if (fromRight <= count(Reading::LeftToRight)) {
        turnParts(line, isFromRight, isFromLeft);
    } else {
        turnRound(line.begin(), line.end());
        turnParts(line, isFromLeft, isFromRight);
    }
}

} // namespace

void TextCollector::add(char32_t character, const QRectF &box)
{
    if (QChar::category(character) != QChar::Other_Control)
        m_line.push_back({character, isPlace(box) ? box : QRectF()});
}

void TextCollector::endWord()
{
    m_line.push_back({U' ', {}});
}

void TextCollector::append(const Character &character)
{
    const auto units = QChar::fromUcs4(character.code);
    const QStringView view(units);
    m_isFull = m_isFull || m_text.text.size() + view.size() > PageText::mostCharacters;
    if (m_isFull)
        return;
    m_text.text += view;
    m_text.boxes.push_back(character.box);
    m_text.boxes.resize(static_cast<std::size_t>(m_text.text.size()));
}

void TextCollector::endLine()
{
    std::vector<Character> line = std::exchange(m_line, {});
    bringInOrder(line);
    if (line.empty())
        return;
    if (!m_text.text.isEmpty())
        append({U'\n', {}});
    for (const Character &character : line)
        append(character);
}

PageText TextCollector::take()
{
    m_line.clear();
    return std::exchange(m_text, {});
}

} // namespace inkory
