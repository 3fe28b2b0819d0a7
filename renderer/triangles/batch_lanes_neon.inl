// Batches of small triangles with NEON: eight lanes, two vectors of the set's four. The names are documented in
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

// ---- lanes

inline Int shift_left_by(Int a, Int bits) {
    return {{vshlq_u32(a.low.lanes, signed_lanes(bits.low))}, {vshlq_u32(a.high.lanes, signed_lanes(bits.high))}};
}

inline Int least(Int a, Int b) {
    const auto of_four = [](Half x, Half y) { return Half{vreinterpretq_u32_s32(vminq_s32(signed_lanes(x), signed_lanes(y)))}; };
    return {of_four(a.low, b.low), of_four(a.high, b.high)};
}

inline Active less(Int a, Int b) {
    const auto of_four = [](Half x, Half y) { return Half_Active{vcltq_s32(signed_lanes(x), signed_lanes(y))}; };
    return {of_four(a.low, b.low), of_four(a.high, b.high)};
}

inline Active has_any(Int a, Int bits) {
    return {{vtstq_u32(a.low.lanes, bits.low.lanes)}, {vtstq_u32(a.high.lanes, bits.high.lanes)}};
}

// 16 bits a lane.
inline uint16x8_t narrowed(Active active) {
    return vuzp1q_u16(vreinterpretq_u16_u32(active.low.lanes), vreinterpretq_u16_u32(active.high.lanes));
}

inline uint16x8_t lane_bits() {
    return uint16x8_t{1, 2, 4, 8, 16, 32, 64, 128};
}

inline std::uint32_t bits_of(Active active) {
    return vaddvq_u16(vandq_u16(narrowed(active), lane_bits()));
}

inline bool none(Active active) {
    return vmaxvq_u32(vorrq_u32(active.low.lanes, active.high.lanes)) == 0;
}

inline Active no_lanes() {
    return {{vdupq_n_u32(0)}, {vdupq_n_u32(0)}};
}

inline Int difference_or_reverse(Int a, Int b, Active backwards) {
    const auto negated = [](Half x, Half_Active lanes) { return Half{vsubq_u32(veorq_u32(x.lanes, lanes.lanes), lanes.lanes)}; };
    const Int forwards = a - b;
    return {negated(forwards.low, backwards.low), negated(forwards.high, backwards.high)};
}

inline Int joined_halves(Int low, Int high) {
    const auto of_four = [](Half x, Half y) { return Half{vbslq_u32(vdupq_n_u32(0xFFFF), x.lanes, y.lanes)}; };
    return {of_four(low.low, high.low), of_four(low.high, high.high)};
}

inline Int bytes_beyond(Int a, Int b, std::uint32_t limits) {
    const uint8x16_t limit = vreinterpretq_u8_u32(vdupq_n_u32(limits));
    const auto beyond = [limit](Half x, Half y) {
        const uint8x16_t distance = vabdq_u8(vreinterpretq_u8_u32(x.lanes), vreinterpretq_u8_u32(y.lanes));
        return Half{vreinterpretq_u32_u8(vqsubq_u8(distance, limit))};
    };
    return {beyond(a.low, b.low), beyond(a.high, b.high)};
}

inline void store_ints(std::int32_t* to, Int a) {
    vst1q_s32(to, signed_lanes(a.low));
    vst1q_s32(to + 4, signed_lanes(a.high));
}

template <int count> inline Int rotated(Int a) {
    return {{vextq_u32(a.low.lanes, a.high.lanes, count)}, {vextq_u32(a.high.lanes, a.low.lanes, count)}};
}

// ---- lanes looked up by number
//
// As bytes of tables. GCC 12 builds the tuples of registers that larger tables need in memory, lane by lane.

inline uint8x16_t bytes_of(Half a) {
    return vreinterpretq_u8_u32(a.lanes);
}

// The bytes of lanes of a table of so many lanes, a power of two.
template <std::uint32_t table_size> inline uint8x16_t byte_positions(Half positions) {
    const uint32x4_t lanes = vandq_u32(positions.lanes, vdupq_n_u32(table_size - 1));
    return vreinterpretq_u8_u32(vmlaq_u32(vdupq_n_u32(0x03020100), lanes, vdupq_n_u32(0x04040404)));
}

inline Int lanes_at(Int table, Int positions) {
    const auto of_four = [&table](Half at) {
        const uint8x16_t bytes = byte_positions<8>(at);
        const uint8x16_t low = vqtbl1q_u8(bytes_of(table.low), bytes);
        return Half{vreinterpretq_u32_u8(vqtbx1q_u8(low, bytes_of(table.high), vsubq_u8(bytes, vdupq_n_u8(16))))};
    };
    return {of_four(positions.low), of_four(positions.high)};
}

inline Int one_of_8(const std::int32_t (&table)[8], Int positions) {
    return lanes_at(load_ints(table), positions);
}

// ---- points and colours

inline Int load_first(const VT_RGB32* colors, std::int32_t count) {
    std::int32_t words[lane_count] = {};
    std::memcpy(words, colors, static_cast<std::size_t>(count) * sizeof *colors);
    return load_ints(words);
}

inline void load_first(const VT_DCI_Point* points, std::int32_t count, Int& x, Int& y, Int& z) {
    std::uint32_t words[3 * lane_count] = {};
    std::memcpy(words, points, static_cast<std::size_t>(count) * sizeof *points);
    const uint32x4x3_t first = vld3q_u32(words);
    const uint32x4x3_t second = vld3q_u32(words + 12);
    x = {{first.val[0]}, {second.val[0]}};
    y = {{first.val[1]}, {second.val[1]}};
    z = {{first.val[2]}, {second.val[2]}};
}

