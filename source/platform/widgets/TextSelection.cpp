#include "platform/widgets/TextSelection.h"

#include <algorithm>

namespace inkory
{

namespace
{

bool isForPeople(QChar unit)
{
    return unit == u'\n' || (unit.category() != QChar::Other_Control && unit != softHyphen);
}

} // namespace

std::pair<int, int> TextSelection::span(const PlaceOf &placeOf) const
{
    return std::minmax({placeOf(m_anchor.page), placeOf(m_end.page)});
}

TextRange TextSelection::unitAround(const QString &text, qsizetype position) const
{
    return m_unit == Unit::Word ? wordAround(text, position) : lineAround(text, position);
}

qsizetype TextSelection::beginAt(const TextPlace &place, const QString &text) const
{
    if (m_unit == Unit::Character || place.position >= text.size())
        return std::min(place.position, text.size());
    return unitAround(text, place.position).begin;
}

qsizetype TextSelection::endAt(const TextPlace &place, const QString &text) const
{
    if (m_unit == Unit::Character || place.position >= text.size())
        return std::min(place.position, text.size());
    return unitAround(text, place.position).end;
}

TextRange TextSelection::rangeOn(int page, const QString &text, const PlaceOf &placeOf) const
{
    const int place = placeOf(page);
    const auto [firstPage, lastPage] = span(placeOf);
    if (place < 0 || place < firstPage || place > lastPage)
        return {};
    const bool isForward = m_anchor.page == m_end.page ? m_anchor.position <= m_end.position
                                                       : placeOf(m_anchor.page) <= placeOf(m_end.page);
    const TextPlace &first = isForward ? m_anchor : m_end;
    const TextPlace &last = isForward ? m_end : m_anchor;
    return {page == first.page ? beginAt(first, text) : 0, page == last.page ? endAt(last, text) : text.size()};
}

QString TextSelection::plainText(const std::vector<int> &pages, const TextOf &textOf, const PlaceOf &placeOf,
                                 qsizetype most) const
{
    QString selected;
    bool isFirst = true;
    for (const int page : pages) {
        const QString *text = textOf(page);
        if (!text)
            continue;
        if (!std::exchange(isFirst, false))
            selected += u'\n';
        const TextRange range = rangeOn(page, *text, placeOf);
        selected.reserve(selected.size() + std::clamp<qsizetype>(range.end - range.begin, 0, most) + 1);
        for (qsizetype i = range.begin; i < range.end && selected.size() <= most; ++i) {
            if (isForPeople(text->at(i)))
                selected += text->at(i);
        }
        if (selected.size() > most)
            return withoutTornPairs(selected, most);
    }
    return selected;
}

} // namespace inkory
