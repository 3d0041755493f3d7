#include "V1/editing/FrameBounds.h"

using namespace inkory;

namespace
{

double boundedOrigin(double origin, double length, float boxOrigin, float boxLength)
{
    const auto start = static_cast<double>(boxOrigin);
    const auto end = start + static_cast<double>(boxLength);
    if (start - length / 2 > origin)
        origin = start - length / 2;
    if (origin > end - length / 2)
        origin = end - length / 2;
    return origin;
}

} // namespace

PageRect frameWithCenterInBox(const PageRect &frame, const PageRect &box)
{
    PageRect bounded = frame;
    bounded.x = boundedOrigin(frame.x, frame.width, static_cast<float>(box.x), static_cast<float>(box.width));
    bounded.y = boundedOrigin(frame.y, frame.height, static_cast<float>(box.y), static_cast<float>(box.height));
    return bounded;
}
