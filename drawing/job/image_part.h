// Parts of an image that are drawn apart from each other, perhaps by many machines, and joined later.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/geometry.h"

namespace vorna::drawing {

// One of columns x rows parts, counted from 0 on in rows from the upper left one. Parts meet at multiples of 8 pixels from the
// image's lower left corner.
struct Image_Part {
    VT_Int_Pair size; // of the whole image
    std::int32_t columns = 1, rows = 1, number = 0;
    bool is_whole = true; // whether it is an image by itself; false also for a part that is the only one of its image
    // Its pixels where parts are not equally large, with the image's lower left one at (0, 0). Parts of one image all have them
    // or none has.
    std::optional<VT_Int_Rectangle> cut = std::nullopt;
    // A text for what is drawn and how, equal for all parts of an image: up to 64 characters. Empty = not known.
    std::string origin = {};

    // Whether every part has pixels, and a cut begins and ends where parts may.
    bool is_possible() const noexcept;
    // Its pixels, with the image's lower left one at (0, 0).
    VT_Int_Rectangle area() const noexcept;

    // As the content of a file's chunk.
    std::string bytes() const;
    // False for bytes that do not describe a part.
    bool read(const std::string& bytes);
};

// Whether both are parts of one image, drawn from the same inputs in the same way.
bool belong_together(const Image_Part& one, const Image_Part& other) noexcept;

} // namespace vorna::drawing
