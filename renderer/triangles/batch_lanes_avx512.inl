// Batches of small triangles with AVX-512: 16 lanes, those of the set. The names are documented in triangle_batches.inl. Included
// after kernels/pixel_formats.inl.
#pragma once

#include "renderer/kernels/reciprocals.h"

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

inline constexpr std::int32_t least_run = 3;
inline constexpr std::int32_t rows_ahead = lane_count;

// ---- lanes

inline Int lanes_at(Int table, Int positions) {
    return {_mm512_permutexvar_epi32(positions.lanes, table.lanes)};
}

inline Int lanes_at(Int first, Int second, Int positions) {
    return {_mm512_permutex2var_epi32(first.lanes, positions.lanes, second.lanes)};
}

inline Int one_of_8(const std::int32_t (&table)[8], Int positions) {
    const __m256i entries = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(table));
    return lanes_at(Int{_mm512_broadcast_i64x4(entries)}, positions);
}

template <int count> inline Int rotated(Int a) {
    return {_mm512_alignr_epi32(a.lanes, a.lanes, count)};
}

template <int bits> inline Int shift_signed_right(Int a) {
    return {_mm512_srai_epi32(a.lanes, bits)};
}

inline Int shift_left_by(Int a, Int bits) {
    return {_mm512_sllv_epi32(a.lanes, bits.lanes)};
}

inline Int difference_or_reverse(Int a, Int b, Active backwards) {
    return {_mm512_mask_sub_epi32(_mm512_sub_epi32(a.lanes, b.lanes), backwards.lanes, b.lanes, a.lanes)};
}

inline Int least(Int a, Int b) {
    return {_mm512_min_epi32(a.lanes, b.lanes)};
}

inline Active less(Int a, Int b) {
    return {_mm512_cmplt_epi32_mask(a.lanes, b.lanes)};
}

inline Active has_any(Int a, Int bits) {
    return {_mm512_test_epi32_mask(a.lanes, bits.lanes)};
}

inline Active no_lanes() {
    return first_lanes(0);
}

inline std::uint32_t bits_of(Active active) {
    return active.lanes;
}

inline Int joined_halves(Int low, Int high) {
    return {_mm512_ternarylogic_epi32(_mm512_set1_epi32(0xFFFF), low.lanes, high.lanes, 0xCA)};
}

inline Int bytes_beyond(Int a, Int b, std::uint32_t limits) {
    const __m512i distance = _mm512_or_si512(_mm512_subs_epu8(a.lanes, b.lanes), _mm512_subs_epu8(b.lanes, a.lanes));
    return {_mm512_subs_epu8(distance, _mm512_set1_epi32(static_cast<std::int32_t>(limits)))};
}

inline void store_ints(std::int32_t* to, Int a) {
    _mm512_storeu_si512(to, a.lanes);
}

inline Int load_first(const VT_RGB32* colors, std::int32_t count) {
    return load_pixels(reinterpret_cast<const std::uint8_t*>(colors), first_lanes(count));
}

// Words 3 i + axis of the 48.
inline void load_first(const VT_DCI_Point* points, std::int32_t count, Int& x, Int& y, Int& z) {
    const std::uint64_t wanted = (std::uint64_t{1} << (3 * count)) - 1;
    const auto load = [&](int part) {
        return Int{_mm512_maskz_loadu_epi32(static_cast<__mmask16>(wanted >> 16 * part),
                                            reinterpret_cast<const char*>(points) + 64 * part)};
    };
    const Int parts[3] = {load(0), load(1), load(2)};
    const auto every_third = [&](Int in_first_two, Int in_all) {
        return lanes_at(lanes_at(parts[0], parts[1], in_first_two), parts[2], in_all);
    };
    const Int thirds = lane_numbers() * splat(3);
    x = every_third(thirds, {_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 17, 20, 23, 26, 29)});
    y = every_third(thirds + splat(1), {_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 18, 21, 24, 27, 30)});
    z = every_third(thirds + splat(2), {_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 19, 22, 25, 28, 31)});
}

// ---- quotients

struct Lane_Reciprocals {
    __m512d low, high;
};

inline Int quotient(Int a, const Lane_Reciprocals& by) {
    const __m512d low = _mm512_mul_pd(_mm512_cvtepi32_pd(_mm512_castsi512_si256(a.lanes)), by.low);
    const __m512d high = _mm512_mul_pd(_mm512_cvtepi32_pd(_mm512_extracti64x4_epi64(a.lanes, 1)), by.high);
    return {_mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvttpd_epi32(low)), _mm512_cvttpd_epi32(high), 1)};
}

