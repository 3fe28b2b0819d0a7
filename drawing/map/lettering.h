// Letters at their places in an image, and the pixels that they cover.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "drawing/map/label_font.h"
#include "drawing/map/map_paint.h"
#include "drawing/map/shapes.h"
#include "host/geometry.h"

namespace vorna::drawing::map {

struct Placed_Letter {
    const Face* outline; // belongs to the font
    Position at;         // its origin, in pixels
    Position along;      // direction of the base line, as long as the font's size
};

// Letters in one colour. Lengths are pixels before supersampling.
struct Lettering {
    std::vector<Placed_Letter> letters;
    Text_Paint paint;
    VT_Int_Rectangle box; // of the pixels that they and their halo may touch

    // Appends the letters of a text whose base line begins at the place.
    void add(const Text& text, Position at);
    void find_box();
};

// Shares of pixels that letters and their halo cover, of 255; rows from bottom to top.
struct Letter_Pixels {
    VT_Int_Rectangle area;
    std::vector<std::uint8_t> letters, halo;
};

// Calls draw for areas that together are all pixels of the window that the lettering touches in an image `times` as large. Shares
// are found by whole numbers from each side alone, so they do not depend on the window.
void for_each_area(const Lettering& lettering, std::int32_t times, const VT_Int_Rectangle& window,
                   const std::function<void(const Letter_Pixels&)>& draw);

} // namespace vorna::drawing::map
