// The rules of pixels in lanes: where colours come from, depth rules, masks. Included once for each vocabulary of lanes, after
// it.
//
// A value at pixel i is start + i * step however it is computed, so lanes may start at any pixel.

#include <concepts>
#include <cstring>

#include "renderer/core/compiler_hints.h"
#include "renderer/core/pixel_combine.inl"
#include "renderer/core/pixel_target.h"
#include "renderer/kernels/pixel_rules.h"
#include "renderer/kernels/pixel_words.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

inline bool lies_in_window(const Pixel_Target& target, std::int32_t row, std::int32_t column, std::int32_t count) {
    return 0 <= row && row < target.height && 0 <= column && 0 < count && count <= target.width - column;
}

// A value that moves along a span, one lane a pixel.
struct Ramp {
    Int value;
    Int step;

    static Ramp from(Int start, Int step) { return {start + lane_numbers() * step, step}; }
    void skip(std::int32_t pixels) { value = value + splat(pixels) * step; }
    void advance_group(Int lanes) { value = value + lanes * step; }
};

// ---- colour sources

// Loaded as a whole: compilers would split and reassemble the bytes for every line.
inline std::uint32_t word_of_color(VT_RGB32 color) {
    return load_word(&color);
}

inline Int pixel_word(VT_RGB32 color) {
    return splat(static_cast<std::int32_t>(word_of_color(color)));
}

// Channels that move along the span. The stored pixel is opaque.
struct Gouraud_Source {
    static constexpr bool moves = true;
    Ramp blue, green, red, alpha;

    Gouraud_Source(Ramp b, Ramp g, Ramp r, Ramp a) : blue(b), green(g), red(r), alpha(a) {}
    Gouraud_Source(Attributes<8> start, Attributes<8> step)
        : blue(Ramp::from(spread<4>(start), spread<4>(step))), green(Ramp::from(spread<5>(start), spread<5>(step))),
          red(Ramp::from(spread<6>(start), spread<6>(step))), alpha(Ramp::from(spread<7>(start), spread<7>(step))) {}
    template <class Group, class Lanes> static Lanes prepare(Lanes lanes) { return lanes; }
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

// The place of a pixel in a mask row: a byte and a bit in it. The leftmost pixel of a byte is its highest bit.
struct Mask_Cursor {
    const std::uint8_t* mask_byte;
    std::int32_t bit; // 0 to 7

    static Mask_Cursor at(const std::uint8_t* mask_row, std::int32_t column) { return {mask_row + (column >> 3), column & 7}; }
    // A set bit is clipped away.
    bool drawable() const { return (*mask_byte & 0x80 >> bit) == 0; }
};

// Bit i: whether the mask leaves the pixel i columns on.
inline std::uint32_t mask_bits(const std::uint8_t* mask_row, std::int32_t column) {
    const Mask_Cursor cursor = Mask_Cursor::at(mask_row, column);
    if constexpr (lane_count == 1) {
        return cursor.drawable() ? 1 : 0;
    }
    const std::uint8_t* bytes = cursor.mask_byte;
    std::uint32_t clipped = std::uint32_t{reversed.of[bytes[0]]} | std::uint32_t{reversed.of[bytes[1]]} << 8;
    if constexpr (lane_count > 8) {
        clipped |= std::uint32_t{reversed.of[bytes[2]]} << 16;
    }
    return ~(clipped >> cursor.bit);
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
