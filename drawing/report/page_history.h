// Histories of pixels in the form that the page of a report reads.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "drawing/recording/pixel_history.h"

namespace vorna::drawing::report {

struct Page_History {
    // {areas, lists, runs, rules}: the pixels of the areas row after row, each by the number of its list, in runs of pixels with
    // the same one. A list has two numbers for each event: the call, and outcome + 8 if it writes a colour + 16 times the set of
    // rules.
    nlohmann::ordered_json json;
    // Bytes for each pixel: the value before all calls, then for each event the value after it, or of refused ones the shape's
    // depth.
    std::string values;
    std::size_t events = 0;
};

// histories: those of all pixels of the areas, in the same order.
Page_History page_history(std::span<const recording::Image_Area> areas, std::span<const recording::Pixel_History> histories);

// The pixels of the areas.
std::vector<VT_Int_Pair> pixels_of(std::span<const recording::Image_Area> areas);

} // namespace vorna::drawing::report
