#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <vector>

namespace inkory
{

/// Where the pages of a document stand when they are shown below one another at a zoom factor. A value. All numbers are
/// in device-independent pixels of the laid-out document: origin at its upper left corner, y downward, margins
/// included. Lefts and tops are whole numbers, so that page images need not be resampled.
class PageLayout
{
public:
    /// Space around the document and between pages.
    static constexpr double margin = 12;

    PageLayout() = default;
    /// The pages' sizes as displayed, in points, and the zoom factor in pixels per point.
    PageLayout(const std::vector<QSizeF> &shownSizes, double scaleFactor);

    int pageCount() const { return static_cast<int>(m_tops.size()); }
    QSizeF documentSize() const { return m_documentSize; }

    /// Only for 0 <= index < pageCount().
    QRectF pageRect(int index) const;

    /// The page whose part of the height contains y: half of the gap above and below belongs to a page. The first or
    /// the last page beyond the ends; -1 without pages. Logarithmic in the number of pages.
    int nearestPage(double y) const;
    /// The page that contains the point, or -1.
    int pageAt(const QPointF &point) const;

private:
    std::vector<double> m_tops;
    std::vector<float> m_widths; // points fit exactly enough: 14,400 with 1/1000 to spare
    std::vector<float> m_heights;
    double m_scaleFactor = 1;
    QSizeF m_documentSize;
};

} // namespace inkory
