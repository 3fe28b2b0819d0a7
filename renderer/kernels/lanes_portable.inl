// The vocabulary of lanes in plain C++: one pixel at a time. It runs everywhere; the other sets must give the same bytes.
//
// Each set defines the same names inside its own anonymous namespace:
//   Int                lane_count 32-bit integers that wrap
//   Active             which lanes take part; All stands for every lane and costs nothing
//   Attributes<n>      32-bit integers of one vertex, edge or span: x, z, s, t, and with n = 8 blue, green, red, alpha
//   masked_memory      true when loads and stores touch active lanes only; otherwise a group of lanes must lie inside its row
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "renderer/kernels/pixel_words.inl"
#include "renderer/kernels/texel_shape.h"

namespace krb::KRB_KERNEL_SET {
namespace {

inline constexpr int lane_count = 1;
inline constexpr bool masked_memory = true;

struct Int {
    std::uint32_t lane;
};

struct Active {
    bool lane;
};

struct All {};

// Called at the end of a kernel: upper halves of vector registers that are not cleared slow down older vector instructions.
// Compilers clear them, except where a kernel ends in a call.
inline void clear_upper_halves() {
}

inline Int splat(std::int32_t value) {
    return {static_cast<std::uint32_t>(value)};
}

inline Int lane_numbers() {
    return {0};
}

inline Int operator+(Int a, Int b) {
    return {a.lane + b.lane};
}

inline Int operator-(Int a, Int b) {
    return {a.lane - b.lane};
}

inline Int operator*(Int a, Int b) {
    return {a.lane * b.lane};
}

inline Int operator&(Int a, Int b) {
    return {a.lane & b.lane};
}

inline Int operator|(Int a, Int b) {
    return {a.lane | b.lane};
}

template <int bits> inline Int shift_left(Int a) {
    return {a.lane << bits};
}

// Logical.
template <int bits> inline Int shift_right(Int a) {
    return {a.lane >> bits};
}

// By a number of bits known at run time only.
inline Int shift_right_by(Int a, int bits) {
    return {a.lane >> bits};
}

// The two 16-bit halves of every lane by themselves.
inline Int multiply_halves(Int a, Int b) {
    return {((a.lane & 0xFFFF) * (b.lane & 0xFFFF) & 0xFFFF) | ((a.lane >> 16) * (b.lane >> 16) << 16)};
}

// The upper 16 bits of the products of the 16-bit halves, without sign.
inline Int multiply_halves_high(Int a, Int b) {
    return {(a.lane & 0xFFFF) * (b.lane & 0xFFFF) >> 16 | ((a.lane >> 16) * (b.lane >> 16) & 0xFFFF0000)};
}

// What a set may lack:
//   mixed_bytes(a, b, weights)   (a * w + b * (255 - w)) / 255 of each byte, truncated, with a weight w of up to 255 in each lane
//   packed_pair(first, second)   the depths of two neighbouring groups, 16 bits each; with it go load_pair and store_pair, which
//                                access the depths of both in memory, less_or_equal, and none and all of its result

// The greater one, with sign.
inline Int greatest(Int a, Int b) {
    return static_cast<std::int32_t>(a.lane) < static_cast<std::int32_t>(b.lane) ? b : a;
}

template <int bits> inline Int shift_halves_right(Int a) {
    return {(a.lane & 0xFFFF) >> bits | (a.lane >> 16 >> bits << 16)};
}

// The upper half of every lane in both halves.
inline Int upper_halves_in_both(Int a) {
    return {a.lane >> 16 | (a.lane & 0xFFFF0000)};
}

inline Active first_lanes(std::int32_t count) {
    return {count > 0};
}

// From begin up to but not including end.
inline Active lanes_between(std::int32_t begin, std::int32_t end) {
    return {begin <= 0 && end > 0};
}

// Bit i for lane i.
inline Active lanes_of_bits(std::uint32_t bits) {
    return {(bits & 1) != 0};
}

// Signed.
inline Active less_or_equal(Int a, Int b) {
    return {static_cast<std::int32_t>(a.lane) <= static_cast<std::int32_t>(b.lane)};
}

inline Active equal(Int a, Int b) {
    return {a.lane == b.lane};
}

inline Active operator&(Active a, Active b) {
    return {a.lane && b.lane};
}

inline Active operator&(All, Active b) {
    return b;
}

// Lanes of a that are not in b.
inline Active without(Active a, Active b) {
    return {a.lane && !b.lane};
}

inline bool none(Active a) {
    return !a.lane;
}

inline Int select(Active condition, Int yes, Int no) {
    return condition.lane ? yes : no;
}

// value where the condition holds, else 0.
inline Int where(Active condition, Int value) {
    return condition.lane ? value : Int{0};
}

inline bool has_lane(Active active, std::int32_t) {
    return active.lane;
}

inline std::uint32_t lane_of(Int a, std::int32_t) {
    return a.lane;
}

inline Int load_ints(const std::int32_t* from) {
    return {static_cast<std::uint32_t>(*from)};
}

// Pixels, depths and indices are addressed by bytes; no alignment is required.
inline Int load_depths(const std::uint8_t* from, Active active) {
    std::uint16_t depth = 0;
    if (active.lane) {
        std::memcpy(&depth, from, 2);
    }
    return {depth};
}

inline Int load_indices(const std::uint8_t* from, Active active) {
    return {active.lane ? *from : std::uint32_t{0}};
}

inline Int load_indices(const std::uint8_t* from, All) {
    return {*from};
}

// The pixel of every lane in a table of 32-bit pixels, wherever it starts.
inline Int gather(const std::uint8_t* table, Int positions) {
    return {load_word(table + std::size_t{4} * positions.lane)};
}

// The blocks of texels that a group of lanes can be taken from, those that cost less before others: rows and columns.
inline constexpr Texel_Shape texel_shapes[] = {{1, 1}};

// A texel of a block for every lane. The rows of the block begin at first and lie row_bytes apart; s and t are columns and rows
// in the block in 16.16. Lanes beyond the block get any value.
template <int rows, int columns> inline Int block_texels(const std::uint8_t* first, std::int64_t, Int, Int) {
    static_assert(rows == 1 && columns == 1);
    return {load_word(first)};
}

inline void store_depths(std::uint8_t* to, Int depths, Active active) {
    const auto depth = static_cast<std::uint16_t>(depths.lane);
    if (active.lane) {
        std::memcpy(to, &depth, 2);
    }
}

inline Int load_pixels(const std::uint8_t* from, Active active) {
    return {active.lane ? load_word(from) : 0};
}

inline void store_pixels(std::uint8_t* to, Int pixels, Active active) {
    if (active.lane) {
        store_word(to, pixels.lane);
    }
}

inline void store_indices(std::uint8_t* to, Int indices, Active active) {
    if (active.lane) {
        *to = static_cast<std::uint8_t>(indices.lane);
    }
}

inline Int load_depths(const std::uint8_t* from, All) {
    return load_depths(from, Active{true});
}

inline Int load_pixels(const std::uint8_t* from, All) {
    return load_pixels(from, Active{true});
}

inline void store_pixels(std::uint8_t* to, Int pixels, All) {
    store_pixels(to, pixels, Active{true});
}

// Stores count pixels, fewer than there are lanes, of a word that every lane holds.
inline void store_first_pixels(std::uint8_t*, Int, std::int32_t) {
}

inline void store_indices(std::uint8_t* to, Int indices, All) {
    *to = static_cast<std::uint8_t>(indices.lane);
}

template <int size> struct Attributes { std::int32_t value[std::size_t{size}]; };

// x, z, texture coordinates and the word of a colour whose channels become c * 257, so that 255 is 65535.
inline Attributes<8> textured_attributes_of(std::int32_t x, std::int32_t z, std::int32_t s, std::int32_t t, std::uint32_t color) {
    const auto widened = [color](int shift) { return static_cast<std::int32_t>(color >> shift & 0xFF) * 257; };
    return {{x, z, s, t, widened(0), widened(8), widened(16), widened(24)}};
}

// x and z only.
inline Attributes<4> attributes_of(std::int32_t x, std::int32_t z) {
    return {{x, z, 0, 0}};
}

// The colour is a pixel's word.
inline Attributes<8> attributes_of(std::int32_t x, std::int32_t z, std::uint32_t color) {
    return {{x, z, 0, 0, static_cast<std::int32_t>(color & 0xFF), static_cast<std::int32_t>(color >> 8 & 0xFF),
             static_cast<std::int32_t>(color >> 16 & 0xFF), static_cast<std::int32_t>(color >> 24)}};
}

template <int size> inline Attributes<size> operator+(Attributes<size> a, Attributes<size> b) {
    for (int i = 0; i < size; ++i) {
        a.value[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(a.value[i]) + static_cast<std::uint32_t>(b.value[i]));
    }
    return a;
}

template <int size> inline Attributes<size> operator-(Attributes<size> a, Attributes<size> b) {
    for (int i = 0; i < size; ++i) {
        a.value[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(a.value[i]) - static_cast<std::uint32_t>(b.value[i]));
    }
    return a;
}

template <int size> inline Attributes<size> scaled(Attributes<size> a, std::int32_t factor) {
    for (int i = 0; i < size; ++i) {
        a.value[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(a.value[i]) * static_cast<std::uint32_t>(factor));
    }
    return a;
}

// Truncated; the divisor is above 0.
template <int size> inline Attributes<size> quotient(Attributes<size> a, std::int32_t divisor) {
    for (int i = 0; i < size; ++i) {
        a.value[i] /= divisor;
    }
    return a;
}

// To fixed point, less a few bits: lane 1, the depth, has 15 fraction bits; every other lane 16.
template <int size> inline Attributes<size> to_fixed(Attributes<size> a, int drop = 0) {
    for (int i = 0; i < size; ++i) {
        const int bits = (i == 1 ? 15 : 16) - drop;
        a.value[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(a.value[i]) << bits);
    }
    return a;
}

// Arithmetic, in every lane alike.
template <int size> inline Attributes<size> shifted_right(Attributes<size> a, int bits) {
    for (int i = 0; i < size; ++i) {
        a.value[i] >>= bits;
    }
    return a;
}

// x and z of the one, everything else of the other.
inline Attributes<8> with_positions(Attributes<8> positions, Attributes<8> others) {
    others.value[0] = positions.value[0];
    others.value[1] = positions.value[1];
    return others;
}

// Half a unit in each lane's fixed point.
template <int size> inline Attributes<size> half_units() {
    Attributes<size> out;
    for (int i = 0; i < size; ++i) {
        out.value[i] = i == 1 ? 0x4000 : 0x8000;
    }
    return out;
}

// The integer parts, read as unsigned 16-bit numbers.
template <int size> inline Attributes<size> integer_parts(Attributes<size> a) {
    for (int i = 0; i < size; ++i) {
        a.value[i] = a.value[i] >> (i == 1 ? 15 : 16) & 0xFFFF;
    }
    return a;
}

// The mean of two edges' values as whole numbers. Depths are halved before the sum, so that it cannot overflow.
template <int size> inline Attributes<size> mean_of_edges(Attributes<size> a, Attributes<size> b) {
    for (int i = 0; i < size; ++i) {
        const auto sum = [](std::int32_t x, std::int32_t y) {
            return static_cast<std::int32_t>(static_cast<std::uint32_t>(x) + static_cast<std::uint32_t>(y));
        };
        a.value[i] = i == 1 ? sum(a.value[i] >> 1, b.value[i] >> 1) >> 15 : sum(a.value[i], b.value[i]) >> 17;
    }
    return a;
}

template <int size> inline Attributes<size> select(bool condition, Attributes<size> yes, Attributes<size> no) {
    return condition ? yes : no;
}

template <int size> inline std::int32_t x_of(Attributes<size> a) {
    return a.value[0];
}

// One attribute in every lane.
template <int lane, int size> inline Int spread(Attributes<size> a) {
    return splat(a.value[lane]);
}

// Unsigned, in every lane.
inline bool lies_within(Attributes<8> a, Attributes<8> most) {
    for (int i = 0; i < 8; ++i) {
        if (static_cast<std::uint32_t>(a.value[i]) > static_cast<std::uint32_t>(most.value[i])) {
            return false;
        }
    }
    return true;
}

// True when a colour channel of b or c differs from a's by more than the limit. Alpha does not count.
inline bool colors_differ(Attributes<8> a, Attributes<8> b, Attributes<8> c, std::int32_t limit) {
    for (int i = 4; i < 7; ++i) {
        const std::int32_t to_b = b.value[i] - a.value[i];
        const std::int32_t to_c = c.value[i] - a.value[i];
        if (to_b > limit || to_b < -limit || to_c > limit || to_c < -limit) {
            return true;
        }
    }
    return false;
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
