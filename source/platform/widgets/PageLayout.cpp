#include "platform/widgets/PageLayout.h"

#include <algorithm>
#include <cmath>

namespace inkory
{

PageLayout::PageLayout(const std::vector<QSizeF> &shownSizes, double scaleFactor) : m_scaleFactor(scaleFactor)
{
    m_tops.reserve(shownSizes.size());
    m_widths.reserve(shownSizes.size());
    m_heights.reserve(shownSizes.size());
    double top = margin;
    double widest = 0;
    for (const QSizeF &size : shownSizes) {
        m_tops.push_back(top);
        m_widths.push_back(static_cast<float>(size.width()));
        m_heights.push_back(static_cast<float>(size.height()));
        top += std::ceil(size.height() * scaleFactor) + margin;
        widest = std::max(widest, size.width() * scaleFactor);
    }
    if (!shownSizes.empty())
        m_documentSize = QSizeF(std::ceil(widest) + 2 * margin, top);
}

QRectF PageLayout::pageRect(int index) const
{
    const auto i = static_cast<std::size_t>(index);
    const double width = static_cast<double>(m_widths[i]) * m_scaleFactor;
    const double height = static_cast<double>(m_heights[i]) * m_scaleFactor;
    return {std::floor((m_documentSize.width() - width) / 2), m_tops[i], width, height};
}

int PageLayout::nearestPage(double y) const
{
    if (m_tops.empty())
        return -1;
    const auto after = std::upper_bound(m_tops.begin(), m_tops.end(), y + margin / 2);
    return std::max(0, static_cast<int>(after - m_tops.begin()) - 1);
}

int PageLayout::pageAt(const QPointF &point) const
{
    const int index = nearestPage(point.y());
    return index >= 0 && pageRect(index).contains(point) ? index : -1;
}

} // namespace inkory
