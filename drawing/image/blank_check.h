// Images that show nothing.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>

#include "drawing/files/setting_names.h"
#include "drawing/image/background.h"
#include "drawing/image/image_file.h"
#include "host/color.h"

namespace vorna::drawing {

// Whether drawn pixels differ from the background.
class Blank_Check {
public:
    // frame: of the drawn pixels. palette: null = pixels have 32 bits.
    Blank_Check(const Background& background, const VT_Int_Rectangle& frame, const VT_Palette* palette)
        : background_(background), frame_(frame), palette_(palette) {}

    bool is_blank() const noexcept { return !differs_; }

    // Some rows as the renderer has drawn them; top: the device row of the highest one. Several threads may call it at once.
    void add(const Raster& drawn, std::int32_t top) {
        for (std::int32_t row = 0; row < drawn.height && !differs_; ++row) {
            const VT_RGB32 color = background_.row_color(top - row, frame_);
            const std::uint8_t index = palette_ ? static_cast<std::uint8_t>(palette_->closest_match(color, false)) : 0;
            const void* expected = palette_ ? static_cast<const void*>(&index) : &color;
            const std::size_t size = palette_ ? 1 : sizeof color;
            const std::uint8_t* pixels = drawn.top + row * drawn.row_bytes;
            // All pixels are the same when each is like the one before it.
            if (std::memcmp(pixels, expected, size) != 0 ||
                std::memcmp(pixels, pixels + size, (static_cast<std::size_t>(drawn.width) - 1) * size) != 0) {
                differs_ = true;
            }
        }
    }

private:
    const Background background_;
    const VT_Int_Rectangle frame_;
    const VT_Palette* palette_;
    std::atomic<bool> differs_{false};
};

inline std::string blank_message(const std::string& input) {
    return input + ": nothing to be seen: nothing of it lies in the image; " + name_of(Setting::allow_empty) +
           " writes such images";
}

} // namespace vorna::drawing
