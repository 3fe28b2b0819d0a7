// Drawing one pixel: clip, depth, colour. Included once for each vocabulary of lanes, after pixel_formats.inl; used with those of
// one lane.

#include <cassert>
#include <cstdint>

#include "renderer/core/pixel_target.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// The low 16 bits of a negative depth may be farther than what they replace.
inline void raise_block(const Pixel_Target& target, std::int32_t row, std::int32_t column) {
    target.block_depths[std::int64_t{row >> block_row_bits} * target.blocks_in_row + (column >> block_column_bits)] =
        farthest_depth;
}

// By the rules that span.inl describes. The pixel lies in the window. Its whole depth is compared; the low 16 bits are written.
template <class Rules, class Source>
KRB_ALWAYS_INLINE void draw_pixel(const typename Rules::Target& target, std::int32_t row, std::int32_t column, std::int32_t z,
                                  const Source& source) {
    using Format = typename Rules::Format;
    using Depth = typename Rules::Depth;
    assert(lies_in_window(target, row, column, 1));
    if constexpr (Rules::clip == Clip_Rule::masked) {
        if (!Mask_Cursor::at(target.mask_rows[row], column).drawable()) {
            return;
        }
    }
    if constexpr (Depth::reads) {
        std::uint8_t* const at = target.depth_rows[row] + std::int64_t{2} * column;
        const Int depth = splat(z);
        const Active passed = Depth::pass(target, All{}, depth, load_depths(at, All{}));
        if (none(passed)) {
            return;
        }
        if (Depth::writes(target)) {
            store_depths(at, depth, passed);
            if (z < 0 && target.block_depths) {
                raise_block(target, row, column);
            }
        }
    }
    Format::template write<typename Rules::Pixel>(target, row, target.color_rows[row] + std::int64_t{Format::bytes} * column,
                                                  source, All{});
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
