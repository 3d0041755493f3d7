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

constexpr char32_t firstFromRight = 0x590;

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
    for (auto mark = std::find_if(begin, end, isMark); mark != end; mark = std::find_if(mark, end, isMark)) {
        const auto letter = std::find_if_not(mark, end, isMark);
        const auto next = letter == end ? end : std::next(letter);
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
    for (auto begin = line.begin(); begin != line.end();) {
        if (!isAgainst(readingOf(*begin))) {
            ++begin;
            continue;
        }
        auto last = begin;
        for (auto next = std::next(begin); next != line.end() && !isAlong(readingOf(*next)); ++next) {
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
    const auto isFromRight = [](Reading reading) { return reading == Reading::RightToLeft; };
    const auto isFromLeft = [](Reading reading) {
        return reading == Reading::LeftToRight || reading == Reading::Number;
    };
    if (count(Reading::RightToLeft) <= count(Reading::LeftToRight)) {
        turnParts(line, isFromRight, isFromLeft);
    } else {
        turnRound(line.begin(), line.end());
        turnParts(line, isFromLeft, isFromRight);
    }
}

} // namespace

void TextCollector::reserve(qsizetype units)
{
    const qsizetype most = std::min(units, PageText::mostCharacters);
    m_text.text.reserve(most);
    m_text.boxes.reserve(static_cast<std::size_t>(most));
}

void TextCollector::add(char32_t character, const QRectF &box)
{
    if (QChar::category(character) == QChar::Other_Control)
        return;
    m_line.push_back({character, isPlace(box) ? box : QRectF()});
    m_isFromRight = m_isFromRight || (character >= firstFromRight && readingOf(m_line.back()) == Reading::RightToLeft);
}

void TextCollector::endWord()
{
    m_line.push_back({U' ', {}});
}

void TextCollector::append(const Character &character)
{
    const qsizetype units = QChar::requiresSurrogates(character.code) ? 2 : 1;
    m_text.isCut = m_text.isCut || m_text.text.size() + units > PageText::mostCharacters;
    if (m_text.isCut)
        return;
    m_text.boxes.push_back(character.box);
    if (units == 1) {
        m_text.text += QChar(static_cast<char16_t>(character.code));
        return;
    }
    m_text.text += QStringView(QChar::fromUcs4(character.code));
    m_text.boxes.emplace_back();
}

void TextCollector::endLine()
{
    if (m_isFromRight)
        bringInOrder(m_line);
    if (!m_line.empty() && !m_text.text.isEmpty())
        append({U'\n', {}});
    for (const Character &character : m_line)
        append(character);
    m_line.clear();
    m_isFromRight = false;
}

PageText TextCollector::take()
{
    m_line.clear();
    return std::exchange(m_text, {});
}

} // namespace inkory
