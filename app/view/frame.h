// The pixels of a window while its contents are put together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "drawing/image/image_file.h"
#include "host/color.h"
#include "host/frame_buffer.h"
#include "host/geometry.h"

namespace vorna::app::view {

// Columns from left, rows from top.
struct Box {
    std::int32_t left = 0, top = 0, width = 0, height = 0;

    std::int32_t right() const noexcept { return left + width; }
    std::int32_t bottom() const noexcept { return top + height; }
    bool has(std::int32_t x, std::int32_t y) const noexcept { return x >= left && x < right() && y >= top && y < bottom(); }
    Box grown(std::int32_t by) const noexcept { return {left - by, top - by, width + 2 * by, height + 2 * by}; }
    Box common_part(const Box& other) const noexcept {
        const std::int32_t l = std::max(left, other.left), t = std::max(top, other.top);
        return {l, t, std::max(std::min(right(), other.right()) - l, 0), std::max(std::min(bottom(), other.bottom()) - t, 0)};
    }
};

// Opaque colours. Everything that is painted is cut at the border.
class Frame {
public:
    void reset(VT_Int_Pair size, VT_RGB32 color) {
        size_ = size;
        pixels_.assign(static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y), color);
    }

    Box box() const noexcept { return {0, 0, size_.x, size_.y}; }
    VT_RGB32* row(std::int32_t y) noexcept { return pixels_.data() + std::ptrdiff_t{y} * size_.x; }

    void fill(const Box& box, VT_RGB32 color) {
        const Box inside = box.common_part(this->box());
        for (std::int32_t y = inside.top; y < inside.bottom(); ++y) {
            std::fill_n(row(y) + inside.left, inside.width, color);
        }
    }

    // The border of a box, so many pixels wide and inside of it.
    void outline(const Box& box, std::int32_t width, VT_RGB32 color) {
        fill({box.left, box.top, box.width, width}, color);
        fill({box.left, box.bottom() - width, box.width, width}, color);
        fill({box.left, box.top, width, box.height}, color);
        fill({box.right() - width, box.top, width, box.height}, color);
    }

    // An image of colours whose first row is the top one.
    void put(const VT_Shared_Image& image, std::int32_t left, std::int32_t top) {
        const Box inside = Box{left, top, image.width(), image.height()}.common_part(box());
        for (std::int32_t y = inside.top; y < inside.bottom(); ++y) {
            const auto* const from = reinterpret_cast<const VT_RGB32*>(image.row(y - top));
            std::copy_n(from + (inside.left - left), inside.width, row(y) + inside.left);
        }
    }

    drawing::Raster raster() const noexcept {
        return {reinterpret_cast<const std::uint8_t*>(pixels_.data()), std::ptrdiff_t{size_.x} * 4, size_.x, size_.y,
                Buffer_Format::rgb32};
    }

private:
    VT_Int_Pair size_;
    std::vector<VT_RGB32> pixels_;
};

} // namespace vorna::app::view
