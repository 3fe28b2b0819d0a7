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
    std::string text; // one line
};

// Without fuzz everything counts: size, kind of pixels, palette and samples; but for colours of 8 bits, which files may store with
// a palette, with alpha or without: images of unlike storage are the same when their colours are. With fuzz the colours of palettes
// are compared instead of indices, size and kind still count.
Image_Difference compare(const Png_Image& a, const Png_Image& b, const std::optional<Fuzz>& fuzz);

// A PNG file of the first image in pale grey with the pixels in red that differ in colour or sample, the brighter the less they
// do; both must have the same size.
std::string difference_png(const Png_Image& a, const Png_Image& b);

} // namespace vorna::drawing
