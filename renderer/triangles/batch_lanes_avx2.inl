// Batches of small triangles with AVX2: eight lanes, those of the set. The names are documented in triangle_batches.inl. Included
// after kernels/pixel_formats.inl.
#pragma once

#include "renderer/kernels/reciprocals.h"
#include "renderer/triangles/quads_avx2.inl"

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

inline constexpr std::int32_t least_run = 2;
inline constexpr std::int32_t rows_ahead = 2 * lane_count;

// ---- lanes

inline Int lanes_at(Int table, Int positions) {
    return {_mm256_permutevar8x32_epi32(table.lanes, positions.lanes)};
}

inline Int lanes_at(Int first, Int second, Int positions) {
    const __m256 in_second = _mm256_castsi256_ps(_mm256_slli_epi32(positions.lanes, 28));
    return {_mm256_castps_si256(_mm256_blendv_ps(_mm256_castsi256_ps(lanes_at(first, positions).lanes),
                                                 _mm256_castsi256_ps(lanes_at(second, positions).lanes), in_second))};
}

inline Int one_of_8(const std::int32_t (&table)[8], Int positions) {
    return lanes_at(load_ints(table), positions);
}

template <int count> inline Int rotated(Int a) {
    return lanes_at(a, lane_numbers() + splat(count));
}

template <int bits> inline Int shift_signed_right(Int a) {
    return {_mm256_srai_epi32(a.lanes, bits)};
}

inline Int shift_left_by(Int a, Int bits) {
    return {_mm256_sllv_epi32(a.lanes, bits.lanes)};
}

inline Int difference_or_reverse(Int a, Int b, Active backwards) {
    return {_mm256_sub_epi32(_mm256_xor_si256(_mm256_sub_epi32(a.lanes, b.lanes), backwards.lanes), backwards.lanes)};
}

inline Int least(Int a, Int b) {
    return {_mm256_min_epi32(a.lanes, b.lanes)};
}

inline Active less(Int a, Int b) {
    return {_mm256_cmpgt_epi32(b.lanes, a.lanes)};
}

inline Active has_any(Int a, Int bits) {
    return less(splat(0), a & bits);
}

inline Active no_lanes() {
    return first_lanes(0);
}

inline std::uint32_t bits_of(Active active) {
    return static_cast<std::uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(active.lanes)));
}

inline Int joined_halves(Int low, Int high) {
    return {_mm256_blend_epi16(low.lanes, high.lanes, 0xAA)};
}

inline Int bytes_beyond(Int a, Int b, std::uint32_t limits) {
    const __m256i distance = _mm256_or_si256(_mm256_subs_epu8(a.lanes, b.lanes), _mm256_subs_epu8(b.lanes, a.lanes));
    return {_mm256_subs_epu8(distance, _mm256_set1_epi32(static_cast<std::int32_t>(limits)))};
}

inline void store_ints(std::int32_t* to, Int a) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), a.lanes);
}

inline Int load_first_ints(const void* from, std::int32_t count) {
    return {_mm256_maskload_epi32(static_cast<const int*>(from), first_lanes(count).lanes)};
}

inline Int load_first(const VT_RGB32* colors, std::int32_t count) {
    return load_first_ints(colors, count);
}

// Words 3 i + axis of the 24: no two of an axis lie in the same lane.
inline void load_first(const VT_DCI_Point* points, std::int32_t count, Int& x, Int& y, Int& z) {
    const auto load = [&](int part) {
        return load_first_ints(reinterpret_cast<const char*>(points) + 32 * part, 3 * count - 8 * part).lanes;
    };
    const __m256i first = load(0);
    const __m256i second = load(1);
    const __m256i third = load(2);
    const auto lanes = [](__m256i mixed, __m256i order) { return Int{_mm256_permutevar8x32_epi32(mixed, order)}; };
    x = lanes(_mm256_blend_epi32(_mm256_blend_epi32(first, second, 0x92), third, 0x24),
              _mm256_setr_epi32(0, 3, 6, 1, 4, 7, 2, 5));
    y = lanes(_mm256_blend_epi32(_mm256_blend_epi32(first, second, 0x24), third, 0x49),
              _mm256_setr_epi32(1, 4, 7, 2, 5, 0, 3, 6));
    z = lanes(_mm256_blend_epi32(_mm256_blend_epi32(first, second, 0x49), third, 0x92),
              _mm256_setr_epi32(2, 5, 0, 3, 6, 1, 4, 7));
}

// ---- quotients

struct Lane_Reciprocals {
    __m256d low, high;
};

