#pragma once

#include "platform/core/Geometry.h"

#include <functional>

// The arithmetic of a stamp in the hand: one step of moving it, of resizing it, of nudging it. Knows no widget.

/// The sides that a resize step lets a stamp have at least, as shown: device-independent pixels, whatever the zoom.
constexpr double minStampSideInView = 24;

/// A page as a drag meets it: how it is turned, and the way between its space and the view.
struct PageInView
{
    int rotation = 0; ///< Degrees, clockwise as displayed: 0, 90, 180 or 270.
    std::function<inkory::ViewRect(const inkory::PageRect &)> rectToView;
    std::function<inkory::PageRect(const inkory::ViewRect &)> rectToPage;
    std::function<inkory::PagePoint(const inkory::ViewPoint &)> pointToPage;
};

/// Where the pointer was at the step before, and where it is.
struct PointerStep
{
    inkory::ViewPoint from;
    inkory::ViewPoint to;
};

enum class Proportions { Kept, Free };

/// Whether a stamp's frame exchanges width and height on its way between pages with these rotations: that keeps what it
/// shows undistorted.
bool isOddTurn(int fromRotation, int toRotation);

/// The same rectangle on screen, in the other page's space.
inkory::PageRect frameOnOtherPage(const inkory::PageRect &frame, const PageInView &page, const PageInView &otherPage);

/// The frame moved on its page as far as the pointer went.
inkory::PageRect movedFrame(const inkory::PageRect &frame, const PageInView &page, const PointerStep &step);

/// The frame whose lower right corner, as shown, went along with the pointer while the upper left one stayed. The step
/// ends where a side reaches the minimum; then it is made proportional, if proportions are kept. Such a step follows
/// the side that grows more, so the shorter side may become smaller than the minimum. The frame itself where it is
/// empty (it has no proportions) or the step comes to nothing.
inkory::PageRect resizedFrame(const inkory::PageRect &frame, const PageInView &page, const PointerStep &step,
                              Proportions proportions);

/// A step across the screen (x to the right, y upward) as a step in the space of a page with this rotation; the length
/// counts in page units.
inkory::PagePoint pageStep(float dx, float dy, int pageRotation);
