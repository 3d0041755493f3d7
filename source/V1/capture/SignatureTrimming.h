#pragma once

#include "platform/core/Image.h"

#include <QImage>

namespace inkory
{

/// The drawn part of a pad's image, as it goes into the library: the pixels that are not fully transparent, with a
/// margin of 10 of the image's own pixels on each side where the image has as many. Keeps the pixel density. None if
/// nothing is drawn.
ImagePtr trimmedSignature(const QImage &drawing);

} // namespace inkory
