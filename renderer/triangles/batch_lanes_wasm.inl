// Batches of small triangles with WebAssembly's SIMD: eight lanes, two vectors of the set's four. The names are documented in
// triangle_batches.inl. Included after kernels/pixel_formats.inl.
#pragma once

#include <cstring>

#include "renderer/kernels/reciprocals.h"
#include "renderer/triangles/batch_halves.inl"

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

inline constexpr std::int32_t least_run = 3;
inline constexpr std::int32_t rows_ahead = 2 * lane_count;

template <class Operation> KRB_ALWAYS_INLINE Int in_halves(Operation operation, Int a, Int b) {
    return {{operation(a.low.lanes, b.low.lanes)}, {operation(a.high.lanes, b.high.lanes)}};
}

// ---- lanes

// By a product with a power of two, made as the exponent of a float.
inline Int shift_left_by(Int a, Int bits) {
    const auto shifted = [](v128_t x, v128_t by) {
        const v128_t power = wasm_i32x4_shl(wasm_i32x4_add(by, wasm_i32x4_const_splat(127)), 23);
        return wasm_i32x4_mul(x, wasm_i32x4_trunc_sat_f32x4(power));
    };
    return in_halves(shifted, a, bits);
}

inline Int least(Int a, Int b) {
    return in_halves([](v128_t x, v128_t y) { return wasm_i32x4_min(x, y); }, a, b);
}

inline Active less(Int a, Int b) {
    return {{wasm_i32x4_lt(a.low.lanes, b.low.lanes)}, {wasm_i32x4_lt(a.high.lanes, b.high.lanes)}};
}

inline Active has_any(Int a, Int bits) {
    return less(splat(0), a & bits);
}

inline std::uint32_t bits_of(Active active) {
    return wasm_i32x4_bitmask(active.low.lanes) | wasm_i32x4_bitmask(active.high.lanes) << 4;
}

inline bool none(Active active) {
    return !wasm_v128_any_true(wasm_v128_or(active.low.lanes, active.high.lanes));
}

inline Active no_lanes() {
    return {{wasm_i32x4_const_splat(0)}, {wasm_i32x4_const_splat(0)}};
}

inline Int difference_or_reverse(Int a, Int b, Active backwards) {
    const auto negated = [](Half x, Half_Active lanes) {
        return Half{wasm_i32x4_sub(wasm_v128_xor(x.lanes, lanes.lanes), lanes.lanes)};
    };
    const Int forwards = a - b;
    return {negated(forwards.low, backwards.low), negated(forwards.high, backwards.high)};
}

inline Int joined_halves(Int low, Int high) {
    return in_halves([](v128_t x, v128_t y) { return wasm_i16x8_shuffle(x, y, 0, 9, 2, 11, 4, 13, 6, 15); }, low, high);
}

inline Int bytes_beyond(Int a, Int b, std::uint32_t limits) {
    const v128_t limit = wasm_u32x4_splat(limits);
    const auto beyond = [limit](v128_t x, v128_t y) {
        return wasm_u8x16_sub_sat(wasm_v128_or(wasm_u8x16_sub_sat(x, y), wasm_u8x16_sub_sat(y, x)), limit);
    };
    return in_halves(beyond, a, b);
}

inline void store_ints(std::int32_t* to, Int a) {
    wasm_v128_store(to, a.low.lanes);
    wasm_v128_store(to + 4, a.high.lanes);
}

template <int count> inline Int rotated(Int a) {
    static_assert(count == 1 || count == 2);
    return in_halves([](v128_t x, v128_t y) { return wasm_i32x4_shuffle(x, y, count, count + 1, count + 2, count + 3); }, a,
                     {a.high, a.low});
}

