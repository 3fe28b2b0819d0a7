// The rules that make up a member, and what every kernel reads of the renderer and the call.
//
// Everything here is plain data: kernels call no function that is not compiled with them.
#pragma once

#include <cstdint>

#include "renderer/core/dither.h"

namespace krb {

enum class Pixel_Format { index8, rgb32 };

enum class Depth_Rule {
    none,
    less_or_equal, // pass when new <= stored; a pass always writes
    by_mode,       // the renderer's test mode and write flag
};

enum class Pixel_Rule { store, blend, merge };

enum class Clip_Rule {
    open,
    masked,    // the pixels that the complex-clip mask leaves
    patterned, // the cells of a face pattern, less what a mask takes away when there is one
};

// Gathered once a call.
struct Pixel_Target {
    std::uint8_t* const* color_rows;
    std::uint8_t* const* depth_rows;
    std::int32_t color_row_bytes, depth_row_bytes; // from the start of a row to that of the row above, negative
    std::int32_t width;                            // pixels in a row of either buffer
    std::int32_t height;
    std::int32_t origin_x, origin_y;
    // For Depth_Rule::by_mode: a pixel passes when new <= stored + depth_bias, or exactly when not, with depth_inverted.
    std::int32_t depth_bias;
    bool depth_inverted;
    bool depth_written;
    // For Pixel_Rule::merge.
    std::uint32_t background, alternate_background;
    std::uint8_t (*merged_index8)(const void* renderer, std::uint8_t stored, std::uint8_t index);
    const void* renderer;
    // For Pixel_Format::index8: the bias goes into the low bits of a scaled channel; the matrix row of buffer row 0.
    const Dither* dither;
    std::int32_t dither_bias;
    std::int32_t dither_row;
    // For Clip_Rule::masked, and patterned when not null: start of each mask row, the leftmost pixel in the highest bit, set bits
    // clipped away. Three bytes from any pixel on can be read.
    const std::uint8_t* const* mask_rows;
};

} // namespace krb
