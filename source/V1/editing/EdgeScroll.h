#pragma once

#include "platform/core/Geometry.h"

#include <QPoint>

/// How far to scroll at each tick while something is dragged near an edge of the visible part: pixels to add to the
/// scroll bars' values (x to the right, y downward), more the nearer the edge, and more beyond it. A drag that began
/// near an edge scrolls only once it is nearer than where it began.
QPoint edgeScrollStep(const inkory::ViewRect &visible, const inkory::ViewPoint &start,
                      const inkory::ViewPoint &pointer);
