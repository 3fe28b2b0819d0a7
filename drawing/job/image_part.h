// Parts of an image that are drawn apart from each other, perhaps by many machines, and joined later.
#pragma once

#include <cstdint>
#include <string>

#include "host/geometry.h"

namespace vorna::drawing {

// One of columns x rows parts, counted from 0 on in rows from the upper left one. Parts meet at multiples of 8 pixels from the
// image's lower left corner.
struct Image_Part {
    VT_Int_Pair size; // of the whole image
    std::int32_t columns = 1, rows = 1, number = 0;
    bool is_whole = true; // whether it is an image by itself; false also for a part that is the only one of its image
    // Whether every part has pixels.
    bool is_possible() const noexcept { return columns <= (size.x + 7) / 8 && rows <= (size.y + 7) / 8; }
    // Its pixels, with the image's lower left one at (0, 0).
    VT_Int_Rectangle area() const noexcept;

    // As the content of a file's chunk.
    std::string bytes() const;
    // False for bytes that do not describe a part.
    bool read(const std::string& bytes);
};

} // namespace vorna::drawing
