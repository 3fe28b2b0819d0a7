// The vocabulary of lanes for x86-64-v2 (SSE4.2): four pixels. The names are documented in lanes_portable.inl.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <immintrin.h>

#include "renderer/kernels/gather_4.inl"
#include "renderer/kernels/texel_shape.h"

namespace krb::KRB_KERNEL_SET {
namespace {

inline constexpr int lane_count = 4;
// A group always lies inside its row, and lanes that take no part are written back as they were.
inline constexpr bool masked_memory = false;

struct Int {
    __m128i lanes;
};

// All bits of a lane set or clear.
struct Active {
    __m128i lanes;
};

struct All {};

inline void clear_upper_halves() {
}

inline Int splat(std::int32_t value) {
    return {_mm_set1_epi32(value)};
}

inline Int lane_numbers() {
    return {_mm_setr_epi32(0, 1, 2, 3)};
}

inline Int operator+(Int a, Int b) {
    return {_mm_add_epi32(a.lanes, b.lanes)};
}

inline Int operator-(Int a, Int b) {
    return {_mm_sub_epi32(a.lanes, b.lanes)};
}

inline Int operator*(Int a, Int b) {
    return {_mm_mullo_epi32(a.lanes, b.lanes)};
}

inline Int operator&(Int a, Int b) {
    return {_mm_and_si128(a.lanes, b.lanes)};
}

inline Int operator|(Int a, Int b) {
    return {_mm_or_si128(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_left(Int a) {
    return {_mm_slli_epi32(a.lanes, bits)};
}

template <int bits> inline Int shift_right(Int a) {
    return {_mm_srli_epi32(a.lanes, bits)};
}

inline Int shift_right_by(Int a, int bits) {
    return {_mm_srl_epi32(a.lanes, _mm_cvtsi32_si128(bits))};
}

inline Int multiply_halves(Int a, Int b) {
    return {_mm_mullo_epi16(a.lanes, b.lanes)};
}

inline Int multiply_halves_high(Int a, Int b) {
    return {_mm_mulhi_epu16(a.lanes, b.lanes)};
}

inline Int mixed_bytes(Int a, Int b, Int weights) {
    // Weights side by side: w and 255 - w.
    const __m128i complement = _mm_set1_epi16(static_cast<short>(0xFF00));
    const auto weights_of = [&](__m128i lanes) { return _mm_xor_si128(_mm_shuffle_epi8(weights.lanes, lanes), complement); };
    // Bytes less 128 are signed ones, and the sum of the products is less by 128 * 255.
    const __m128i half = _mm_set1_epi8(static_cast<char>(0x80));
    const __m128i from_a = _mm_xor_si128(a.lanes, half);
    const __m128i from_b = _mm_xor_si128(b.lanes, half);
    // Of v up to 255 * 255, floor(v / 255) = (v + 1) * 257 >> 16.
    const auto quotients = [&](__m128i pairs, __m128i of_pairs) {
        return _mm_mulhi_epu16(_mm_add_epi16(_mm_maddubs_epi16(of_pairs, pairs), _mm_set1_epi16(128 * 255 + 1)),
                               _mm_set1_epi16(257));
    };
    const __m128i low = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 4, 4, 4, 4, 4, 4, 4, 4);
    const __m128i high = _mm_setr_epi8(8, 8, 8, 8, 8, 8, 8, 8, 12, 12, 12, 12, 12, 12, 12, 12);
    return {_mm_packus_epi16(quotients(_mm_unpacklo_epi8(from_a, from_b), weights_of(low)),
                             quotients(_mm_unpackhi_epi8(from_a, from_b), weights_of(high)))};
}

inline Int greatest(Int a, Int b) {
    return {_mm_max_epi32(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_halves_right(Int a) {
    return {_mm_srli_epi16(a.lanes, bits)};
}

inline Int upper_halves_in_both(Int a) {
    return {_mm_shuffle_epi8(a.lanes, _mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15))};
}

inline Active lanes_between(std::int32_t begin, std::int32_t end) {
    return {_mm_andnot_si128(_mm_cmpgt_epi32(_mm_set1_epi32(begin), lane_numbers().lanes),
                             _mm_cmpgt_epi32(_mm_set1_epi32(end), lane_numbers().lanes))};
}

inline Active first_lanes(std::int32_t count) {
    return {_mm_cmpgt_epi32(_mm_set1_epi32(count), lane_numbers().lanes)};
}

inline Active lanes_of_bits(std::uint32_t bits) {
    const __m128i own_bit = _mm_setr_epi32(1, 2, 4, 8);
    return {_mm_cmpeq_epi32(_mm_and_si128(_mm_set1_epi32(static_cast<int>(bits)), own_bit), own_bit)};
}

inline Active less_or_equal(Int a, Int b) {
    return {_mm_cmpeq_epi32(_mm_min_epi32(a.lanes, b.lanes), a.lanes)};
}

inline Active equal(Int a, Int b) {
    return {_mm_cmpeq_epi32(a.lanes, b.lanes)};
}

inline Active operator&(Active a, Active b) {
    return {_mm_and_si128(a.lanes, b.lanes)};
}

inline Active operator&(All, Active b) {
    return b;
}

inline Active without(Active a, Active b) {
    return {_mm_andnot_si128(b.lanes, a.lanes)};
}

inline bool none(Active a) {
    return _mm_testz_si128(a.lanes, a.lanes) != 0;
}

inline bool has_lane(Active active, std::int32_t lane) {
    return (_mm_movemask_ps(_mm_castsi128_ps(active.lanes)) >> lane & 1) != 0;
}

inline std::uint32_t lane_of(Int a, std::int32_t lane) {
    std::uint32_t lanes[4];
    std::memcpy(lanes, &a.lanes, sizeof lanes);
    return lanes[lane];
}

inline Int select(Active condition, Int yes, Int no) {
    return {_mm_blendv_epi8(no.lanes, yes.lanes, condition.lanes)};
}

inline Int where(Active condition, Int value) {
    return {_mm_and_si128(condition.lanes, value.lanes)};
}

inline Int load_ints(const std::int32_t* from) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
}

// The low 16 bits of every lane, in the low half.
inline __m128i packed_depths(Int depths) {
    return _mm_packus_epi32(_mm_and_si128(depths.lanes, _mm_set1_epi32(0xFFFF)), _mm_setzero_si128());
}

inline __m128i packed_lanes(Active active) {
    return _mm_packs_epi32(active.lanes, _mm_setzero_si128());
}

inline Int load_depths(const std::uint8_t* from, All) {
    return {_mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)))};
}

inline Int load_depths(const std::uint8_t* from, Active) {
    return load_depths(from, All{});
}

inline Int load_indices(const std::uint8_t* from, All) {
    std::int32_t word;
    std::memcpy(&word, from, 4);
    return {_mm_cvtepu8_epi32(_mm_cvtsi32_si128(word))};
}

inline Int load_indices(const std::uint8_t* from, Active) {
    return load_indices(from, All{});
}

inline Int gather(const std::uint8_t* table, Int positions) {
    return {gather_4(table, positions.lanes)};
}

inline constexpr Texel_Shape texel_shapes[] = {{2, 4}};

template <int rows, int columns> inline Int block_texels(const std::uint8_t* first, std::int64_t row_bytes, Int s, Int t) {
    static_assert(rows == 2 && columns == 4);
    // The column in each byte, then the number of a byte in the row.
    const __m128i column = _mm_shuffle_epi8(s.lanes, _mm_setr_epi8(2, 2, 2, 2, 6, 6, 6, 6, 10, 10, 10, 10, 14, 14, 14, 14));
    const __m128i bytes = _mm_or_si128(_mm_slli_epi32(column, 2), _mm_set1_epi32(0x03020100));
    const auto of_row = [&](int row) {
        return _mm_castsi128_ps(
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(first + row * row_bytes)), bytes));
    };
    // Blends look at the highest bit of a lane only.
    return {_mm_castps_si128(_mm_blendv_ps(of_row(0), of_row(1), _mm_castsi128_ps(_mm_slli_epi32(t.lanes, 15))))};
}

