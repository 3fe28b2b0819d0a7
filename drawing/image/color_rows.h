// Samples as colours, for files that store nothing else.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "drawing/image/image_form.h"

namespace vorna::drawing {

// Stores a row as red, green and blue, and alpha where channels are 4. Indices beyond the palette are black, depths grey.
inline void store_colors(const Image_Form& form, const std::uint8_t* samples, std::size_t channels, std::uint8_t* colors) {
    const std::size_t step = form.pixel_bytes();
    const bool indexed = form.colors == Image_Form::Colors::palette, grey = form.colors == Image_Form::Colors::grey;
    for (std::size_t i = 0; i < form.width; ++i, samples += step, colors += channels) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const std::size_t entry = 3 * std::size_t{*samples} + channel;
            const bool has_entry = entry < form.palette.size();
            colors[channel] = channel == 3 && (indexed || grey) ? std::uint8_t{255}
                              : indexed ? (has_entry ? static_cast<std::uint8_t>(form.palette[entry]) : std::uint8_t{0})
                                        : samples[grey ? 0 : channel];
        }
    }
}

// Channels of a file that keeps alpha.
inline std::size_t color_channels(const Image_Form& form) noexcept {
    return form.colors == Image_Form::Colors::red_green_blue_alpha && !form.opaque ? 4 : 3;
}

} // namespace vorna::drawing
