// The farthest depths of the blocks of a depth buffer, by which kernels leave out triangles that are hidden wherever they lie.
//
// An entry is an upper bound of the depths in its block. The tests less and less or equal only make depths nearer, so an entry
// stays true while they draw; kernels lower it when they find a block nearer than its entry says. Whatever makes a depth farther
// raises the entries of its blocks first. All that writes the depth buffer must be the renderer's own: nothing else raises
// entries.
#pragma once

#include <cstdint>
#include <vector>

#include "renderer/core/pixel_target.h"

namespace krb {

class Depth_Blocks {
public:
    // Blocks of a window of that size in pixels, all raised. Throws std::bad_alloc.
    void cover(std::int32_t width, std::int32_t height);
    void remove() noexcept { *this = {}; }

    // Raises the blocks that the columns and rows touch, which are inclusive and may lie outside the window.
    void raise(std::int64_t first_column, std::int64_t last_column, std::int64_t first_row, std::int64_t last_row) noexcept;
    void raise_all() noexcept;

    // The entry of the lowest left block, then the others row by row; null when there are none.
    std::uint16_t* entries() noexcept { return entries_.empty() ? nullptr : entries_.data(); }
    std::int32_t in_row() const noexcept { return in_row_; }
    Block_Looks* looks() noexcept { return &looks_; }

private:
    std::vector<std::uint16_t> entries_;
    std::int32_t in_row_ = 0, rows_ = 0;
    Block_Looks looks_;
};

} // namespace krb