inline void store_depths(std::uint8_t* to, Int depths, Active active) {
    __m128i* at = reinterpret_cast<__m128i*>(to);
    _mm_storel_epi64(at, _mm_blendv_epi8(_mm_loadl_epi64(at), packed_depths(depths), packed_lanes(active)));
}

struct Depth_Pair {
    __m128i depths; // 16 bits each
};

// 16 bits each, all set or clear.
struct Active_Pair {
    __m128i lanes;
};

inline Depth_Pair packed_pair(Int first, Int second) {
    return {_mm_packus_epi32(first.lanes, second.lanes)};
}

inline Depth_Pair load_pair(const std::uint8_t* from, Int) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
}

inline void store_pair(std::uint8_t* to, Depth_Pair pair) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), pair.depths);
}

inline Active_Pair less_or_equal(Depth_Pair a, Depth_Pair b) {
    return {_mm_cmpeq_epi16(_mm_min_epu16(a.depths, b.depths), a.depths)};
}

inline bool none(Active_Pair a) {
    return _mm_movemask_epi8(a.lanes) == 0;
}

inline bool all(Active_Pair a) {
    return _mm_movemask_epi8(a.lanes) == 0xFFFF;
}

inline Int load_pixels(const std::uint8_t* from, All) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
}

inline Int load_pixels(const std::uint8_t* from, Active) {
    return load_pixels(from, All{});
}

