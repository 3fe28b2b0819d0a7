// Kernels for one span of a row at a time, and the table of them of one instruction set.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "renderer/core/pixel_target.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb {

// The pixels of a row from a column on, above 0 of them, all inside the buffer.
struct Pixel_Span {
    std::int32_t row, column, count;
};

// A shape that is the same left and right of column x, above and below row y: in the rows y - dy and y + dy the columns x - e to
// x + e, where e is extents[dy]; -1 leaves them empty. dy runs from 0 to last.
struct Mirrored_Rows {
    std::int32_t x, y, last;
    const std::int32_t* extents;
};

using Fill_Kernel = void(const Pixel_Target& target, const Mirrored_Rows& shape, VT_RGB32 color);

// source: as many pixels of the buffer's format as the span has.
using Copy_Kernel = void(const Pixel_Target& target, Pixel_Span span, const std::uint8_t* source);

struct Span_Kernels {
    // 32-bit pixels in one colour, stored as it is or blended as lines blend.
    Fill_Kernel* store;
    Fill_Kernel* blend;
    Copy_Kernel* copy_index8;
    Copy_Kernel* copy_rgb32;
    // (source * a + stored * (255 - a)) / 255 by each source pixel's alpha; the pixel becomes opaque. Alpha 0 leaves all four
    // bytes.
    Copy_Kernel* blend_rgb32;
};

struct Span_Kernel_Table {
    Span_Kernels open;
    // The pixels whose mask bits are clear.
    Span_Kernels masked;
};

} // namespace krb
