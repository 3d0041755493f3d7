#include "platform/widgets/PageLayout.h"

#include <algorithm>
#include <cmath>

namespace inkory
{

PageLayout::PageLayout(const std::vector<QSizeF> &shownSizes, double scaleFactor, double pixelRatio)
    : m_tops(shownSizes.size())
{
    m_widths.reserve(shownSizes.size());
    m_heights.reserve(shownSizes.size());
    for (const QSizeF &size : shownSizes) {
        m_widths.push_back(size.width());
        m_heights.push_back(size.height());
    }
    setScale(scaleFactor, pixelRatio);
}

double PageLayout::wholePixels(double length)
{
    return std::ceil(length - 1e-6);
}

void PageLayout::setScale(double scaleFactor, double pixelRatio)
{
    m_scaleFactor = scaleFactor;
    m_pixelRatio = pixelRatio;
    // Counted in device pixels, so that no error adds up over many pages.
    const double gap = wholePixels(margin * pixelRatio);
    double top = gap;
    for (std::size_t i = 0; i < m_tops.size(); ++i) {
        m_tops[i] = top / pixelRatio;
        top += wholePixels(m_heights[i] * scaleFactor * pixelRatio) + gap;
    }
    if (!m_tops.empty()) {
        const double widest = *std::max_element(m_widths.begin(), m_widths.end());
        m_documentSize = QSizeF(wholePixels(widest * scaleFactor) + 2 * margin, top / pixelRatio);
    }
}

QRectF PageLayout::pageRect(int index) const
{
    const auto i = static_cast<std::size_t>(index);
    const double width = m_widths[i] * m_scaleFactor;
    const double height = m_heights[i] * m_scaleFactor;
    const double left = std::floor((m_documentSize.width() - width) / 2 * m_pixelRatio) / m_pixelRatio;
    return {left, m_tops[i], width, height};
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
