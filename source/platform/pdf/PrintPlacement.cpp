#include "platform/pdf/PrintPlacement.h"

#include <QtMath>

#include <algorithm>

namespace inkory
{

namespace
{

constexpr double pointsPerInch = 72;
constexpr double mostPixelsOfBand = 8'000'000;
constexpr double mostPixelsOfSide = 32'000;
// As much as a page may be enlarged for drawing.
constexpr double mostPixelsPerPoint = 1'000;
constexpr int overlap = 2; // pixels

double scaleFor(QSizeF page, QSizeF printable, PageScaling scaling)
{
    if (scaling == PageScaling::None || page.isEmpty() || printable.isEmpty())
        return 1;
    const double fitting = std::min(printable.width() / page.width(), printable.height() / page.height());
    return scaling == PageScaling::ShrinkToFit ? std::min(fitting, 1.0) : fitting;
}

// Every pixel that the rectangle touches by more than an error of rounding.
QRect touchedPixels(const QRectF &rect)
{
    constexpr double error = 1e-6;
    const QPoint topLeft(qFloor(rect.left() + error), qFloor(rect.top() + error));
    const QPoint end(qCeil(rect.right() - error), qCeil(rect.bottom() - error));
    return {topLeft, end - QPoint(1, 1)};
}

QPageLayout layoutFor(QSizeF page, const PrintInfo &info)
{
    QPageLayout layout = info.pageLayout;
    const QSizeF paper = layout.pageSize().size(QPageSize::Point); // some paper is wider than high unturned
    const bool isAcross = (page.width() > page.height()) != (paper.width() > paper.height());
    if (info.autoRotate == AutoRotate::Yes && page.width() != page.height())
        layout.setOrientation(isAcross ? QPageLayout::Landscape : QPageLayout::Portrait);
    return layout;
}

} // namespace

SheetPlacement placeOnSheet(QSizeF shownSize, const PrintInfo &info)
{
    const QPageLayout layout = layoutFor(shownSize, info);
    SheetPlacement placement;
    placement.sheet = QPageLayout(layout.pageSize(), layout.orientation(), QMarginsF());
    placement.paperSize = layout.fullRectPoints().size(); // whole points, as they are written into the file
    const QRectF paper(QPointF(0, 0), placement.paperSize);
    const QRectF printable = layout.paintRectPoints();
    placement.scale = scaleFor(shownSize, printable.size(), info.scaling);
    const QPointF middle = info.scaling == PageScaling::None ? paper.center() : printable.center();
    const QPointF corner = middle - QPointF(shownSize.width(), shownSize.height()) * placement.scale / 2;
    placement.toSheet = QTransform(placement.scale, 0, 0, placement.scale, corner.x(), corner.y());
    return placement;
}

std::vector<int> pagesToPrint(const PrintInfo &info, int pageCount)
{
    std::vector<int> once;
    for (int page = 0; page < pageCount; ++page) {
        if (info.pages.isEmpty() || info.pages.contains(page + 1))
            once.push_back(page);
    }
    if (info.isReversed)
        std::reverse(once.begin(), once.end());
    const int copies = info.printerName.isEmpty() ? std::max(info.copies, 1) : 1;
    std::vector<int> all;
    if (info.isCollated) {
        for (int copy = 0; copy < copies; ++copy)
            all.insert(all.end(), once.begin(), once.end());
    } else {
        for (const int page : once)
            all.insert(all.end(), static_cast<std::size_t>(copies), page);
    }
    return all;
}

PageBands bandsOfPage(QSizeF shownSize, const SheetPlacement &placement, int resolution)
{
    const double paperSide = std::max(placement.paperSize.width(), placement.paperSize.height());
    const double pixelsPerPaperPoint = std::min(resolution / pointsPerInch, mostPixelsOfSide / paperSide);
    PageBands result;
    result.scale = std::min(pixelsPerPaperPoint * placement.scale, mostPixelsPerPoint);
    const QRectF onPaper = placement.toSheet.inverted().mapRect(QRectF(QPointF(0, 0), placement.paperSize)) &
                           QRectF(QPointF(0, 0), shownSize);
    const QRect pixels = touchedPixels({onPaper.topLeft() * result.scale, onPaper.size() * result.scale});
    if (pixels.isEmpty())
        return result;
    const int bandHeight = std::max(overlap + 1, static_cast<int>(mostPixelsOfBand / pixels.width()));
    for (int top = pixels.top(); top <= pixels.bottom(); top += bandHeight - overlap)
        result.bands.push_back(QRect(pixels.left(), top, pixels.width(), bandHeight) & pixels);
    return result;
}

} // namespace inkory
