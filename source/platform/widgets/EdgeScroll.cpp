#include "platform/widgets/EdgeScroll.h"

#include "platform/widgets/PDFView.h"

#include <QtMath>

#include <algorithm>
#include <chrono>

namespace inkory
{

namespace
{

constexpr std::chrono::milliseconds interval{16};
constexpr double edgeWidth = 24;
constexpr double depthPerPixel = 4; // of scrolling
constexpr int fastestStep = 24;

int stepAt(double depth)
{
    return depth <= 0 ? 0 : std::min(fastestStep, qCeil(depth / depthPerPixel));
}

} // namespace

QPoint edgeScrollStep(const OverlayRect &visible, const OverlayPoint &start, const OverlayPoint &pointer)
{
    const double left = std::min(visible.x + edgeWidth, start.x);
    const double right = std::max(visible.maxX() - edgeWidth, start.x);
    const double top = std::min(visible.y + edgeWidth, start.y);
    const double bottom = std::max(visible.maxY() - edgeWidth, start.y);
    return {stepAt(pointer.x - right) - stepAt(left - pointer.x), stepAt(pointer.y - bottom) - stepAt(top - pointer.y)};
}

EdgeScroll::EdgeScroll(PDFView &view) : m_view(view)
{
    m_timer.setInterval(interval);
    m_timer.callOnTimeout([this] { scroll(); });
}

void EdgeScroll::follow(const OverlayPoint &start, const OverlayPoint &pointer)
{
    m_start = start;
    m_pointer = pointer;
    if (step().isNull())
        m_timer.stop();
    else if (!m_timer.isActive())
        m_timer.start();
}

QPoint EdgeScroll::step() const
{
    return edgeScrollStep(m_view.convertRectToOverlay(m_view.visibleRect()), m_start, m_pointer);
}

void EdgeScroll::scroll()
{
    const PDFView::Place before = m_view.place();
    m_view.scrollBy(step());
    if (m_view.place() == before)
        m_timer.stop();
}

} // namespace inkory
