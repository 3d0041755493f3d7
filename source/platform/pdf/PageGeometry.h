#pragma once

#include "platform/core/Geometry.h"

#include <QSizeF>
#include <QTransform>

namespace inkory
{

/// Which of a page's boxes is meant: the whole sheet, or the part of it that is shown.
enum class DisplayBox { MediaBox, CropBox };

/// A page's boxes and rotation, in page space. A value: what the file says, cleaned up so that the rest can rely on it.
struct PageGeometry
{
    /// Never empty; at most 14,400 units a side. US letter where the file says nothing usable.
    PageRect mediaBox{0, 0, 612, 792};
    /// The shown part: the file's crop box cut with the media box (the media box where they do not meet).
    PageRect cropBox{0, 0, 612, 792};
    /// Clockwise as displayed: 0, 90, 180 or 270 degrees.
    int rotation = 0;

    bool operator==(const PageGeometry &) const = default;

    PageRect bounds(DisplayBox box) const { return box == DisplayBox::MediaBox ? mediaBox : cropBox; }
};

/// Any whole number of degrees brought to 0, 90, 180 or 270. What is no multiple of 90 counts as 0.
int normalizedRotation(int degrees);

/// The size of the box as displayed: width and height exchanged for rotations of 90 and 270 degrees.
QSizeF shownSize(const PageRect &box, int rotation);

/// Maps page space to the shown page: origin at the upper left of the box as displayed, y downward, 1 unit = 1/72 inch,
/// turned clockwise by the rotation. This is the one place where a page's rotation and box offset become arithmetic.
QTransform shownPageTransform(const PageRect &box, int rotation);

} // namespace inkory
