// The place of a pixel in a mask.
#pragma once

#include <cstdint>

#include "host/frame_buffer.h"

namespace krb {

// A mask byte and a bit in it. The leftmost pixel of a byte is its highest bit. Dots, markers and images make a cursor for each
// pixel; the kernels of spans, runs and smoothed lines read mask bytes themselves, for a group of lanes at once where they can.
struct Mask_Cursor {
    const std::uint8_t* mask_byte;
    std::int32_t bit; // 0 to 7

    // Any column, negative ones too.
    static Mask_Cursor at(const Frame_Buffer_Mask& mask, std::int32_t row, std::int32_t column) noexcept {
        Mask_Cursor cursor{mask.row(row), 0};
        cursor.advance(column);
        return cursor;
    }

    void advance(std::int32_t pixels) noexcept {
        const std::int32_t moved = bit + pixels;
        mask_byte += moved >> 3;
        bit = moved & 7;
    }

    // A set bit is clipped away.
    bool drawable() const noexcept { return (*mask_byte & 0x80 >> bit) == 0; }
};

} // namespace krb
