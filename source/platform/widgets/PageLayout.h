#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <vector>

namespace inkory
{

/// Where the pages of a document stand when they are shown below one another at a zoom factor. A value. All numbers are
/// in device-independent pixels of the laid-out document: origin at its upper left corner, y downward, margins
/// included. Lefts and tops are whole device pixels, so that page images need not be resampled.
class PageLayout
{
public:
    /// Space around the document and between pages.
    static constexpr double margin = 12;

    PageLayout() = default;
    /// The pages' sizes as displayed, in points, the zoom factor in pixels per point, and how many device pixels one
    /// pixel is wide.
    explicit PageLayout(const std::vector<QSizeF> &shownSizes, double scaleFactor = 1, double pixelRatio = 1);

    /// The same pages at another zoom factor or on another screen. Linear in the number of pages, but quick.
    void setScale(double scaleFactor, double pixelRatio);
    double pixelRatio() const { return m_pixelRatio; }

    /// How many whole pixels a length takes; an error of calculation makes no further one.
    static double wholePixels(double length);

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
    std::vector<double> m_widths; // in points
    std::vector<double> m_heights;
    double m_scaleFactor = 1;
    double m_pixelRatio = 1;
    QSizeF m_documentSize;
};

} // namespace inkory
