#include "platform/engine/PageSearch.h"

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

} // namespace

std::vector<FindHit> hitsOn(int page, const PageText &text, const FoldedText &query)
{
    std::vector<FindHit> hits;
    for (const FoldedText::Range &range : FoldedText(text.text).occurrencesOf(query, FindReply::mostHitsPerPage)) {
        FindHit hit{page, areasOf(text, range)};
        if (!hit.areas.empty())
            hits.push_back(std::move(hit));
    }
    return hits;
}

} // namespace inkory
