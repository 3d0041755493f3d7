#pragma once

#include <QMetaType>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace inkory
{

/// A point of one coordinate space. Points of different spaces do not mix: only PDFView converts between them.
template <class Space> struct SpacePoint
{
    double x = 0;
    double y = 0;

    constexpr bool operator==(const SpacePoint &) const = default;
};

/// A rectangle of one coordinate space: its corner with the smallest coordinates, its width and its height.
template <class Space> struct SpaceRect
{
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    constexpr bool operator==(const SpaceRect &) const = default;

    constexpr double maxX() const { return x + width; }
    constexpr double maxY() const { return y + height; }
    constexpr SpacePoint<Space> center() const { return {x + width / 2, y + height / 2}; }
    constexpr bool isEmpty() const { return width <= 0 || height <= 0; }

    /// Whether the point lies inside; the edges with the smaller coordinates belong to the rectangle, the others do
    /// not.
    constexpr bool contains(SpacePoint<Space> p) const { return p.x >= x && p.x < maxX() && p.y >= y && p.y < maxY(); }
};

/// A page's own space: origin at its lower left, y upward, 1 unit = 1/72 inch, before the page's rotation.
struct PageSpace;
/// The editing view's own space: origin at the view's lower left, y upward, device-independent pixels.
struct ViewSpace;
/// The overlay container's space: origin at the view's upper left, y downward, device-independent pixels.
struct OverlaySpace;
/// The window's space, in which pointer events arrive: origin at its upper left, y downward, device-independent pixels.
struct WindowSpace;

using PagePoint = SpacePoint<PageSpace>;
using PageRect = SpaceRect<PageSpace>;
using ViewPoint = SpacePoint<ViewSpace>;
using ViewRect = SpaceRect<ViewSpace>;
using OverlayPoint = SpacePoint<OverlaySpace>;
using OverlayRect = SpaceRect<OverlaySpace>;
using WindowPoint = SpacePoint<WindowSpace>;

/// For handing a rectangle to Qt's painting classes; the numbers stay in the space they were in.
template <class Space> QRectF toQRectF(const SpaceRect<Space> &rect)
{
    return {rect.x, rect.y, rect.width, rect.height};
}

/// For taking a rectangle back from Qt; swapped corners are put in order.
template <class Space> SpaceRect<Space> fromQRectF(const QRectF &rect)
{
    const QRectF ordered = rect.normalized();
    return {ordered.x(), ordered.y(), ordered.width(), ordered.height()};
}

} // namespace inkory

Q_DECLARE_METATYPE(inkory::PageRect)
