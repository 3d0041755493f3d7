#pragma once

#include <QImage>
#include <QSize>

namespace inkory
{

/// A fully transparent image for this size in points. The pixels are rounded up to whole ones; its size in points is
/// pixels ÷ ratio, so that one density holds for both directions. Null for an empty size.
QImage emptyPadImage(QSizeF size, double devicePixelRatio);

} // namespace inkory
