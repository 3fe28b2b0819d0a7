// A window in memory that libraries draw on: 32-bit pixels, blue in the low byte, highest row first, in a buffer of the same kind
// as the renderer's own.
#pragma once

#include <algorithm>
#include <vector>

#include "bench/canvas.h"
#include "host/frame_buffer.h"

namespace bench {

class Memory_Canvas : public Canvas {
public:
    void clear_color() override {
        for (std::int32_t y = 0; y < window_size.y; ++y) {
            std::fill_n(row(y), window_size.x, 0xFFFFFFFF);
        }
    }
    void clear_depth() override {}
    void finish() override {}

    // Libraries leave the fourth byte as they like.
    std::vector<bool> painted_pixels() override {
        std::vector<bool> painted;
        for (std::int32_t y = 0; y < window_size.y; ++y) {
            std::transform(row(y), row(y) + window_size.x, std::back_inserter(painted),
                           [](std::uint32_t pixel) { return (pixel | 0xFF000000) != 0xFFFFFFFF; });
        }
        return painted;
    }

protected:
    // The highest row's.
    std::uint32_t* pixels() noexcept { return row(window_size.y - 1); }
    std::uint32_t* row(std::int32_t y) noexcept { return reinterpret_cast<std::uint32_t*>(buffer_->rows[y]); }
    std::int32_t bytes_per_row() const noexcept { return buffer_->bytes_per_row; }
    // Where a row of device coordinates lies, counted downwards.
    static constexpr std::int32_t from_top(std::int32_t y) noexcept { return window_size.y - 1 - y; }

private:
    VT_Reference<Frame_Buffer> buffer_ = vorna::make_frame_buffer(window_size.x, window_size.y, Buffer_Format::rgb32);
};

// The image's pixels with their colours multiplied by alpha.
std::vector<std::uint32_t> premultiplied(const Image& image);

} // namespace bench
