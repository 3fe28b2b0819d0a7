// The cells of a face pattern, by column and row of the window.
#pragma once

#include "host/rendition.h"

namespace vorna {

class Pattern {
public:
    Pattern(std::int32_t number, const VT_Pattern_Bitmap* bitmap) noexcept : number_(number), bitmap_(bitmap) {}

    // False for hatches, and when the bitmap is missing.
    bool has_cells() const noexcept {
        if (number_ == face_pattern::bitmap) {
            return bitmap_ && bitmap_->width() > 0 && bitmap_->height() > 0;
        }
        return number_ >= 0 && number_ < face_pattern::bitmap;
    }

    // Whether the cell is set. has_cells() must hold; column and row are not negative.
    bool operator()(std::int32_t column, std::int32_t row) const noexcept {
        if (number_ == face_pattern::bitmap) {
            return bitmap_->row(row % bitmap_->height())[column % bitmap_->width()] != 0;
        }
        return (SHARED.stock_patterns[number_][row % 8] & 0x80 >> column % 8) != 0;
    }

private:
    std::int32_t number_;
    const VT_Pattern_Bitmap* bitmap_;
};

} // namespace vorna
