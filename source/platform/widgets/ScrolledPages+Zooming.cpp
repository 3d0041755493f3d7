// How the zoom factor changes, and what stays where it is meanwhile.

#include "platform/widgets/ScrolledPages.h"

#include <algorithm>
#include <cmath>

namespace inkory
{

namespace
{

constexpr double zoomStep = 1.25;
// How long the factor has to rest, after changes in quick succession, until pages are drawn for it.
constexpr int restMilliseconds = 90;

// What is left free around a page that is fitted into the view.
constexpr double fitMargin = 0.95;

float fittingFactor(double viewLength, double pageLength)
{
    return static_cast<float>(viewLength / pageLength * fitMargin);
}

} // namespace

void ScrolledPages::setScaleFactor(double factor)
{
    const ViewRect visible = visibleRect();
    setScaleFactor(factor, visible.center());
}

void ScrolledPages::setScaleFactor(double factor, const ViewPoint &anchor)
{
    if (std::isnan(factor))
        return;
    const QPointF at(anchor.x, height() - anchor.y);
    // Where the document ends, what is under a resting pointer moves away from it, and comes back in the end.
    if (!m_zoomAnchor || m_zoomAnchor->at != at)
        m_zoomAnchor = ZoomAnchor{at, placeAt(at)};
    const ZoomAnchor kept = *m_zoomAnchor;
    zoomKeeping(factor, kept.kept, at);
    m_zoomAnchor = kept;
}

void ScrolledPages::zoomKeeping(double factor, const Place &kept, const QPointF &at)
{
    factor = std::clamp(factor, minScaleFactor, maxScaleFactor);
    const auto positionFor = [&] {
        const bool isThere = m_document && m_document->pageAtIndex(kept.pageIndex);
        return isThere && kept.pageIndex < m_layout.pageCount() ? pointInDocument(kept) - at : m_scrollPosition;
    };
    if (qFuzzyCompare(factor, m_scaleFactor)) {
        moveTo(positionFor());
        return;
    }
    Q_EMIT scaleFactorWillChange();
    stopMoving();
    noteZooming();
    m_scaleFactor = factor;
    m_layout.setScale(factor, viewport()->devicePixelRatioF());
    setScrollBarRanges();
    m_scrollPosition = bounded(positionFor());
    m_zoomAnchor.reset();
    pageSizesChanged();
    positionChanged();
    Q_EMIT scaleFactorChanged();
}

void ScrolledPages::noteZooming()
{
    if (m_sinceZoom.isValid() && m_sinceZoom.elapsed() < restMilliseconds)
        m_zoomRest.start(restMilliseconds);
    m_sinceZoom.start();
}

void ScrolledPages::zoomByNotches(double notches, const QPointF &at)
{
    if (notches != 0)
        setScaleFactor(m_scaleFactor * std::pow(zoomStep, notches), viewPointAt(at));
}

void ScrolledPages::zoomIn()
{
    setScaleFactor(m_scaleFactor * zoomStep);
}

void ScrolledPages::zoomOut()
{
    setScaleFactor(m_scaleFactor / zoomStep);
}

void ScrolledPages::zoomActualSize()
{
    setScaleFactor(1.0);
}

void ScrolledPages::fitPageWidth()
{
    const PDFPage *page = currentPage();
    const PageRect media = page ? page->boundsForBox(DisplayBox::MediaBox) : PageRect{};
    if (!media.isEmpty())
        setScaleFactor(static_cast<double>(fittingFactor(viewBounds().width, media.width)));
}

void ScrolledPages::fitPageSize()
{
    const PDFPage *page = currentPage();
    const PageRect media = page ? page->boundsForBox(DisplayBox::MediaBox) : PageRect{};
    if (media.isEmpty())
        return;
    const float factor =
        std::min(fittingFactor(viewBounds().width, media.width), fittingFactor(viewBounds().height, media.height));
    setScaleFactor(static_cast<double>(factor));
}

} // namespace inkory
