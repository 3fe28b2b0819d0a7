// Options of images that are printed: paper, pixels per inch, and the scale of maps, drawings and models.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/options.h"
#include "host/geometry.h"

namespace vorna::app {

struct Print_Options {
    double dpi = 0; // pixels per inch; 0 = not given
    std::string paper, scale, unit;

    // Pixels per inch of an image that is to be printed: 300 where only paper or scale say so; 0 of others.
    double pixels_per_inch() const noexcept { return dpi > 0 ? dpi : paper.empty() && scale.empty() ? 0 : 300; }
};

// The unit of drawings and models that do not say theirs.
inline constexpr double millimetre = 0.001;

void add_print_options(std::vector<Option>& table, Print_Options& options);

// These throw Usage_Error for texts that say nothing.
// The paper's size in pixels; none without --paper.
std::optional<VT_Int_Pair> paper_pixels(const Print_Options& options);
// Pixels for a metre of what is drawn; none without --scale.
std::optional<double> pixels_per_metre(const Print_Options& options);
// Pixels for a metre of paper, for files to tell; 0 = not said.
std::uint32_t stated_density(const Print_Options& options);
// The metres of a unit of coordinates; none without --unit.
std::optional<double> unit_metres(const Print_Options& options);

} // namespace vorna::app