// Lanes of eight by their numbers, as bytes. Bytes beyond a vector become 0, so that both parts can be joined.
inline Int looked_up(v128_t low, v128_t high, Int positions) {
    const auto of_four = [low, high](v128_t at) {
        const v128_t lanes = wasm_v128_and(at, wasm_i32x4_const_splat(7));
        const v128_t bytes =
            wasm_i32x4_add(wasm_i32x4_mul(lanes, wasm_i32x4_const_splat(0x04040404)), wasm_i32x4_const_splat(0x03020100));
        return wasm_v128_or(wasm_i8x16_swizzle(low, bytes),
                            wasm_i8x16_swizzle(high, wasm_i8x16_sub(bytes, wasm_i8x16_const_splat(16))));
    };
    return {{of_four(positions.low.lanes)}, {of_four(positions.high.lanes)}};
}

inline Int lanes_at(Int table, Int positions) {
    return looked_up(table.low.lanes, table.high.lanes, positions);
}

inline Int one_of_8(const std::int32_t (&table)[8], Int positions) {
    return looked_up(wasm_v128_load(table), wasm_v128_load(table + 4), positions);
}

// ---- points and colours

inline Int load_first(const VT_RGB32* colors, std::int32_t count) {
    std::int32_t words[lane_count] = {};
    std::memcpy(words, colors, static_cast<std::size_t>(count) * sizeof *colors);
    return load_ints(words);
}

inline void load_first(const VT_DCI_Point* points, std::int32_t count, Int& x, Int& y, Int& z) {
    std::int32_t words[3 * lane_count] = {};
    std::memcpy(words, points, static_cast<std::size_t>(count) * sizeof *points);
    const auto load = [&words](int at, Half& of_x, Half& of_y, Half& of_z) {
        const v128_t first = wasm_v128_load(words + at);
        const v128_t second = wasm_v128_load(words + at + 4);
        const v128_t third = wasm_v128_load(words + at + 8);
        of_x = {wasm_i32x4_shuffle(wasm_i32x4_shuffle(first, second, 0, 3, 6, 6), third, 0, 1, 2, 5)};
        of_y = {wasm_i32x4_shuffle(wasm_i32x4_shuffle(first, second, 1, 4, 7, 7), third, 0, 1, 2, 6)};
        of_z = {wasm_i32x4_shuffle(wasm_i32x4_shuffle(first, second, 2, 5, 5, 5), third, 0, 1, 4, 7)};
    };
    load(0, x.low, y.low, z.low);
    load(12, x.high, y.high, z.high);
}

// ---- quotients

struct Lane_Reciprocals {
    v128_t of[4];
};

KRB_ALWAYS_INLINE Int quotient(Int a, const Lane_Reciprocals& by) {
    return {truncated_products(a.low, by.of[0], by.of[1]), truncated_products(a.high, by.of[2], by.of[3])};
}

inline Lane_Reciprocals row_reciprocals(Int counts) {
    std::int32_t at[lane_count];
    store_ints(at, counts & splat(Reciprocals::count - 1));
    const auto two = [&at](int lane) {
        return wasm_v128_load64_lane(reciprocals.of + at[lane + 1], wasm_v128_load64_zero(reciprocals.of + at[lane]), 1);
    };
    return {two(0), two(2), two(4), two(6)};
}

inline Lane_Reciprocals column_reciprocals(Int counts) {
    return row_reciprocals(counts);
}

// Row i of out takes lane i of all four.
KRB_ALWAYS_INLINE void transpose(const Half (&in)[4], Half* out) {
    const v128_t first_low = wasm_i32x4_shuffle(in[0].lanes, in[1].lanes, 0, 4, 1, 5);
    const v128_t second_low = wasm_i32x4_shuffle(in[2].lanes, in[3].lanes, 0, 4, 1, 5);
    const v128_t first_high = wasm_i32x4_shuffle(in[0].lanes, in[1].lanes, 2, 6, 3, 7);
    const v128_t second_high = wasm_i32x4_shuffle(in[2].lanes, in[3].lanes, 2, 6, 3, 7);
    out[0] = {wasm_i64x2_shuffle(first_low, second_low, 0, 2)};
    out[1] = {wasm_i64x2_shuffle(first_low, second_low, 1, 3)};
    out[2] = {wasm_i64x2_shuffle(first_high, second_high, 0, 2)};
    out[3] = {wasm_i64x2_shuffle(first_high, second_high, 1, 3)};
}

