#include "V1/editing/StampDrag.h"

using namespace inkory;

namespace
{

// Steps count in single precision.
double rounded(double value)
{
    return static_cast<double>(static_cast<float>(value));
}

} // namespace

bool isOddTurn(int fromRotation, int toRotation)
{
    return (fromRotation / 90 - toRotation / 90) % 2 != 0;
}

PageRect frameOnOtherPage(const PageRect &frame, const PageInView &page, const PageInView &otherPage)
{
    return otherPage.rectToPage(page.rectToView(frame));
}

PageRect movedFrame(const PageRect &frame, const PageInView &page, const PointerStep &step)
{
    const PagePoint from = page.pointToPage(step.from);
    const PagePoint to = page.pointToPage(step.to);
    return {frame.x + (to.x - from.x), frame.y + (to.y - from.y), frame.width, frame.height};
}

PageRect resizedFrame(const PageRect &frame, const PageInView &page, const PointerStep &step, Proportions proportions)
{
    const auto [x, y, w, h] = page.rectToView(frame);
    if (w <= 0 || h <= 0 || step.from == step.to)
        return frame;
    double dx = rounded(step.to.x - step.from.x);
    double dy = rounded(step.to.y - step.from.y);
    if (h - dy < minStampSideInView)
        dy = h - minStampSideInView;
    if (w + dx < minStampSideInView)
        dx = minStampSideInView - w;
    if (proportions == Proportions::Kept) {
        if (dx / w > dy / h)
            dy = rounded(-dx * h / w);
        else
            dx = rounded(-dy * w / h);
    }
    if (dx == 0 && dy == 0)
        return frame; // the way to the view and back would leave a trace of rounding, and that an undo step
    return page.rectToPage({x, y + dy, w + dx, h - dy});
}

PagePoint pageStep(float dx, float dy, int pageRotation)
{
    const auto x = static_cast<double>(dx);
    const auto y = static_cast<double>(dy);
    switch (pageRotation / 90) {
    case 1:
        return {-y, x};
    case 2:
        return {-x, -y};
    case 3:
        return {y, -x};
    default:
        return {x, y};
    }
}
