// Kernels for one span of a row at a time, and the table of them of one instruction set.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "renderer/core/cases.h"
#include "renderer/core/fixed_point.h"
#include "renderer/core/pixel_target.h"
#include "renderer/kernels/configurations.h"
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

// source: as many pixels of the buffer's format as the span has. depth: from the span's first pixel on; read by kernels with a
// depth rule.
using Copy_Kernel = void(const Pixel_Target& target, Pixel_Span span, const std::uint8_t* source, Fixed_Interpolator depth);

struct Span_Configuration {
    Pixel_Format format;
    Depth_Rule depth;
    Pixel_Rule pixel;
    Clip_Rule clip;

    static constexpr int packed_bits = 8;
    constexpr std::uint32_t packed() const noexcept { return krb::packed(format, depth, pixel, clip); }
};

// One colour, stored as it is or blended as lines blend.
inline constexpr auto fill_configurations =
    every<Span_Configuration>(Choice{Pixel_Format::rgb32}, Choice{Depth_Rule::none}, Choice{Pixel_Rule::store, Pixel_Rule::blend},
                              Choice{Clip_Rule::open, Clip_Rule::masked});

// Source pixels, stored as they are or blended by their alpha: (source * a + stored * (255 - a)) / 255, and the pixel becomes
// opaque. Alpha 0 leaves all four bytes.
inline constexpr auto copy_configurations =
    join(every<Span_Configuration>(Choice{Pixel_Format::index8}, Choice{Depth_Rule::none, Depth_Rule::less_or_equal},
                                   Choice{Pixel_Rule::store}, Choice{Clip_Rule::open, Clip_Rule::masked}),
         every<Span_Configuration>(Choice{Pixel_Format::rgb32}, Choice{Depth_Rule::none, Depth_Rule::less_or_equal},
                                   Choice{Pixel_Rule::store, Pixel_Rule::blend}, Choice{Clip_Rule::open, Clip_Rule::masked}));

struct Span_Kernel_Table {
    Kernel_Table<Fill_Kernel, fill_configurations> fill;
    Kernel_Table<Copy_Kernel, copy_configurations> copy;
};

} // namespace krb
