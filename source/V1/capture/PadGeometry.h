#pragma once

#include "platform/core/Geometry.h"

namespace inkory
{

/// The signature pad's own space: origin at its lower left, y upward, device-independent pixels.
struct PadSpace;

using PadPoint = SpacePoint<PadSpace>;

} // namespace inkory