// ---- quotients

struct Lane_Reciprocals {
    float64x2_t of[4];
};

KRB_ALWAYS_INLINE Int quotient(Int a, const Lane_Reciprocals& by) {
    const auto of_four = [](int32x4_t four, float64x2_t first, float64x2_t second) {
        const int64x2_t low = vcvtq_s64_f64(vmulq_f64(vcvtq_f64_s64(vmovl_s32(vget_low_s32(four))), first));
        const int64x2_t high = vcvtq_s64_f64(vmulq_f64(vcvtq_f64_s64(vmovl_high_s32(four)), second));
        return Half{vuzp1q_u32(vreinterpretq_u32_s64(low), vreinterpretq_u32_s64(high))};
    };
    return {of_four(signed_lanes(a.low), by.of[0], by.of[1]), of_four(signed_lanes(a.high), by.of[2], by.of[3])};
}

inline Lane_Reciprocals row_reciprocals(Int counts) {
    std::int32_t at[lane_count];
    store_ints(at, counts & splat(Reciprocals::count - 1));
    const auto two = [&at](int lane) {
        return vcombine_f64(vld1_f64(reciprocals.of + at[lane]), vld1_f64(reciprocals.of + at[lane + 1]));
    };
    return {two(0), two(2), two(4), two(6)};
}

inline Lane_Reciprocals column_reciprocals(Int counts) {
    return row_reciprocals(counts);
}

// ---- rows of pixels

struct Quads {
    std::uint32_t color[8][4];
    std::uint16_t depth[8][4];

    void set_colors(const Int (&columns)[4]) {
        set_four_rows(0, columns[0].low, columns[1].low, columns[2].low, columns[3].low);
        set_four_rows(4, columns[0].high, columns[1].high, columns[2].high, columns[3].high);
    }

    void set_depths(Int columns_01, Int columns_23) {
        const auto store = [](std::uint16_t* to, Half first, Half second) {
            vst1q_u16(to, vreinterpretq_u16_u32(vzip1q_u32(first.lanes, second.lanes)));
            vst1q_u16(to + 8, vreinterpretq_u16_u32(vzip2q_u32(first.lanes, second.lanes)));
        };
        store(depth[0], columns_01.low, columns_23.low);
        store(depth[4], columns_01.high, columns_23.high);
    }

private:
    // A transposition.
    void set_four_rows(int row, Half first, Half second, Half third, Half fourth) {
        const uint32x4_t even_low = vzip1q_u32(first.lanes, third.lanes);
        const uint32x4_t odd_low = vzip1q_u32(second.lanes, fourth.lanes);
        const uint32x4_t even_high = vzip2q_u32(first.lanes, third.lanes);
        const uint32x4_t odd_high = vzip2q_u32(second.lanes, fourth.lanes);
        vst1q_u32(color[row], vzip1q_u32(even_low, odd_low));
        vst1q_u32(color[row + 1], vzip2q_u32(even_low, odd_low));
        vst1q_u32(color[row + 2], vzip1q_u32(even_high, odd_high));
        vst1q_u32(color[row + 3], vzip2q_u32(even_high, odd_high));
    }
};

// Numbers of columns.
struct Row_Lanes {
    std::int32_t columns[lane_count];

    explicit Row_Lanes(Int counts) { store_ints(columns, counts); }
};

// Half as wide as the lanes of colours.
struct Part_Lanes {
    uint16x8_t halves;

    Part_Lanes(const Row_Lanes& rows, int row, int skipped)
        : halves(vcgtq_s16(vdupq_n_s16(static_cast<std::int16_t>(rows.columns[row] - skipped)),
                           int16x8_t{0, 1, 2, 3, 4, 5, 6, 7})) {}
    void limit_to(std::uint32_t mask_bits) {
        halves = vandq_u16(halves, vtstq_u16(vdupq_n_u16(static_cast<std::uint16_t>(mask_bits)), lane_bits()));
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
        colors.of[i] = {vld1q_u32(quads[i].color[row])};
    }
    return colors;
}

template <int count> inline uint16x8_t depths_of(const Quads* quads, int row) {
    return vcombine_u16(vld1_u16(quads[0].depth[row]), vld1_u16(quads[count - 1].depth[row]));
}

inline void store_nearer(std::uint8_t* at, uint16x8_t depths, Part_Lanes& lanes) {
    const uint16x8_t stored = vreinterpretq_u16_u8(vld1q_u8(at));
    lanes.halves = vandq_u16(lanes.halves, vcleq_u16(depths, stored));
    vst1q_u8(at, vreinterpretq_u8_u16(vbslq_u16(lanes.halves, depths, stored)));
}

template <int quads> inline void store_colors(std::uint8_t* at, Part_Colors<quads> colors, Part_Lanes lanes) {
    store_pixels(at, colors.of[0], Half_Active{vreinterpretq_u32_u16(vzip1q_u16(lanes.halves, lanes.halves))});
    if constexpr (quads > 1) {
        store_pixels(at + 16, colors.of[1], Half_Active{vreinterpretq_u32_u16(vzip2q_u16(lanes.halves, lanes.halves))});
    }
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/triangles/edge_tables_neon.inl"
