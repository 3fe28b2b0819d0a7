// The pixel formats, as members ask about them. What kernels do with the pixels of a format stands in pixel_formats.inl.
#pragma once

#include <cstdint>

#include "host/frame_buffer.h"
#include "renderer/core/cases.h"

namespace krb {

struct Format_Facts {
    Buffer_Format buffer;
    std::int32_t pixel_bytes;
    // A colour is stored as the word that it is. In other formats it is dithered: what is stored depends on the pixel's place.
    bool stores_words;
    // Source pixels have an alpha of their own.
    bool has_alpha;
    // Members with depth may follow the renderer's test mode and write flag. In other formats a pixel passes when its depth is
    // less or equal, and is always written.
    bool follows_depth_modes;
    // Members take the bytes of any buffer for their pixels when options with an odd colour system leave them one.
    bool takes_any_buffer;
};

// In the order of Pixel_Format.
inline constexpr Format_Facts format_facts[] = {
    {.buffer = Buffer_Format::index8,
     .pixel_bytes = 1,
     .stores_words = false,
     .has_alpha = false,
     .follows_depth_modes = false,
     .takes_any_buffer = true},
    {.buffer = Buffer_Format::rgb32,
     .pixel_bytes = 4,
     .stores_words = true,
     .has_alpha = true,
     .follows_depth_modes = true,
     .takes_any_buffer = false},
};

constexpr const Format_Facts& facts_of(Pixel_Format format) noexcept {
    return format_facts[static_cast<int>(format)];
}

constexpr const Format_Facts& facts_of(Case c) noexcept {
    return facts_of(format_of(c));
}

// A colour as a format prepares it once for many segments. Of palette indices: the cell of the colour cube that the colour lies
// in, and the least threshold at which each channel steps up to the next cell.
struct Prepared_Color {
    std::int32_t index, red, green, blue;
};

} // namespace krb
