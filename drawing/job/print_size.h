// Sizes of images that are printed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "drawing/job/print_settings.h"
#include "host/geometry.h"

namespace vorna::drawing {

// The unit of drawings and models that do not state theirs, in metres.
inline constexpr double millimetre = 0.001;

std::vector<std::string> paper_names();
std::vector<std::string> unit_names();

// These throw Usage_Error for texts of another form.
// The paper's size in pixels; none without paper.
std::optional<VT_Int_Pair> paper_pixels(const Print_Settings& settings);
// Pixels for a metre of what is drawn; none without a scale.
std::optional<double> scaled_pixels_per_metre(const Print_Settings& settings);
// The metres of a unit of coordinates; none without a unit.
std::optional<double> unit_metres(const Print_Settings& settings);

} // namespace vorna::drawing
