#include "platform/widgets/FindMarks.h"

#include <QPainter>

#include <utility>

namespace inkory
{

namespace
{

// Pages are white in every theme.
const QColor markColor(255, 214, 0, 110);
const QColor currentColor(255, 140, 0, 150);
const QColor currentEdgeColor(190, 80, 0);

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
    const auto paintAreas = [&](const FindHit &mark, const auto &paintArea) {
        for (const QRectF &area : mark.areas) {
            const QRectF place = toPainter(area);
            if (place.intersects(clip))
                paintArea(place & clip);
        }
    };
    const FindHit *current = nullptr;
    for (const std::size_t i : marks->second) {
        if (static_cast<int>(i) == m_current)
            current = &m_marks[i];
        else
            paintAreas(m_marks[i], [&](const QRectF &place) { painter.fillRect(place, markColor); });
    }
    if (!current)
        return;
    painter.save();
    painter.setPen(QPen(currentEdgeColor, 1));
    painter.setBrush(currentColor);
    paintAreas(*current, [&](const QRectF &place) { painter.drawRect(place); });
    painter.restore();
}

} // namespace inkory
