// What dots and markers ask of a single pixel before they write it.
#pragma once

#include <cstdint>
#include <cstring>

#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/kernels/pixel_formats.h"
#include "renderer/mask/mask_cursor.h"

namespace krb {

// Looks at the mask at the head of the cache, which find_mask has put there.
inline bool is_clipped_away(const Software_Z_Buffer& renderer, std::int32_t column, std::int32_t row) noexcept {
    return !Mask_Cursor::at(*renderer.mask_cache->newest, row, column).drawable();
}

// Tests a pixel's depth and, where it passes, writes it.
template <Case c>
bool passes_depth(const Software_Z_Buffer& renderer, std::int32_t column, std::int32_t row, std::int32_t z) noexcept {
    std::uint8_t* at = renderer.depth_buffer->rows[row] + std::int64_t{2} * column;
    std::uint16_t stored;
    std::memcpy(&stored, at, 2);
    constexpr bool follows_modes = facts_of(c).follows_depth_modes;
    if (!(follows_modes ? renderer.passes_z_test(z, stored) : z <= stored)) {
        return false;
    }
    if (!follows_modes || renderer.z_write) {
        const auto written = static_cast<std::uint16_t>(z);
        std::memcpy(at, &written, 2);
    }
    return true;
}

} // namespace krb
