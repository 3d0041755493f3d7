#pragma once

#include <QCursor>

namespace inkory
{

/// The cursor for a brush of this thickness, in points: a circle of the brush's size, or cross hairs below 4. The ratio
/// is device pixels per point.
QCursor brushCursor(double thickness, double devicePixelRatio);

} // namespace inkory
