// Which cells of a mask have excluded pixels. Plain data: kernels read it.
#pragma once

#include <cstdint>

namespace krb {

// before[y * row + x]: how many of the cells in the first y rows and x columns of cells have an excluded pixel. Four of these
// numbers tell whether a rectangle of cells has any.
struct Clipped_Cells {
    static constexpr int side_bits = 5; // a cell has 32 x 32 pixels

    const std::uint32_t* before = nullptr;
    std::int32_t row = 0; // the columns of cells and one more
};

} // namespace krb
