// A window in memory that libraries draw on: 32-bit pixels, blue in the low byte, highest row first, rows aligned to 64 bytes.
#pragma once

#include <algorithm>
#include <vector>

#include "bench/canvas.h"

namespace bench {

class Memory_Canvas : public Canvas {
public:
    void clear_color() override {
        for (Row& row : rows_) {
            std::fill(std::begin(row.pixels), std::end(row.pixels), 0xFFFFFFFF);
        }
    }
    void clear_depth() override {}
    void finish() override {}

    // Libraries leave the fourth byte as they like.
    std::vector<bool> painted_pixels() override {
        std::vector<bool> painted;
        for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
            std::transform(std::begin(row->pixels), std::end(row->pixels), std::back_inserter(painted),
                           [](std::uint32_t pixel) { return (pixel | 0xFF000000) != 0xFFFFFFFF; });
        }
        return painted;
    }

protected:
    static constexpr std::int32_t bytes_per_row = 4 * window_size.x;

    std::uint32_t* pixels() noexcept { return rows_.front().pixels; }
    // Where a row of device coordinates lies, counted downwards.
    static constexpr std::int32_t from_top(std::int32_t y) noexcept { return window_size.y - 1 - y; }

private:
    struct alignas(64) Row {
        std::uint32_t pixels[window_size.x];
    };
    static_assert(sizeof(Row) == bytes_per_row);

    std::vector<Row> rows_{static_cast<std::size_t>(window_size.y)};
};

// The image's pixels with their colours multiplied by alpha.
std::vector<std::uint32_t> premultiplied(const Image& image);

} // namespace bench
