// The vocabulary of lanes for AArch64 (NEON, which every such processor has): four pixels. The names are documented in
// lanes_portable.inl. Memory is read and written by bytes, since vectors of larger numbers would have to be aligned.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <arm_neon.h>

#include "renderer/kernels/pixel_words.inl"
#include "renderer/kernels/texel_shape.h"

namespace krb::KRB_KERNEL_SET {
namespace {

inline constexpr int lane_count = 4;
// A group always lies inside its row, and lanes that take no part are written back as they were.
inline constexpr bool masked_memory = false;

struct Int {
    uint32x4_t lanes;
};

// All bits of a lane set or clear.
struct Active {
    uint32x4_t lanes;
};

struct All {};

inline void clear_upper_halves() {
}

inline int32x4_t signed_lanes(Int a) {
    return vreinterpretq_s32_u32(a.lanes);
}

inline uint16x8_t halves(Int a) {
    return vreinterpretq_u16_u32(a.lanes);
}

inline Int splat(std::int32_t value) {
    return {vreinterpretq_u32_s32(vdupq_n_s32(value))};
}

inline Int lanes_of(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    const int32x4_t lanes = {a, b, c, d};
    return {vreinterpretq_u32_s32(lanes)};
}

inline Int lane_numbers() {
    return lanes_of(0, 1, 2, 3);
}

inline Int operator+(Int a, Int b) {
    return {vaddq_u32(a.lanes, b.lanes)};
}

inline Int operator-(Int a, Int b) {
    return {vsubq_u32(a.lanes, b.lanes)};
}

inline Int operator*(Int a, Int b) {
    return {vmulq_u32(a.lanes, b.lanes)};
}

inline Int operator&(Int a, Int b) {
    return {vandq_u32(a.lanes, b.lanes)};
}

inline Int operator|(Int a, Int b) {
    return {vorrq_u32(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_left(Int a) {
    return {vshlq_n_u32(a.lanes, bits)};
}

template <int bits> inline Int shift_right(Int a) {
    return {vshrq_n_u32(a.lanes, bits)};
}

inline Int shift_right_by(Int a, int bits) {
    return {vshlq_u32(a.lanes, vdupq_n_s32(-bits))};
}

inline Int multiply_halves(Int a, Int b) {
    return {vreinterpretq_u32_u16(vmulq_u16(halves(a), halves(b)))};
}

inline Int multiply_halves_high(Int a, Int b) {
    const uint16x8_t first = vreinterpretq_u16_u32(vmull_u16(vget_low_u16(halves(a)), vget_low_u16(halves(b))));
    const uint16x8_t second = vreinterpretq_u16_u32(vmull_high_u16(halves(a), halves(b)));
    return {vreinterpretq_u32_u16(vuzp2q_u16(first, second))};
}

inline Int greatest(Int a, Int b) {
    return {vreinterpretq_u32_s32(vmaxq_s32(signed_lanes(a), signed_lanes(b)))};
}

template <int bits> inline Int shift_halves_right(Int a) {
    return {vreinterpretq_u32_u16(vshrq_n_u16(halves(a), bits))};
}

inline Int upper_halves_in_both(Int a) {
    return {vreinterpretq_u32_u16(vtrn2q_u16(halves(a), halves(a)))};
}

inline Active first_lanes(std::int32_t count) {
    return {vcltq_s32(signed_lanes(lane_numbers()), vdupq_n_s32(count))};
}

inline Active lanes_between(std::int32_t begin, std::int32_t end) {
    return {vandq_u32(vcgeq_s32(signed_lanes(lane_numbers()), vdupq_n_s32(begin)), first_lanes(end).lanes)};
}

inline Active lanes_of_bits(std::uint32_t bits) {
    return {vtstq_u32(vdupq_n_u32(bits), lanes_of(1, 2, 4, 8).lanes)};
}

inline Active less_or_equal(Int a, Int b) {
    return {vcleq_s32(signed_lanes(a), signed_lanes(b))};
}

inline Active equal(Int a, Int b) {
    return {vceqq_u32(a.lanes, b.lanes)};
}

inline Active operator&(Active a, Active b) {
    return {vandq_u32(a.lanes, b.lanes)};
}

inline Active operator&(All, Active b) {
    return b;
}

inline Active without(Active a, Active b) {
    return {vbicq_u32(a.lanes, b.lanes)};
}

inline bool none(Active a) {
    return vmaxvq_u32(a.lanes) == 0;
}

inline std::uint32_t lane_of(Int a, std::int32_t lane) {
    std::uint32_t lanes[4];
    std::memcpy(lanes, &a.lanes, sizeof lanes);
    return lanes[lane];
}

inline bool has_lane(Active active, std::int32_t lane) {
    return lane_of({active.lanes}, lane) != 0;
}

inline Int select(Active condition, Int yes, Int no) {
    return {vbslq_u32(condition.lanes, yes.lanes, no.lanes)};
}

inline Int where(Active condition, Int value) {
    return {vandq_u32(condition.lanes, value.lanes)};
}

inline Int load_ints(const std::int32_t* from) {
    return {vreinterpretq_u32_s32(vld1q_s32(from))};
}

inline Int load_depths(const std::uint8_t* from, All) {
    return {vmovl_u16(vreinterpret_u16_u8(vld1_u8(from)))};
}

inline Int load_depths(const std::uint8_t* from, Active) {
    return load_depths(from, All{});
}

inline void store_depths(std::uint8_t* to, Int depths, Active active) {
    const uint16x4_t stored = vreinterpret_u16_u8(vld1_u8(to));
    vst1_u8(to, vreinterpret_u8_u16(vbsl_u16(vmovn_u32(active.lanes), vmovn_u32(depths.lanes), stored)));
}

// Four bytes, one a lane.
inline Int widened_bytes(std::uint32_t bytes) {
    return {vmovl_u16(vget_low_u16(vmovl_u8(vcreate_u8(bytes))))};
}

inline Int load_indices(const std::uint8_t* from, All) {
    return widened_bytes(load_word(from));
}

inline Int load_indices(const std::uint8_t* from, Active) {
    return load_indices(from, All{});
}

// The low 8 bits of every lane as one word.
inline std::uint32_t packed_indices(Int indices) {
    const uint16x4_t narrow = vmovn_u32(indices.lanes);
    return vget_lane_u32(vreinterpret_u32_u8(vmovn_u16(vcombine_u16(narrow, narrow))), 0);
}

inline void store_indices(std::uint8_t* to, Int indices, All) {
    store_word(to, packed_indices(indices));
}

inline void store_indices(std::uint8_t* to, Int indices, Active active) {
    store_indices(to, select(active, indices, load_indices(to, All{})), All{});
}

inline Int gather(const std::uint8_t* table, Int positions) {
    const auto pixel_at = [table](std::uint32_t position) { return load_word(table + std::size_t{4} * position); };
    uint32x4_t pixels = vdupq_n_u32(pixel_at(vgetq_lane_u32(positions.lanes, 0)));
    pixels = vsetq_lane_u32(pixel_at(vgetq_lane_u32(positions.lanes, 1)), pixels, 1);
    pixels = vsetq_lane_u32(pixel_at(vgetq_lane_u32(positions.lanes, 2)), pixels, 2);
    return {vsetq_lane_u32(pixel_at(vgetq_lane_u32(positions.lanes, 3)), pixels, 3)};
}

inline constexpr Texel_Shape texel_shapes[] = {{4, 4}};

template <int rows, int columns> inline Int block_texels(const std::uint8_t* first, std::int64_t row_bytes, Int s, Int t) {
    static_assert(rows == 4 && columns == 4);
    // A number of a texel in each byte, then that of a byte.
    const uint32x4_t texel = vorrq_u32(vshrq_n_u32(s.lanes, 16), vandq_u32(vshrq_n_u32(t.lanes, 14), vdupq_n_u32(0xC)));
    const uint32x4_t bytes = vmlaq_n_u32(vdupq_n_u32(0x03020100), texel, 0x04040404);
    const uint8x16x4_t block{
        {vld1q_u8(first), vld1q_u8(first + row_bytes), vld1q_u8(first + 2 * row_bytes), vld1q_u8(first + 3 * row_bytes)}};
    return {vreinterpretq_u32_u8(vqtbl4q_u8(block, vreinterpretq_u8_u32(bytes)))};
}

inline Int load_pixels(const std::uint8_t* from, All) {
    return {vreinterpretq_u32_u8(vld1q_u8(from))};
}

inline Int load_pixels(const std::uint8_t* from, Active) {
    return load_pixels(from, All{});
}

inline void store_pixels(std::uint8_t* to, Int pixels, All) {
    vst1q_u8(to, vreinterpretq_u8_u32(pixels.lanes));
}

inline void store_pixels(std::uint8_t* to, Int pixels, Active active) {
    store_pixels(to, select(active, pixels, load_pixels(to, All{})), All{});
}

inline void store_first_pixels(std::uint8_t* to, Int pixels, std::int32_t count) {
    if ((count & 2) != 0) {
        vst1_u8(to, vreinterpret_u8_u32(vget_low_u32(pixels.lanes)));
        to += 8;
    }
    if ((count & 1) != 0) {
        store_word(to, vgetq_lane_u32(pixels.lanes, 2));
    }
}

// ---- what attributes_of_4_lanes.inl needs

inline Int absolute(Int a) {
    return {vreinterpretq_u32_s32(vabsq_s32(signed_lanes(a)))};
}

inline bool all_at_most(Int a, Int most) {
    return vminvq_u32(vcleq_u32(a.lanes, most.lanes)) != 0;
}

template <int bits> inline Int shift_right_signed(Int a) {
    return {vreinterpretq_u32_s32(vshrq_n_s32(signed_lanes(a), bits))};
}

inline Int shift_right_signed_by(Int a, int bits) {
    return {vreinterpretq_u32_s32(vshlq_s32(signed_lanes(a), vdupq_n_s32(-bits)))};
}

inline Int shift_left_by(Int a, int bits) {
    return {vshlq_u32(a.lanes, vdupq_n_s32(bits))};
}

inline Int with_lane_1(Int others, Int lane_1) {
    return {vcopyq_laneq_u32(others.lanes, 1, lane_1.lanes, 1)};
}

inline Int with_lanes_0_and_1(Int others, Int first_two) {
    return {vcombine_u32(vget_low_u32(first_two.lanes), vget_high_u32(others.lanes))};
}

template <int lane> inline Int spread_lane(Int a) {
    return {vdupq_laneq_u32(a.lanes, lane)};
}

inline Int truncated_products(Int a, double by) {
    const int32x4_t whole = signed_lanes(a);
    const int64x2_t first = vcvtq_s64_f64(vmulq_n_f64(vcvtq_f64_s64(vmovl_s32(vget_low_s32(whole))), by));
    const int64x2_t second = vcvtq_s64_f64(vmulq_n_f64(vcvtq_f64_s64(vmovl_high_s32(whole)), by));
    return {vreinterpretq_u32_s32(vmovn_high_s64(vmovn_s64(first), second))};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/kernels/attributes_of_4_lanes.inl"