// ---- rows of pixels

struct Quads {
    std::uint32_t color[8][4];
    std::uint16_t depth[8][4];

    void set_colors(const Int (&columns)[4]) {
        Half rows[8];
        transpose({columns[0].low, columns[1].low, columns[2].low, columns[3].low}, rows);
        transpose({columns[0].high, columns[1].high, columns[2].high, columns[3].high}, rows + 4);
        for (int i = 0; i < 8; ++i) {
            wasm_v128_store(color[i], rows[i].lanes);
        }
    }

    void set_depths(Int columns_01, Int columns_23) {
        const auto store = [](std::uint16_t* to, Half first, Half second) {
            wasm_v128_store(to, wasm_i32x4_shuffle(first.lanes, second.lanes, 0, 4, 1, 5));
            wasm_v128_store(to + 8, wasm_i32x4_shuffle(first.lanes, second.lanes, 2, 6, 3, 7));
        };
        store(depth[0], columns_01.low, columns_23.low);
        store(depth[4], columns_01.high, columns_23.high);
    }
};

// Numbers of columns.
struct Row_Lanes {
    std::int32_t columns[lane_count];

    explicit Row_Lanes(Int counts) { store_ints(columns, counts); }
};

// Half as wide as the lanes of colours.
struct Part_Lanes {
    v128_t halves;

    Part_Lanes(const Row_Lanes& rows, int row, int skipped)
        : halves(wasm_i16x8_gt(wasm_i16x8_splat(static_cast<std::int16_t>(rows.columns[row] - skipped)),
                               wasm_i16x8_const(0, 1, 2, 3, 4, 5, 6, 7))) {}
    void limit_to(std::uint32_t mask_bits) {
        const v128_t own_bit = wasm_i16x8_const(1, 2, 4, 8, 16, 32, 64, 128);
        const v128_t all = wasm_u16x8_splat(static_cast<std::uint16_t>(mask_bits));
        halves = wasm_v128_and(halves, wasm_i16x8_eq(wasm_v128_and(all, own_bit), own_bit));
    }
};

template <int quads> struct Part_Colors { Half of[std::size_t{quads}]; };

template <int quads> inline Part_Colors<quads> same_colors(std::int32_t pixel) {
    Part_Colors<quads> colors;
    for (Half& quad : colors.of) {
        quad = krb::KRB_KERNEL_SET::splat(pixel);
    }
    return colors;
}

template <int count> inline Part_Colors<count> colors_of(const Quads* quads, int row) {
    Part_Colors<count> colors;
    for (int i = 0; i < count; ++i) {
        colors.of[i] = {wasm_v128_load(quads[i].color[row])};
    }
    return colors;
}

template <int count> inline v128_t depths_of(const Quads* quads, int row) {
    const v128_t first = wasm_v128_load64_zero(quads[0].depth[row]);
    return count == 1 ? first : wasm_v128_load64_lane(quads[count - 1].depth[row], first, 1);
}

inline void store_nearer(std::uint8_t* at, v128_t depths, Part_Lanes& lanes) {
    const v128_t stored = wasm_v128_load(at);
    lanes.halves = wasm_v128_and(lanes.halves, wasm_u16x8_le(depths, stored));
    wasm_v128_store(at, wasm_v128_bitselect(depths, stored, lanes.halves));
}

template <int quads> inline void store_colors(std::uint8_t* at, Part_Colors<quads> colors, Part_Lanes lanes) {
    store_pixels(at, colors.of[0], Half_Active{wasm_i16x8_shuffle(lanes.halves, lanes.halves, 0, 0, 1, 1, 2, 2, 3, 3)});
    if constexpr (quads > 1) {
        store_pixels(at + 16, colors.of[1], Half_Active{wasm_i16x8_shuffle(lanes.halves, lanes.halves, 4, 4, 5, 5, 6, 6, 7, 7)});
    }
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/triangles/edge_tables_wasm.inl"
