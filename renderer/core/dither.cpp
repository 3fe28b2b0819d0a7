// Ordered dithering of colours to the palette's colour cube.
#include "renderer/core/dither.h"

namespace krb {

Dither make_dither(const VT_Color_Cube& cube) noexcept {
    Dither dither{};
    dither.red_multiplier = static_cast<std::int32_t>(cube.red_multiplier);
    dither.green_multiplier = static_cast<std::int32_t>(cube.green_multiplier);
    dither.blue_multiplier = static_cast<std::int32_t>(cube.blue_multiplier);
    dither.red_stride = cube.red_stride;
    dither.green_stride = cube.green_stride;
    dither.blue_stride = cube.blue_stride;
    dither.base = cube.base;
    for (int b = 0; b < 8; ++b) {
        for (int a = 0; a < 24; ++a) {
            dither.thresholds[b][a] = SHARED.thresholds[(a & 7) + 8 * b];
        }
    }
    return dither;
}

} // namespace krb
