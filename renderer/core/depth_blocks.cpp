// The farthest depths of the blocks of a depth buffer.
#include "renderer/core/depth_blocks.h"

#include <algorithm>

namespace krb {

void Depth_Blocks::cover(std::int32_t width, std::int32_t height) {
    in_row_ = (width + block_columns - 1) >> block_column_bits;
    rows_ = (height + block_rows - 1) >> block_row_bits;
    entries_.assign(static_cast<std::size_t>(in_row_) * static_cast<std::size_t>(rows_), farthest_depth);
}

void Depth_Blocks::raise(std::int64_t first_column, std::int64_t last_column, std::int64_t first_row,
                         std::int64_t last_row) noexcept {
    const std::int64_t first = std::max<std::int64_t>(first_column >> block_column_bits, 0);
    const std::int64_t end = std::min<std::int64_t>((last_column >> block_column_bits) + 1, in_row_);
    const std::int64_t end_row = std::min<std::int64_t>((last_row >> block_row_bits) + 1, rows_);
    for (std::int64_t row = std::max<std::int64_t>(first_row >> block_row_bits, 0); first < end && row < end_row; ++row) {
        std::fill_n(&entries_[static_cast<std::size_t>(row * in_row_ + first)], end - first, farthest_depth);
    }
}

void Depth_Blocks::raise_all() noexcept {
    std::fill(entries_.begin(), entries_.end(), farthest_depth);
}

} // namespace krb
