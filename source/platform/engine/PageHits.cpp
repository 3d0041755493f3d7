#include "platform/engine/PageHits.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace inkory
{

namespace
{

std::vector<QRectF> areasOf(const PageText &text, FoldedText::Range range)
{
    std::vector<QRectF> areas;
    bool isNewLine = true;
    for (qsizetype i = range.begin; i < range.end; ++i) {
        const QRectF &box = text.boxes[static_cast<std::size_t>(i)];
        isNewLine = isNewLine || text.text[i] == QLatin1Char('\n');
        if (box.isEmpty())
            continue;
        if (isNewLine)
            areas.push_back(box);
        else
            areas.back() |= box;
        isNewLine = false;
    }
    return areas;
}

bool endsALine(QStringView hyphen)
{
    return hyphen.size() == 2 && FoldedText::isHyphen(hyphen[0].unicode()) && hyphen[1] == QLatin1Char('\n');
}

bool hasDividedWord(QStringView text)
{
    for (qsizetype i = text.indexOf(QLatin1Char('\n')); i >= 0; i = text.indexOf(QLatin1Char('\n'), i + 1)) {
        if (i > 0 && endsALine(text.sliced(i - 1, 2)))
            return true;
    }
    return false;
}

// In the order of the text, and such that no two share a character. What a hyphen at the end of a line means, nobody
// can know: it divides a word, belongs to it, or stands behind it.
std::vector<FoldedText::Range> occurrences(const QString &text, const FoldedText &query, qsizetype most)
{
    auto found = FoldedText(text).occurrencesOf(query, most);
    if (!hasDividedWord(text))
        return found;
    for (const auto divided : {FoldedText::DividedWord::WithHyphen, FoldedText::DividedWord::WithoutHyphen}) {
        for (const FoldedText::Range &range : FoldedText(text, divided).occurrencesOf(query, most)) {
            if (hasDividedWord(QStringView(text).sliced(range.begin, range.end - range.begin)))
                found.push_back(range);
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.begin < b.begin; });
    qsizetype end = 0;
    std::erase_if(found, [&end](const FoldedText::Range &range) {
        const bool isShared = range.begin < end;
        end = isShared ? end : range.end;
        return isShared;
    });
    found.resize(std::min(found.size(), static_cast<std::size_t>(most)));
    return found;
}

} // namespace

std::size_t addHits(int page, const PageText &text, const FoldedText &query, FindReply &reply)
{
    auto ranges = occurrences(text.text, query, FindReply::mostHitsPerPage + 1);
    const bool areTooMany = ranges.size() > FindReply::mostHitsPerPage;
    if (areTooMany)
        ranges.pop_back();
    reply.isCut = reply.isCut || areTooMany || text.isCut;
    reply.hasText = reply.hasText || !QStringView(text.text).trimmed().isEmpty();
    std::size_t areaCount = 0;
    for (const FoldedText::Range &range : ranges) {
        FindHit hit{page, areasOf(text, range)};
        areaCount += hit.areas.size();
        if (!hit.areas.empty())
            reply.hits.push_back(std::move(hit));
    }
    return areaCount;
}

} // namespace inkory
