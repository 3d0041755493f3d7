#include "platform/widgets/FindMarks.h"

#include "platform/widgets/Highlight.h"

#include <QPainter>

#include <iterator>
#include <utility>

namespace inkory
{

namespace
{

const QColor markColor(255, 232, 110);
const QColor currentColor(255, 180, 80);
const QColor currentEdgeColor(190, 80, 0);

template <class Function>
void forEachPlace(const FindHit &mark, const QRectF &clip, const FindMarks::Mapping &toPainter, Function function)
{
    for (const QRectF &area : mark.areas) {
        const QRectF place = toPainter(area);
        if (place.intersects(clip))
            function(place & clip);
    }
}

} // namespace

FindMarks::FindMarks(std::vector<FindHit> marks, int current) : m_marks(std::move(marks)), m_current(current)
{
    for (std::size_t i = 0; i < m_marks.size(); ++i)
        m_marksOfPages[m_marks[i].page].push_back(i);
}

void FindMarks::paint(QPainter &painter, int page, const QRectF &clip, const Mapping &toPainter) const
{
    const auto marks = m_marksOfPages.find(page);
    if (marks == m_marksOfPages.end())
        return;
    painter.save();
    for (const std::size_t i : marks->second) {
        if (static_cast<int>(i) != m_current)
            forEachPlace(m_marks[i], clip, toPainter,
                         [&](const QRectF &place) { paintHighlight(painter, place, markColor); });
    }
    painter.setPen(QPen(currentEdgeColor, 1));
    if (const FindHit *current = currentOn(page)) {
        forEachPlace(*current, clip, toPainter, [&](const QRectF &place) {
            paintHighlight(painter, place, currentColor);
            painter.drawRect(place);
        });
    }
    painter.restore();
}

const FindHit *FindMarks::currentOn(int page) const
{
    const bool isThere = m_current >= 0 && m_current < std::ssize(m_marks);
    const FindHit *current = isThere ? &m_marks[static_cast<std::size_t>(m_current)] : nullptr;
    return current && current->page == page ? current : nullptr;
}

QRegion FindMarks::currentRegion(int page, const QRectF &clip, const Mapping &toPainter) const
{
    QRegion region;
    if (const FindHit *current = currentOn(page))
        forEachPlace(*current, clip, toPainter, [&](const QRectF &place) { region += place.toAlignedRect(); });
    return region;
}

} // namespace inkory
