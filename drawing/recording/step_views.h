// Images of a recording at a position: its colours, its depths, the clip of a call, and maps of draws and costs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drawing/recording/steps.h"
#include "host/color.h"

namespace vorna::drawing::recording {

enum class Step_View {
    colors,
    depths,   // the nearest white, the farthest black, in between by the depths that are there
    mask,     // light where the clips of the last call let it draw, dark elsewhere
    overdraw, // how often calls have drawn: dark red for once to white for the most
    cost,     // the time that calls have taken, in the same colours by its logarithm
};

// Opaque pixels of the window, the top row first.
struct Step_Image {
    std::int32_t width = 0, height = 0;
    std::vector<VT_RGB32> pixels;
    std::string legend; // what the colours mean here; empty for colours
};

// Overdraw and cost need steps with heat.
Step_Image image_of(const Recording_Steps& steps, Step_View view);

} // namespace vorna::drawing::recording
