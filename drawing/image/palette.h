// Palettes that users choose, and colours as entries of any palette.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "host/color.h"

namespace vorna::drawing {

// A palette that is a cube of so many levels, 2 or more of each and 256 colours at most.
VT_Reference<const VT_Palette> cube_palette(VT_Int_RGB levels);

// The colours of a palette file, 1 to 256: a PNG file with a palette, a GIMP palette, or text with a line #rrggbb for each.
// Throws Usage_Error that names the file and the place.
std::vector<VT_RGB32> read_palette(const std::string& file, Load_Limits& limits);
// The same of what the file holds.
std::vector<VT_RGB32> palette_colors(const std::string& file, std::string_view content, Load_Limits& limits);

// Maps colours to a palette that has no order. A pixel shows one of sixteen entries whose mean comes as near to its colour as it
// can, the darkest where the matrix of thresholds has its lowest entry: Thomas Knoll's pattern dithering. The index depends on
// colour and place alone.
class Palette_Dither {
public:
    // flat: colours that are not dithered but take the entry next to them.
    Palette_Dither(std::vector<VT_RGB32> colors, const std::vector<VT_RGB32>& flat);

    const std::vector<VT_RGB32>& colors() const noexcept { return colors_; }
    // x and y count from any corner. One thread at a time.
    std::uint8_t index(VT_RGB32 color, std::int32_t x, std::int32_t y);
    std::uint8_t nearest(VT_RGB32 color) const { return nearest_to(color.red, color.green, color.blue); }

    // Bytes that one occupies.
    static constexpr std::uint64_t memory = std::uint64_t{1} << 20;

private:
    using Pattern = std::array<std::uint8_t, 16>; // from the darkest to the lightest
    struct Entry {
        std::uint32_t color = 0; // with alpha 0: none
        Pattern pattern;
    };

    std::uint8_t nearest_to(std::int32_t red, std::int32_t green, std::int32_t blue) const noexcept;
    Pattern pattern_of(VT_RGB32 color) const;

    std::vector<VT_RGB32> colors_, flat_;
    std::vector<Entry> known_; // each colour has one place
};

} // namespace vorna::drawing
