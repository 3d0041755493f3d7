#pragma once

#include "platform/core/Geometry.h"

/// The frame moved, if need be, so that its centre lies within the box (its edges included); both in page space. The
/// box's numbers count in single precision.
inkory::PageRect frameWithCenterInBox(const inkory::PageRect &frame, const inkory::PageRect &box);
