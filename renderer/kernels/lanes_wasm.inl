// The vocabulary of lanes for WebAssembly's SIMD, which browsers translate to the instructions of their processor: four pixels.
// The names are documented in lanes_portable.inl.
#pragma once

#include <cstddef>
#include <cstdint>

#include <wasm_simd128.h>

#include "renderer/kernels/pixel_words.inl"
#include "renderer/kernels/texel_shape.h"

namespace krb::KRB_KERNEL_SET {
namespace {

inline constexpr int lane_count = 4;
// A group always lies inside its row, and lanes that take no part are written back as they were.
inline constexpr bool masked_memory = false;

struct Int {
    v128_t lanes;
};

// All bits of a lane set or clear.
struct Active {
    v128_t lanes;
};

struct All {};

inline void clear_upper_halves() {
}

inline Int splat(std::int32_t value) {
    return {wasm_i32x4_splat(value)};
}

inline Int lanes_of(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return {wasm_i32x4_make(a, b, c, d)};
}

inline Int lane_numbers() {
    return {wasm_i32x4_const(0, 1, 2, 3)};
}

inline Int operator+(Int a, Int b) {
    return {wasm_i32x4_add(a.lanes, b.lanes)};
}

inline Int operator-(Int a, Int b) {
    return {wasm_i32x4_sub(a.lanes, b.lanes)};
}

inline Int operator*(Int a, Int b) {
    return {wasm_i32x4_mul(a.lanes, b.lanes)};
}

inline Int operator&(Int a, Int b) {
    return {wasm_v128_and(a.lanes, b.lanes)};
}

inline Int operator|(Int a, Int b) {
    return {wasm_v128_or(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_left(Int a) {
    return {wasm_i32x4_shl(a.lanes, bits)};
}

template <int bits> inline Int shift_right(Int a) {
    return {wasm_u32x4_shr(a.lanes, bits)};
}

inline Int shift_right_by(Int a, int bits) {
    return {wasm_u32x4_shr(a.lanes, static_cast<std::uint32_t>(bits))};
}

inline Int multiply_halves(Int a, Int b) {
    return {wasm_i16x8_mul(a.lanes, b.lanes)};
}

inline Int multiply_halves_high(Int a, Int b) {
    return {wasm_i16x8_shuffle(wasm_u32x4_extmul_low_u16x8(a.lanes, b.lanes), wasm_u32x4_extmul_high_u16x8(a.lanes, b.lanes), 1,
                               3, 5, 7, 9, 11, 13, 15)};
}

inline Int mixed_bytes(Int a, Int b, Int weights) {
    const v128_t most = wasm_i16x8_const_splat(255);
    const v128_t weights_low = wasm_i16x8_shuffle(weights.lanes, weights.lanes, 0, 0, 0, 0, 2, 2, 2, 2);
    const v128_t weights_high = wasm_i16x8_shuffle(weights.lanes, weights.lanes, 4, 4, 4, 4, 6, 6, 6, 6);
    // Of v up to 255 * 255, floor(v / 255) = v + (v >> 8) + 1 >> 8.
    const auto mixed = [most](v128_t of_a, v128_t of_b, v128_t by) {
        const v128_t sum = wasm_i16x8_add(wasm_i16x8_mul(of_a, by), wasm_i16x8_mul(of_b, wasm_v128_xor(by, most)));
        return wasm_u16x8_shr(wasm_i16x8_add(wasm_i16x8_add(sum, wasm_u16x8_shr(sum, 8)), wasm_i16x8_const_splat(1)), 8);
    };
    return {wasm_u8x16_narrow_i16x8(
        mixed(wasm_u16x8_extend_low_u8x16(a.lanes), wasm_u16x8_extend_low_u8x16(b.lanes), weights_low),
        mixed(wasm_u16x8_extend_high_u8x16(a.lanes), wasm_u16x8_extend_high_u8x16(b.lanes), weights_high))};
}

inline Int greatest(Int a, Int b) {
    return {wasm_i32x4_max(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_halves_right(Int a) {
    return {wasm_u16x8_shr(a.lanes, bits)};
}

inline Int upper_halves_in_both(Int a) {
    return {wasm_i16x8_shuffle(a.lanes, a.lanes, 1, 1, 3, 3, 5, 5, 7, 7)};
}

inline Active first_lanes(std::int32_t count) {
    return {wasm_i32x4_lt(lane_numbers().lanes, wasm_i32x4_splat(count))};
}

inline Active lanes_between(std::int32_t begin, std::int32_t end) {
    return {wasm_v128_andnot(first_lanes(end).lanes, first_lanes(begin).lanes)};
}

inline Active lanes_of_bits(std::uint32_t bits) {
    const v128_t own_bit = wasm_i32x4_const(1, 2, 4, 8);
    return {wasm_i32x4_eq(wasm_v128_and(wasm_u32x4_splat(bits), own_bit), own_bit)};
}

inline Active less_or_equal(Int a, Int b) {
    return {wasm_i32x4_le(a.lanes, b.lanes)};
}

inline Active equal(Int a, Int b) {
    return {wasm_i32x4_eq(a.lanes, b.lanes)};
}

inline Active operator&(Active a, Active b) {
    return {wasm_v128_and(a.lanes, b.lanes)};
}

inline Active operator&(All, Active b) {
    return b;
}

inline Active without(Active a, Active b) {
    return {wasm_v128_andnot(a.lanes, b.lanes)};
}

inline bool none(Active a) {
    return !wasm_v128_any_true(a.lanes);
}

inline bool has_lane(Active active, std::int32_t lane) {
    return (wasm_i32x4_bitmask(active.lanes) >> lane & 1) != 0;
}

// Of a lane that is known when this is compiled one instruction.
inline std::uint32_t lane_of(Int a, std::int32_t lane) {
    std::uint32_t lanes[4];
    wasm_v128_store(lanes, a.lanes);
    return lanes[lane];
}

inline Int select(Active condition, Int yes, Int no) {
    return {wasm_v128_bitselect(yes.lanes, no.lanes, condition.lanes)};
}

inline Int where(Active condition, Int value) {
    return {wasm_v128_and(condition.lanes, value.lanes)};
}

inline Int load_ints(const std::int32_t* from) {
    return {wasm_v128_load(from)};
}

inline Int load_depths(const std::uint8_t* from, All) {
    return {wasm_u32x4_load16x4(from)};
}

inline Int load_depths(const std::uint8_t* from, Active) {
    return load_depths(from, All{});
}

// The low 16 bits of every lane, in the low half.
inline v128_t packed_depths(Int depths) {
    return wasm_i16x8_shuffle(depths.lanes, depths.lanes, 0, 2, 4, 6, 0, 2, 4, 6);
}

inline void store_depths(std::uint8_t* to, Int depths, Active active) {
    const v128_t lanes = wasm_i16x8_narrow_i32x4(active.lanes, active.lanes);
    wasm_v128_store64_lane(to, wasm_v128_bitselect(packed_depths(depths), wasm_v128_load64_zero(to), lanes), 0);
}

struct Depth_Pair {
    v128_t depths; // 16 bits each
};

// 16 bits each, all set or clear.
struct Active_Pair {
    v128_t lanes;
};

inline Depth_Pair packed_pair(Int first, Int second) {
    return {wasm_u16x8_narrow_i32x4(first.lanes, second.lanes)};
}

inline Depth_Pair load_pair(const std::uint8_t* from, Int) {
    return {wasm_v128_load(from)};
}

inline void store_pair(std::uint8_t* to, Depth_Pair pair) {
    wasm_v128_store(to, pair.depths);
}

inline Active_Pair less_or_equal(Depth_Pair a, Depth_Pair b) {
    return {wasm_u16x8_le(a.depths, b.depths)};
}

inline bool none(Active_Pair a) {
    return !wasm_v128_any_true(a.lanes);
}

inline bool all(Active_Pair a) {
    return wasm_i16x8_all_true(a.lanes);
}

// Four bytes, one a lane.
inline Int widened_bytes(std::uint32_t bytes) {
    return {wasm_u32x4_extend_low_u16x8(wasm_u16x8_extend_low_u8x16(wasm_u32x4_splat(bytes)))};
}

inline Int load_indices(const std::uint8_t* from, All) {
    return widened_bytes(load_word(from));
}

inline Int load_indices(const std::uint8_t* from, Active) {
    return load_indices(from, All{});
}

// The low 8 bits of every lane as one word.
inline std::uint32_t packed_indices(Int indices) {
    return wasm_u32x4_extract_lane(
        wasm_i8x16_shuffle(indices.lanes, indices.lanes, 0, 4, 8, 12, 0, 4, 8, 12, 0, 4, 8, 12, 0, 4, 8, 12), 0);
}

inline void store_indices(std::uint8_t* to, Int indices, All) {
    store_word(to, packed_indices(indices));
}

inline void store_indices(std::uint8_t* to, Int indices, Active active) {
    const std::uint32_t lanes = packed_indices({active.lanes});
    store_word(to, (load_word(to) & ~lanes) | (packed_indices(indices) & lanes));
}

inline Int gather(const std::uint8_t* table, Int positions) {
    const auto place = [table](std::uint32_t position) { return table + std::size_t{4} * position; };
    v128_t words = wasm_v128_load32_zero(place(wasm_u32x4_extract_lane(positions.lanes, 0)));
    words = wasm_v128_load32_lane(place(wasm_u32x4_extract_lane(positions.lanes, 1)), words, 1);
    words = wasm_v128_load32_lane(place(wasm_u32x4_extract_lane(positions.lanes, 2)), words, 2);
    return {wasm_v128_load32_lane(place(wasm_u32x4_extract_lane(positions.lanes, 3)), words, 3)};
}

inline constexpr Texel_Shape texel_shapes[] = {{2, 4}};

template <int rows, int columns> inline Int block_texels(const std::uint8_t* first, std::int64_t row_bytes, Int s, Int t) {
    static_assert(rows == 2 && columns == 4);
    // The column in each byte, then the number of a byte in the row.
    const v128_t column = wasm_i8x16_shuffle(s.lanes, s.lanes, 2, 2, 2, 2, 6, 6, 6, 6, 10, 10, 10, 10, 14, 14, 14, 14);
    const v128_t bytes = wasm_v128_or(wasm_i32x4_shl(column, 2), wasm_i32x4_const_splat(0x03020100));
    const auto of_row = [&](std::int64_t row) { return wasm_i8x16_swizzle(wasm_v128_load(first + row * row_bytes), bytes); };
    const v128_t is_second = wasm_i32x4_shr(wasm_i32x4_shl(t.lanes, 15), 31);
    return {wasm_v128_bitselect(of_row(1), of_row(0), is_second)};
}

inline Int load_pixels(const std::uint8_t* from, All) {
    return {wasm_v128_load(from)};
}

inline Int load_pixels(const std::uint8_t* from, Active) {
    return load_pixels(from, All{});
}

inline void store_pixels(std::uint8_t* to, Int pixels, All) {
    wasm_v128_store(to, pixels.lanes);
}

inline void store_pixels(std::uint8_t* to, Int pixels, Active active) {
    store_pixels(to, select(active, pixels, load_pixels(to, All{})), All{});
}

inline void store_first_pixels(std::uint8_t* to, Int pixels, std::int32_t count) {
    if ((count & 2) != 0) {
        wasm_v128_store64_lane(to, pixels.lanes, 0);
        to += 8;
    }
    if ((count & 1) != 0) {
        wasm_v128_store32_lane(to, pixels.lanes, 2);
    }
}

// ---- what attributes_of_4_lanes.inl needs

inline Int absolute(Int a) {
    return {wasm_i32x4_abs(a.lanes)};
}

inline bool all_at_most(Int a, Int most) {
    return wasm_i32x4_all_true(wasm_u32x4_le(a.lanes, most.lanes));
}

template <int bits> inline Int shift_right_signed(Int a) {
    return {wasm_i32x4_shr(a.lanes, bits)};
}

inline Int shift_right_signed_by(Int a, int bits) {
    return {wasm_i32x4_shr(a.lanes, static_cast<std::uint32_t>(bits))};
}

inline Int shift_left_by(Int a, int bits) {
    return {wasm_i32x4_shl(a.lanes, static_cast<std::uint32_t>(bits))};
}

inline Int with_lane_1(Int others, Int lane_1) {
    return {wasm_i32x4_shuffle(others.lanes, lane_1.lanes, 0, 5, 2, 3)};
}

inline Int with_lanes_0_and_1(Int others, Int first_two) {
    return {wasm_i32x4_shuffle(others.lanes, first_two.lanes, 4, 5, 2, 3)};
}

template <int lane> inline Int spread_lane(Int a) {
    return {wasm_i32x4_shuffle(a.lanes, a.lanes, lane, lane, lane, lane)};
}

// Of four numbers times two and two factors. The sum with 1.5 * 2^52 has the whole number in its low bits: processors convert
// faster than WebAssembly, which checks ranges, but its truncation is one of their instructions.
inline Int truncated_products(Int a, v128_t first_factors, v128_t second_factors) {
    const auto whole = [](v128_t numbers, v128_t factors) {
        const v128_t products = wasm_f64x2_mul(wasm_f64x2_convert_low_i32x4(numbers), factors);
        return wasm_f64x2_add(wasm_f64x2_trunc(products), wasm_f64x2_const_splat(0x1.8p52));
    };
    return {wasm_i32x4_shuffle(whole(a.lanes, first_factors),
                               whole(wasm_i32x4_shuffle(a.lanes, a.lanes, 2, 3, 2, 3), second_factors), 0, 2, 4, 6)};
}

inline Int truncated_products(Int a, double by) {
    const v128_t factors = wasm_f64x2_splat(by);
    return truncated_products(a, factors, factors);
}

} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/kernels/attributes_of_4_lanes.inl"
