// The rules of pixels in lanes: where colours come from, depth rules, pixel rules, masks. Included once for each vocabulary of
// lanes, after it.
//
// A value at pixel i is start + i * step whichever way it is reached, so lanes may start anywhere.

#include <bit>
#include <concepts>
#include <cstring>

#include "renderer/core/pixel_target.h"
#include "renderer/kernels/compiler_hints.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// A value that moves along a span, one lane a pixel.
struct Ramp {
    Int value;
    Int step;

    static Ramp from(Int start, Int step) { return {start + lane_numbers() * step, step}; }
    void skip(std::int32_t pixels) { value = value + splat(pixels) * step; }
    void advance_group(Int lanes) { value = value + lanes * step; }
};

// ---- colour sources

inline std::uint32_t word_of_color(VT_RGB32 color) {
    if constexpr (std::endian::native == std::endian::little) {
        // Compilers take the bytes apart otherwise, and put them together again for every line.
        std::uint32_t word;
        std::memcpy(&word, &color, sizeof word);
        return word;
    }
    return std::uint32_t{color.blue} | std::uint32_t{color.green} << 8 | std::uint32_t{color.red} << 16 |
           std::uint32_t{color.alpha} << 24;
}

inline Int pixel_word(VT_RGB32 color) {
    return splat(static_cast<std::int32_t>(word_of_color(color)));
}

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

// Channels that move along the span. The stored pixel is opaque.
struct Gouraud_Source {
    static constexpr bool moves = true;
    Ramp blue, green, red, alpha;

    Gouraud_Source(Ramp b, Ramp g, Ramp r, Ramp a) : blue(b), green(g), red(r), alpha(a) {}
    Gouraud_Source(Attributes<8> start, Attributes<8> step)
        : blue(Ramp::from(spread<4>(start), spread<4>(step))), green(Ramp::from(spread<5>(start), spread<5>(step))),
          red(Ramp::from(spread<6>(start), spread<6>(step))), alpha(Ramp::from(spread<7>(start), spread<7>(step))) {}
    template <class Lanes> static Lanes prepare(Lanes lanes) { return lanes; }
    Int pixel_lanes() const {
        return shift_right<16>(blue.value) | (shift_right<8>(green.value) & splat(0xFF00)) | (red.value & splat(0xFF0000)) |
               splat(static_cast<std::int32_t>(0xFF000000));
    }
    Int alpha_lanes() const { return shift_right<16>(alpha.value); }
    Int index_lanes(const Pixel_Target& target, Int thresholds) const {
        return Dithered_Color::of(target, shift_right<16>(red.value), shift_right<16>(green.value), shift_right<16>(blue.value))
            .indices(*target.dither, thresholds);
    }
    void skip(std::int32_t pixels) {
        blue.skip(pixels);
        green.skip(pixels);
        red.skip(pixels);
        alpha.skip(pixels);
    }
    void advance_group(Int lanes) {
        blue.advance_group(lanes);
        green.advance_group(lanes);
        red.advance_group(lanes);
        alpha.advance_group(lanes);
    }
};

// ---- depth rules

struct No_Depth {
    static constexpr bool reads = false;
};

struct Less_Or_Equal {
    static constexpr bool reads = true;
    template <class Lanes> static Active pass(const Pixel_Target&, Lanes lanes, Int depths, Int stored) {
        return lanes & less_or_equal(depths, stored);
    }
    static bool writes(const Pixel_Target&) { return true; }
};

struct By_Mode {
    static constexpr bool reads = true;
    template <class Lanes> static Active pass(const Pixel_Target& target, Lanes lanes, Int depths, Int stored) {
        const Active low = less_or_equal(depths, stored + splat(target.depth_bias));
        return target.depth_inverted ? without(lanes & first_lanes(lane_count), low) : lanes & low;
    }
    static bool writes(const Pixel_Target& target) { return target.depth_written; }
};

template <class Rule>
concept Depth_Rules = !Rule::reads || requires(const Pixel_Target& target, Int depths) {
    { Rule::pass(target, All{}, depths, depths) } -> std::same_as<Active>;
    { Rule::writes(target) } -> std::same_as<bool>;
};

template <Depth_Rule rule> struct Depth_Of;
template <> struct Depth_Of<Depth_Rule::none> { using type = No_Depth; };
template <> struct Depth_Of<Depth_Rule::less_or_equal> { using type = Less_Or_Equal; };
template <> struct Depth_Of<Depth_Rule::by_mode> { using type = By_Mode; };

