// Images that are printed: paper, pixels per inch, and scale.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>

namespace vorna::drawing {

struct Print_Settings {
    double dpi = 0;    // pixels per inch of paper, for files to state; 0 = 300 with paper or scale, else none
    std::string paper; // the size of the image, as A4, A4-landscape or 200x100mm; empty = none
    std::string scale; // paper to what is drawn, as 1:50000; empty = none
    std::string unit;  // of coordinates of drawings, models and planes, for scale, as m; empty = mm for drawings and models

    // 0 = not stated.
    double pixels_per_inch() const noexcept { return dpi > 0 ? dpi : paper.empty() && scale.empty() ? 0 : 300; }
    std::uint32_t pixels_per_metre() const noexcept {
        constexpr double inch = 0.0254; // metres
        return static_cast<std::uint32_t>(std::lround(pixels_per_inch() / inch));
    }
};

} // namespace vorna::drawing
