#pragma once

#include <cstdint>

enum SignatureDrawingMode : std::int32_t {
    SignatureDrawingModeDrag = 0,
    SignatureDrawingModeClick = 1,
    SignatureDrawingModeTrackpad = 2,
};

enum SignatureDrawTool : std::int32_t {
    SignatureDrawToolPen = 0,
    SignatureDrawToolEraser = 1,
};