// ---- pixel rules: source pixels and stored pixels to what is written

struct Store {
    static constexpr bool reads = false;
    static constexpr bool merges = false;
};

// (source * a + stored * (255 - a)) / 255, truncated, for each colour byte; the pixel becomes opaque.
struct Blend {
    static constexpr bool reads = true;
    static constexpr bool merges = false;
    KRB_ALWAYS_INLINE static Int combine(const Pixel_Target&, Int source, Int alphas, Int stored) {
        const Int even = splat(0x00FF00FF);
        const Int weights = alphas | shift_left<16>(alphas);
        const Int rest = even - weights;
        const Int red_blue = divided_by_255(multiply_halves(source & even, weights) + multiply_halves(stored & even, rest));
        const Int green = divided_by_255(multiply_halves(shift_right<8>(source) & even, weights) +
                                         multiply_halves(shift_right<8>(stored) & even, rest));
        return red_blue | (shift_left<8>(green) & splat(0xFF00)) | splat(static_cast<std::int32_t>(0xFF000000));
    }

private:
    // Exact for what two weighted bytes add up to, 0 to 65025: floor(v / 255) = (v + 1 + (v >> 8)) >> 8.
    static Int divided_by_255(Int halves) {
        return shift_halves_right<8>(halves + splat(0x00010001) + shift_halves_right<8>(halves));
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
        const Int green =
            multiply_halves(shift_right<8>(source) & even, weights) + multiply_halves(shift_right<8>(stored) & even, rest);
        return red_blue | (green & splat(0xFF00)) | splat(static_cast<std::int32_t>(0xFF000000));
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

template <class Rule>
concept Pixel_Rules = !Rule::reads || requires(const Pixel_Target& target, Int pixels) {
    { Rule::combine(target, pixels, pixels, pixels) } -> std::same_as<Int>;
};

// ---- masks

struct Reversed_Bytes {
    std::uint8_t of[256];
};

constexpr Reversed_Bytes reversed_bytes() {
    Reversed_Bytes bytes{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            if ((byte & 1U << bit) != 0) {
                bytes.of[byte] = static_cast<std::uint8_t>(bytes.of[byte] | 0x80U >> bit);
            }
        }
    }
    return bytes;
}

constexpr Reversed_Bytes reversed = reversed_bytes();

// Bit i: whether the mask leaves the pixel i columns on.
inline std::uint32_t mask_bits(const std::uint8_t* mask_row, std::int32_t column) {
    if constexpr (lane_count == 1) {
        return static_cast<std::uint32_t>(~(mask_row[column >> 3] >> (7 - (column & 7))) & 1);
    }
    const std::uint8_t* bytes = mask_row + (column >> 3);
    std::uint32_t clipped = std::uint32_t{reversed.of[bytes[0]]} | std::uint32_t{reversed.of[bytes[1]]} << 8;
    if constexpr (lane_count > 8) {
        clipped |= std::uint32_t{reversed.of[bytes[2]]} << 16;
    }
    return ~(clipped >> (column & 7));
}

// The same for eight pixels, in the low bits.
inline std::uint32_t mask_bits_of_8(const std::uint8_t* mask_row, std::int32_t column) {
    const std::uint8_t* bytes = mask_row + (column >> 3);
    const auto clipped = static_cast<std::uint8_t>((std::uint32_t{bytes[0]} << 8 | bytes[1]) >> (8 - (column & 7)));
    return ~std::uint32_t{reversed.of[clipped]};
}

// How many of the pixels from the column on, up to count, lie in mask bytes that all have this value.
inline std::int32_t stretch_of(const std::uint8_t* mask_row, std::int32_t column, std::int32_t count, std::uint8_t value) {
    const std::uint8_t* const first = mask_row + (column >> 3);
    const std::uint8_t* const end = mask_row + ((column + count + 7) >> 3);
    const std::uint64_t word = value * UINT64_C(0x0101010101010101);
    const std::uint8_t* byte = first;
    for (; end - byte >= 8; byte += 8) {
        std::uint64_t bytes;
        std::memcpy(&bytes, byte, 8);
        if (bytes != word) {
            break;
        }
    }
    while (byte < end && *byte == value) {
        ++byte;
    }
    const std::int32_t pixels = static_cast<std::int32_t>(byte - first) * 8 - (column & 7);
    return pixels < 0 ? 0 : pixels < count ? pixels : count;
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
