#include "V1/editing/EdgeScroll.h"

#include <QtMath>

#include <algorithm>

using namespace inkory;

namespace
{

constexpr double edgeWidth = 24;
constexpr double depthPerPixel = 4; // of scrolling
constexpr int fastestStep = 24;

int stepAt(double depth)
{
    return depth <= 0 ? 0 : std::min(fastestStep, qCeil(depth / depthPerPixel));
}

} // namespace

QPoint edgeScrollStep(const ViewRect &visible, const ViewPoint &start, const ViewPoint &pointer)
{
    const double left = std::min(visible.x + edgeWidth, start.x);
    const double right = std::max(visible.maxX() - edgeWidth, start.x);
    const double bottom = std::min(visible.y + edgeWidth, start.y);
    const double top = std::max(visible.maxY() - edgeWidth, start.y);
    return {stepAt(pointer.x - right) - stepAt(left - pointer.x), stepAt(bottom - pointer.y) - stepAt(pointer.y - top)};
}
