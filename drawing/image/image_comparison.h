// How two images differ.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "drawing/image/png_reader.h"

namespace vorna::drawing {

// Pixels that may differ: no channel by more than the difference, no more pixels than the count.
struct Fuzz {
    std::int32_t difference = 0;
    std::int64_t count = 0;
};

struct Image_Difference {
    bool is_same = false;
    std::string text;       // one line
    std::int64_t count = 0; // pixels that differ
    std::int32_t most = 0;  // the largest difference of a channel
};

// Without fuzz all of two images of one kind counts: size, palette, transparency and samples. Images of unlike kinds of up to 8
// bits a sample - grey, RGB, with alpha, with a transparent colour, with a palette - are the same when their colours are. With
// fuzz colours are compared in all kinds, with alpha, greys of fewer bits scaled to 8; images of 16 bits a sample in steps of 16
// bits.
Image_Difference compare(const Png_Image& a, const Png_Image& b, const std::optional<Fuzz>& fuzz);

// A PNG file of the first image in pale grey with the pixels in red that differ in colour or sample, the brighter the less they
// do; both must have the same size.
std::string difference_png(const Png_Image& a, const Png_Image& b);

} // namespace vorna::drawing
