// Ordered dithering of colours to the palette's colour cube.
//
// A channel value lies between two cells of the cube: a cell and a 16-bit fraction. The pixel takes the cell itself or the next
// one, depending on whether the threshold of its place in the 8 x 8 matrix reaches 65535 less the fraction. Taking the three
// channels one by one gives the same index as sorting the fractions and walking the corners of the cell from the largest fraction
// down: the channels that step up are always the ones with the largest fractions.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "host/object.h"

namespace krb {

// A colour cube as kernels read it. Plain data: kernels call no function that is not compiled with them.
struct Dither {
    std::int32_t red_multiplier, green_multiplier, blue_multiplier;
    std::int32_t red_stride, green_stride, blue_stride;
    std::int32_t base;
    // Row b of the threshold matrix, repeated so that sixteen entries can be read from any of the first eight.
    std::int32_t thresholds[8][24];
};

Dither make_dither(const VT_Color_Cube& cube) noexcept;

} // namespace krb
