#pragma once

#include <cstdint>

/// What a click on a page does. The window controller owns the current tool; the editing view mirrors it.
enum ToolType : std::int32_t {
    ToolTypeSelect = 0,     ///< Selects, moves and resizes stamps.
    ToolTypeImageStamp = 1, ///< Places the chosen image, centred on the click.
    ToolTypeTextStamp = 2,  ///< Places a text and starts editing it.
};
