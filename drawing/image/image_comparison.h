// How two images differ.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "drawing/image/pixel_mask.h"
#include "drawing/image/png_reader.h"

namespace vorna::drawing {

// Pixels that may differ: no channel by more than the difference, no more pixels than the count.
struct Fuzz {
    std::int32_t difference = 0;
    std::int64_t count = 0;
};

struct Comparison_Settings {
    std::optional<Fuzz> fuzz = {};
    bool by_colors = false;           // as without fuzz, but colours alone are compared in all kinds
    const Pixel_Mask* mask = nullptr; // null = all pixels are compared
};

// Columns from the left and rows from the top, inclusive.
struct Pixel_Area {
    std::int32_t left = 0, right = 0, top = 0, bottom = 0;
};

struct Image_Difference {
    // A pixel, its row from the top, and what both images hold there.
    struct Place {
        std::int32_t column = 0, row = 0;
        std::string in_a, in_b;
    };

    bool is_same = false;
    std::string text;          // one line
    std::int64_t count = 0;    // pixels that differ
    std::int32_t most = 0;     // the largest difference of a channel
    std::int64_t compared = 0; // pixels; 0 where sizes or kinds differ
    Pixel_Area area = {};      // of the pixels that differ, if any
    Place first = {};          // of them, in the order of rows
};

// Without fuzz all of two images of one kind counts: size, palette, transparency and samples. Images of unlike kinds of up to 8
// bits a sample - grey, RGB, with alpha, with a transparent colour, with a palette - are the same when their colours are. With
// fuzz colours are compared in all kinds, with alpha, greys of fewer bits scaled to 8; images of 16 bits a sample in steps of 16
// bits. Throws Usage_Error for a mask of another size than images of one size.
Image_Difference compare(const Png_Image& a, const Png_Image& b, const Comparison_Settings& settings = {});

// A PNG file of the first image in pale grey with the pixels in red that differ in colour or sample, the brighter the less they
// do, and pixels that are not compared in pale blue; both images and the mask must have the same size.
std::string difference_png(const Png_Image& a, const Png_Image& b, const Comparison_Settings& settings = {});

} // namespace vorna::drawing
