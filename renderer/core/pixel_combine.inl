// The formulas that combine colours with pixels: dither, blend, merge. Each is written once, for a group of lanes as for one
// pixel: included once for each vocabulary of lanes, after it.

#include <cstdint>

#include "renderer/core/compiler_hints.h"
#include "renderer/core/dither.h"
#include "renderer/core/pixel_target.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// ---- dither

// One channel of a colour that is dithered.
struct Dithered_Channel {
    Int cell;       // of the cube
    Int complement; // 65535 less the fraction: the least threshold that steps up to the next cell

    static Dithered_Channel of(Int value, std::int32_t multiplier, std::int32_t bias) {
        const Int scaled = shift_left<8>(value * splat(multiplier)) | splat(bias);
        return {shift_right<16>(scaled) & splat(0xFF), splat(0xFFFF) - (scaled & splat(0xFFFF))};
    }
    Int step_up(Int thresholds, std::int32_t stride) const { return where(less_or_equal(complement, thresholds), splat(stride)); }
};

struct Dithered_Color {
    Dithered_Channel red, green, blue;
    Int index; // of the cell

    static Dithered_Color of(const Pixel_Target& target, Int red, Int green, Int blue) {
        const Dither& dither = *target.dither;
        const std::int32_t bias = target.dither_bias;
        Dithered_Color color{Dithered_Channel::of(red, dither.red_multiplier, bias),
                             Dithered_Channel::of(green, dither.green_multiplier, bias),
                             Dithered_Channel::of(blue, dither.blue_multiplier, bias), splat(dither.base)};
        // The cell of blue counts once, whatever the cube's blue stride.
        color.index = color.index + color.red.cell * splat(dither.red_stride) + color.green.cell * splat(dither.green_stride) +
                      color.blue.cell;
        return color;
    }
    static Dithered_Color of_pixels(const Pixel_Target& target, Int pixels) {
        const Int byte = splat(0xFF);
        return of(target, shift_right<16>(pixels) & byte, shift_right<8>(pixels) & byte, pixels & byte);
    }
    // Correct in the low eight bits, which are all that is stored.
    Int indices(const Dither& dither, Int thresholds) const {
        return index + red.step_up(thresholds, dither.red_stride) + green.step_up(thresholds, dither.green_stride) +
               blue.step_up(thresholds, dither.blue_stride);
    }
};

// ---- pixel rules: source pixels and stored pixels to what is written

struct Store {
    static constexpr bool reads = false;
    static constexpr bool merges = false;
};

// (source * a + stored * (255 - a)) / 255, truncated, for each colour byte; the pixel becomes opaque.
struct Blend {
    static constexpr bool reads = true;
    static constexpr bool merges = false;
    // A template, since not every set has mixed_bytes.
    template <class Lanes> KRB_ALWAYS_INLINE static Lanes combine(const Pixel_Target&, Lanes source, Lanes alphas, Lanes stored) {
        if constexpr (requires { mixed_bytes(source, stored, alphas); }) {
            return mixed_bytes(source, stored, alphas) | splat(static_cast<std::int32_t>(0xFF000000));
        } else {
            return combine_halves(source & splat(0x00FF00FF), shift_halves_right<8>(source), alphas | shift_left<16>(alphas),
                                  stored);
        }
    }
    // With the source in halves of lanes: blue and red; green and any number up to 255; alpha twice.
    KRB_ALWAYS_INLINE static Int combine_halves(Int red_blue, Int green, Int alphas, Int stored) {
        const Int even = splat(0x00FF00FF);
        const Int rest = even - alphas;
        // 128 times the quotients. Of 16-bit numbers floor(v / 255) = v * 0x8081 >> 23.
        const auto blended = [alphas, rest](Int source_bytes, Int stored_bytes) {
            return multiply_halves_high(multiply_halves(source_bytes, alphas) + multiply_halves(stored_bytes, rest),
                                        splat(static_cast<std::int32_t>(0x80818081)));
        };
        const Int blended_red_blue = shift_halves_right<7>(blended(red_blue, stored & even));
        const Int blended_green = blended(green, shift_halves_right<8>(stored));
        return blended_red_blue | (shift_left<1>(blended_green) & splat(0xFF00)) | splat(static_cast<std::int32_t>(0xFF000000));
    }
};

// The same, but pixels stay where the source's alpha is 0.
struct Visible_Blend {
    static constexpr bool reads = true;
    static constexpr bool merges = false;
    KRB_ALWAYS_INLINE static Int combine(const Pixel_Target& target, Int source, Int alphas, Int stored) {
        return select(equal(alphas, splat(0)), stored, Blend::combine(target, source, alphas, stored));
    }
    KRB_ALWAYS_INLINE static Int combine_halves(Int red_blue, Int green, Int alphas, Int stored) {
        return select(equal(alphas, splat(0)), stored, Blend::combine_halves(red_blue, green, alphas, stored));
    }
};

// The blend of lines and dots, in 256ths: full alpha replaces the pixel exactly because it weighs 256. The pixel becomes opaque.
struct Line_Blend {
    static constexpr bool reads = true;
    static constexpr bool merges = false;
    KRB_ALWAYS_INLINE static Int combine(const Pixel_Target&, Int source, Int alphas, Int stored) {
        const Int even = splat(0x00FF00FF);
        const Int weight = alphas + where(equal(alphas, splat(255)), splat(1));
        const Int weights = weight | shift_left<16>(weight);
        // stored + ((source - stored) * w >> 8) without leaving 16 bits.
        const Int rest = splat(0x01000100) - weights;
        const Int red_blue =
            shift_halves_right<8>(multiply_halves(source & even, weights) + multiply_halves(stored & even, rest));
        const Int alpha_green =
            multiply_halves(shift_halves_right<8>(source), weights) + multiply_halves(shift_halves_right<8>(stored), rest);
        return red_blue | (alpha_green & splat(0xFF00)) | splat(static_cast<std::int32_t>(0xFF000000));
    }
};

// Merge control: an untouched pixel takes the colour, an equal one stays, two different ones give their bitwise AND.
struct Merge {
    static constexpr bool reads = true;
    static constexpr bool merges = true;
    KRB_ALWAYS_INLINE static Int combine(const Pixel_Target& target, Int source, Int, Int stored) {
        const Int background = splat(static_cast<std::int32_t>(target.background));
        const Active untouched = equal(stored, background);
        const Int merged = select(untouched, source, stored & source) | splat(static_cast<std::int32_t>(0xFF000000));
        const Int visible =
            select(equal(merged, background), splat(static_cast<std::int32_t>(target.alternate_background)), merged);
        return select(without(equal(stored, source), untouched), stored, visible);
    }
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
