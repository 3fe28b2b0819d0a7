// Which pixels of an image are compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "drawing/image/png_reader.h"

namespace vorna::drawing {

// An image of the same size says it: pixels that are black or wholly transparent are left out, all others are compared.
class Pixel_Mask {
public:
    explicit Pixel_Mask(const Png_Image& image);

    std::int32_t width() const noexcept { return width_; }
    std::int32_t height() const noexcept { return height_; }
    bool counts_any() const noexcept;
    // i: counts from the left of the top row.
    bool counts(std::size_t i) const noexcept { return counts_[i]; }

private:
    std::int32_t width_, height_;
    std::vector<bool> counts_;
};

} // namespace vorna::drawing
