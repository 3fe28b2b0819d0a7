// What every kernel reads of the renderer and the call. Plain data: kernels call no function that is not compiled with them.
#pragma once

#include <cstdint>

#include "renderer/core/dither.h"

namespace krb {

// Columns and rows of a block of depths, see Depth_Blocks.
inline constexpr int block_column_bits = 4;
inline constexpr int block_row_bits = 3;
inline constexpr std::int32_t block_columns = 1 << block_column_bits;
inline constexpr std::int32_t block_rows = 1 << block_row_bits;
inline constexpr std::uint16_t farthest_depth = 0xFFFF;

// How many triangles, or batches of small ones, are drawn without looking at blocks: from now on, and after the next look in
// vain.
struct Block_Looks {
    std::int32_t pause = 0, pause_after_next = 0;
};

// The renderer keeps one with its buffers; a call copies it and adds what its rendition says.
struct Pixel_Target {
    std::uint8_t* const* color_rows;
    std::uint8_t* const* depth_rows;
    std::int32_t color_row_bytes, depth_row_bytes; // from the start of a row to that of the row above, negative
    std::int32_t width;                            // pixels in a row of either buffer
    std::int32_t height;
    std::int32_t first_row, end_row; // the rows that may be drawn, half-open
    std::int32_t origin_x, origin_y;
    // For depth by test mode: a pixel passes when new <= stored + depth_bias, or exactly when not, with depth_inverted.
    std::int32_t depth_bias;
    bool depth_inverted;
    bool depth_written;
    // Farthest depths of blocks, those of a row of blocks one after the other, see Depth_Blocks; null where they are unknown.
    std::uint16_t* block_depths;
    std::int32_t blocks_in_row;
    Block_Looks* block_looks;
    // For merge control.
    std::uint32_t background, alternate_background;
    std::uint8_t (*merged_index8)(const void* renderer, std::uint8_t stored, std::uint8_t index);
    const void* renderer;
    // For palette indices: the bias goes into the low bits of a scaled channel; the matrix row of buffer row 0.
    const Dither* dither;
    std::int32_t dither_bias;
    std::int32_t dither_row;
    // For masked members, and patterned ones when not null: start of each mask row, the leftmost pixel in the highest bit, set
    // bits clipped away. Three bytes from any pixel on can be read.
    const std::uint8_t* const* mask_rows;
};

} // namespace krb
