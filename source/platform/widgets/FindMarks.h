#pragma once

#include "platform/pdf/PageText.h"

#include <QRegion>

#include <functional>
#include <unordered_map>
#include <vector>

class QPainter;

namespace inkory
{

/// What a search found, as marks on the pages. A value that finds those of one page at once, however many there are.
class FindMarks
{
public:
    /// From the space of PageText to the painter's coordinates.
    using Mapping = std::function<QRectF(const QRectF &)>;

    FindMarks() = default;
    /// `current` is the index of the mark that stands out; any other number for none.
    FindMarks(std::vector<FindHit> marks, int current);

    /// Paints the marks of one page, as far as they lie in the clip; see paintHighlight(). Pages are counted in the
    /// file's own order.
    void paint(QPainter &painter, int page, const QRectF &clip, const Mapping &toPainter) const;
    /// Where the mark that stands out is painted.
    QRegion currentRegion(int page, const QRectF &clip, const Mapping &toPainter) const;

private:
    const FindHit *currentOn(int page) const;

    std::vector<FindHit> m_marks;
    std::unordered_map<int, std::vector<std::size_t>> m_marksOfPages; // indices of m_marks
    int m_current = -1;
};

} // namespace inkory