inline Int quotient(Int a, const Lane_Reciprocals& by) {
    const __m256d low = _mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_castsi256_si128(a.lanes)), by.low);
    const __m256d high = _mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_extracti128_si256(a.lanes, 1)), by.high);
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(_mm256_cvttpd_epi32(low)), _mm256_cvttpd_epi32(high), 1)};
}

// Divisions: gathers from the table take longer.
inline Lane_Reciprocals row_reciprocals(Int counts) {
    const auto of = [](__m128i four) {
        return _mm256_mul_pd(_mm256_div_pd(_mm256_set1_pd(1), _mm256_cvtepi32_pd(four)), _mm256_set1_pd(above_one));
    };
    return {of(_mm256_castsi256_si128(counts.lanes)), of(_mm256_extracti128_si256(counts.lanes, 1))};
}

inline Lane_Reciprocals column_reciprocals(Int counts) {
    return row_reciprocals(counts);
}

// ---- rows of pixels

inline void Quads::set_colors(const Int (&columns)[4]) {
    const auto store = [&](int row, __m256i rows) {
        _mm_store_si128(reinterpret_cast<__m128i*>(color[row]), _mm256_castsi256_si128(rows));
        _mm_store_si128(reinterpret_cast<__m128i*>(color[row + 4]), _mm256_extracti128_si256(rows, 1));
    };
    const __m256i first_low = _mm256_unpacklo_epi32(columns[0].lanes, columns[1].lanes);
    const __m256i second_low = _mm256_unpacklo_epi32(columns[2].lanes, columns[3].lanes);
    store(0, _mm256_unpacklo_epi64(first_low, second_low));
    store(1, _mm256_unpackhi_epi64(first_low, second_low));
    const __m256i first_high = _mm256_unpackhi_epi32(columns[0].lanes, columns[1].lanes);
    const __m256i second_high = _mm256_unpackhi_epi32(columns[2].lanes, columns[3].lanes);
    store(2, _mm256_unpacklo_epi64(first_high, second_high));
    store(3, _mm256_unpackhi_epi64(first_high, second_high));
}

inline void Quads::set_depths(Int columns_01, Int columns_23) {
    const auto store = [&](int row, __m256i rows) {
        _mm_store_si128(reinterpret_cast<__m128i*>(depth[row]), _mm256_castsi256_si128(rows));
        _mm_store_si128(reinterpret_cast<__m128i*>(depth[row + 4]), _mm256_extracti128_si256(rows, 1));
    };
    store(0, _mm256_unpacklo_epi32(columns_01.lanes, columns_23.lanes));
    store(2, _mm256_unpackhi_epi32(columns_01.lanes, columns_23.lanes));
}

// Numbers of columns.
struct Row_Lanes {
    alignas(32) std::int32_t columns[8];

    explicit Row_Lanes(Int counts) { store_ints(columns, counts); }
};

// Half as wide as the lanes of colours.
struct Part_Lanes {
    __m128i halves;

    Part_Lanes(const Row_Lanes& rows, int row, int skipped)
        : halves(_mm_cmpgt_epi16(
              _mm_set1_epi16(static_cast<std::int16_t>(rows.columns[row])),
              _mm_add_epi16(_mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7), _mm_set1_epi16(static_cast<std::int16_t>(skipped))))) {}
    void limit_to(std::uint32_t mask_bits) {
        const __m128i own_bit = _mm_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128);
        const __m128i all = _mm_set1_epi16(static_cast<std::int16_t>(mask_bits));
        halves = _mm_and_si128(halves, _mm_cmpeq_epi16(_mm_and_si128(all, own_bit), own_bit));
    }
};

inline void store_nearer(std::uint8_t* at, __m128i depths, Part_Lanes& lanes) {
    __m128i* const to = reinterpret_cast<__m128i*>(at);
    const __m128i stored = _mm_loadu_si128(to);
    lanes.halves = _mm_and_si128(lanes.halves, _mm_cmpeq_epi16(_mm_min_epu16(depths, stored), depths));
    _mm_storeu_si128(to, _mm_blendv_epi8(stored, depths, lanes.halves));
}

inline void store_colors(std::uint8_t* at, __m256i colors, Part_Lanes lanes) {
    // What is stored is not loaded first: the pixels beside it have often been stored just before, and a load that overlaps such
    // a store waits until it is in the cache.
    _mm256_maskstore_epi32(reinterpret_cast<int*>(at), _mm256_cvtepi16_epi32(lanes.halves), colors);
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/triangles/edge_tables.inl"
