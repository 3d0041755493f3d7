#pragma once

#include "platform/core/Image.h"

#include <QImage>
#include <QRect>

namespace inkory
{

/// The smallest rectangle around the pixels that are not fully transparent; empty if all are.
QRect drawnPixels(const QImage &drawing);

/// The drawn part of a pad's image, as it goes into the library: drawnPixels() with a margin of 10 of the
/// image's own pixels on each side, cut off at the image's edges. Keeps the pixel density. None if nothing is drawn.
ImagePtr trimmedSignature(const QImage &drawing);

} // namespace inkory
