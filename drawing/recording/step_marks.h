// What a call did to the pixels of an area.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "drawing/recording/area_copy.h"
#include "drawing/recording/plane.h"
#include "drawing/recording/steps.h"

namespace vorna::drawing::recording {

// Bits for each pixel, row by row from the top left.
struct Marks {
    // One more than those of Step_Change: the call has stored a colour, though perhaps the one that was there.
    static constexpr std::uint8_t drawn = 4;

    Plane_Part part;
    std::vector<std::uint8_t> bits;

    explicit Marks(const Plane_Part& area) : part(area), bits(area.pixels(), 0) {}

    void add(const Area_Copy& before, std::uint8_t bit) {
        before.for_each_change([this, bit](std::size_t position) { bits[position] |= bit; });
    }
};

// window: in device pixels.
Step_Change change_of(const Marks& marks, const VT_Int_Rectangle& window);

// Counts the pixels that were drawn and shares the time between them. width: of the window.
void add(Step_Heat& heat, const Marks& marks, std::int32_t width, double microseconds);

} // namespace vorna::drawing::recording