inline Lane_Reciprocals column_reciprocals(Int counts) {
    const __m512d first = _mm512_setr_pd(reciprocals.of[16], reciprocals.of[1], reciprocals.of[2], reciprocals.of[3],
                                         reciprocals.of[4], reciprocals.of[5], reciprocals.of[6], reciprocals.of[7]);
    const __m512d second = _mm512_setr_pd(reciprocals.of[8], reciprocals.of[9], reciprocals.of[10], reciprocals.of[11],
                                          reciprocals.of[12], reciprocals.of[13], reciprocals.of[14], reciprocals.of[15]);
    const __m512i low = _mm512_cvtepu32_epi64(_mm512_castsi512_si256(counts.lanes));
    const __m512i high = _mm512_cvtepu32_epi64(_mm512_extracti64x4_epi64(counts.lanes, 1));
    return {_mm512_permutex2var_pd(first, low, second), _mm512_permutex2var_pd(first, high, second)};
}

inline Lane_Reciprocals row_reciprocals(Int counts) {
    const Int positions = counts & splat(Reciprocals::count - 1);
    return {_mm512_i32gather_pd(_mm512_castsi512_si256(positions.lanes), reciprocals.of, 8),
            _mm512_i32gather_pd(_mm512_extracti64x4_epi64(positions.lanes, 1), reciprocals.of, 8)};
}

// ---- rows of pixels

struct Quads {
    alignas(64) std::uint32_t color[16][4];
    alignas(64) std::uint16_t depth[16][4];

    void set_colors(const Int (&columns)[4]) {
        const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        const __m512i low_pairs = _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11);
        const __m512i high_pairs = _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15);
        const auto interleaved = [&](__m512i by, __m512i first, __m512i second) {
            return _mm512_permutex2var_epi32(first, by, second);
        };
        const auto store = [&](int row, __m512i by, __m512i first, __m512i second) {
            _mm512_store_si512(color[row], _mm512_permutex2var_epi64(first, by, second));
        };
        const __m512i first_low = interleaved(low, columns[0].lanes, columns[1].lanes);
        const __m512i second_low = interleaved(low, columns[2].lanes, columns[3].lanes);
        store(0, low_pairs, first_low, second_low);
        store(4, high_pairs, first_low, second_low);
        const __m512i first_high = interleaved(high, columns[0].lanes, columns[1].lanes);
        const __m512i second_high = interleaved(high, columns[2].lanes, columns[3].lanes);
        store(8, low_pairs, first_high, second_high);
        store(12, high_pairs, first_high, second_high);
    }

    void set_depths(Int columns_01, Int columns_23) {
        const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        _mm512_store_si512(depth[0], _mm512_permutex2var_epi32(columns_01.lanes, low, columns_23.lanes));
        _mm512_store_si512(depth[8], _mm512_permutex2var_epi32(columns_01.lanes, high, columns_23.lanes));
    }
};

// One bit a column.
struct Row_Lanes {
    alignas(32) std::uint16_t bits[16];

    explicit Row_Lanes(Int columns) {
        const Int past = shift_left_by(splat(1), where(less_or_equal(splat(1), columns), columns));
        _mm256_store_si256(reinterpret_cast<__m256i*>(bits), _mm512_cvtepi32_epi16((past - splat(1)).lanes));
    }
};

struct Part_Lanes {
    __mmask8 bits;

    Part_Lanes(const Row_Lanes& rows, int row, int skipped) : bits(static_cast<__mmask8>(rows.bits[row] >> skipped)) {}
    void limit_to(std::uint32_t mask_bits) { bits = static_cast<__mmask8>(bits & mask_bits); }
};

template <int> inline __m256i same_colors(std::int32_t pixel) {
    return _mm256_set1_epi32(pixel);
}

template <int count> inline __m256i colors_of(const Quads* quads, int row) {
    const __m256i first = _mm256_zextsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(quads[0].color[row])));
    if constexpr (count == 1) {
        return first;
    } else {
        return _mm256_inserti128_si256(first, _mm_load_si128(reinterpret_cast<const __m128i*>(quads[1].color[row])), 1);
    }
}

template <int count> inline __m128i depths_of(const Quads* quads, int row) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(quads[0].depth[row]));
    if constexpr (count == 1) {
        return first;
    } else {
        return _mm_unpacklo_epi64(first, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(quads[1].depth[row])));
    }
}

inline void store_nearer(std::uint8_t* at, __m128i depths, Part_Lanes& lanes) {
    lanes.bits = _mm_mask_cmple_epu16_mask(lanes.bits, depths, _mm_maskz_loadu_epi16(lanes.bits, at));
    _mm_mask_storeu_epi16(at, lanes.bits, depths);
}

inline void store_colors(std::uint8_t* at, __m256i colors, Part_Lanes lanes) {
    // The lower half of a longer vector would be stored by an instruction that faults on pixels it does not write (GCC 12).
    KRB_HIDE_ORIGIN(colors);
    _mm256_mask_storeu_epi32(at, lanes.bits, colors);
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/triangles/edge_tables.inl"
