// From drawn pixels to those of the file: the means of smaller pixels, transparency, and palettes that no renderer draws with.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "drawing/image/image_file.h"
#include "drawing/image/palette.h"

namespace vorna::drawing {

struct Finish_Settings {
    std::int32_t supersample = 1;            // columns and rows of drawn pixels to a pixel
    bool transparent = false;                // pixels are drawn twice, over black and over white
    const Palette_Dither* palette = nullptr; // of the file, null = as the buffer has it
    bool linear = false;                     // the mean of smaller pixels is that of their light; not of transparent ones

    // Whether pixels are stored as they are drawn.
    bool is_plain() const noexcept { return supersample == 1 && !transparent && !palette; }
};

// Every thread has its own.
//
// A pixel is the mean of all drawn pixels in it, channel by channel in the values that files hold, rounded to the nearest, halves
// up. The mean of light is that of the values' squares, see Surfaces of models. What is transparent shows the background: what
// was drawn lets through 255 - alpha of 255 when over white it is by that much lighter than over black. That is exact for what
// hides all or nothing, and else as exact as eight bits tell.
class Pixel_Finish {
public:
    explicit Pixel_Finish(const Finish_Settings& settings);

    // Keeps what was drawn over black; the next rows are those over white.
    void keep(const Raster& over_black);
    // A row of the file, counted from the raster's top; x and y: the place of its first pixel in the picture.
    void store_row(const Raster& drawn, std::int32_t row, VT_Int_Pair place, std::uint8_t* samples);

private:
    void add_up(const std::uint8_t* top, std::ptrdiff_t row_bytes, std::size_t width, std::vector<std::uint32_t>& sums) const;
    VT_RGB32 mean(std::size_t pixel) const;
    VT_RGB32 mean_of_light(std::size_t pixel) const;
    VT_RGB32 transparent_color(std::size_t pixel) const;

    Finish_Settings settings_;
    std::unique_ptr<Palette_Dither> palette_;
    std::vector<std::uint8_t> kept_; // drawn over black, rows from the top down
    std::vector<std::uint32_t> sums_, black_sums_;
    std::vector<std::uint8_t> roots_; // of the means of squares, for linear
};

} // namespace vorna::drawing