inline void store_pixels(std::uint8_t* to, Int pixels, Active active) {
    __m128i* at = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(at, _mm_blendv_epi8(_mm_loadu_si128(at), pixels.lanes, active.lanes));
}

inline void store_pixels(std::uint8_t* to, Int pixels, All) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), pixels.lanes);
}

inline void store_first_pixels(std::uint8_t* to, Int pixels, std::int32_t count) {
    if ((count & 2) != 0) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), pixels.lanes);
        to += 8;
    }
    if ((count & 1) != 0) {
        const int word = _mm_extract_epi32(pixels.lanes, 2);
        std::memcpy(to, &word, 4);
    }
}

// The low 8 bits of every lane as one word.
inline std::int32_t packed_indices(Int indices) {
    const __m128i first_bytes = _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    return _mm_cvtsi128_si32(_mm_shuffle_epi8(indices.lanes, first_bytes));
}

inline void store_indices(std::uint8_t* to, Int indices, Active active) {
    std::uint32_t stored;
    std::memcpy(&stored, to, 4);
    const auto lanes = static_cast<std::uint32_t>(packed_indices({active.lanes}));
    stored = (stored & ~lanes) | (static_cast<std::uint32_t>(packed_indices(indices)) & lanes);
    std::memcpy(to, &stored, 4);
}

inline void store_indices(std::uint8_t* to, Int indices, All) {
    const std::int32_t word = packed_indices(indices);
    std::memcpy(to, &word, 4);
}

// ---- what attributes_of_4_lanes.inl needs

inline Int lanes_of(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return {_mm_setr_epi32(a, b, c, d)};
}

inline Int widened_bytes(std::uint32_t bytes) {
    return {_mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(bytes)))};
}

inline Int absolute(Int a) {
    return {_mm_abs_epi32(a.lanes)};
}

inline bool all_at_most(Int a, Int most) {
    return _mm_movemask_epi8(_mm_cmpeq_epi32(_mm_min_epu32(a.lanes, most.lanes), a.lanes)) == 0xFFFF;
}

template <int bits> inline Int shift_right_signed(Int a) {
    return {_mm_srai_epi32(a.lanes, bits)};
}

inline Int shift_right_signed_by(Int a, int bits) {
    return {_mm_sra_epi32(a.lanes, _mm_cvtsi32_si128(bits))};
}

inline Int shift_left_by(Int a, int bits) {
    return {_mm_sll_epi32(a.lanes, _mm_cvtsi32_si128(bits))};
}

inline Int with_lane_1(Int others, Int lane_1) {
    return {_mm_blend_epi16(others.lanes, lane_1.lanes, 0x0C)};
}

inline Int with_lanes_0_and_1(Int others, Int first_two) {
    return {_mm_blend_epi16(others.lanes, first_two.lanes, 0x0F)};
}

template <int lane> inline Int spread_lane(Int a) {
    return {_mm_shuffle_epi32(a.lanes, lane * 0x55)};
}

inline Int truncated_products(Int a, double by) {
    const __m128d factor = _mm_set1_pd(by);
    const __m128i first = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(a.lanes), factor));
    const __m128i second = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(_mm_srli_si128(a.lanes, 8)), factor));
    return {_mm_unpacklo_epi64(first, second)};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/kernels/attributes_of_4_lanes.inl"
