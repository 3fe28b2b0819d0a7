// The vocabulary of lanes for AVX-512 (F, BW, DQ, VL): sixteen pixels, masked loads and stores. The names are documented in
// lanes_portable.inl.
#pragma once

#include "renderer/kernels/attributes_avx2.inl"
#include "renderer/kernels/gather_4.inl"
#include "renderer/kernels/texel_shape.h"

namespace krb::KRB_KERNEL_SET {
namespace {

inline constexpr int lane_count = 16;
inline constexpr bool masked_memory = true;

struct Int {
    __m512i lanes;
};

struct Active {
    __mmask16 lanes;
};

struct All {};

inline void clear_upper_halves() {
    _mm256_zeroupper();
}

inline Int splat(std::int32_t value) {
    return {_mm512_set1_epi32(value)};
}

inline Int lane_numbers() {
    return {_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)};
}

inline Int operator+(Int a, Int b) {
    return {_mm512_add_epi32(a.lanes, b.lanes)};
}

inline Int operator-(Int a, Int b) {
    return {_mm512_sub_epi32(a.lanes, b.lanes)};
}

inline Int operator*(Int a, Int b) {
    return {_mm512_mullo_epi32(a.lanes, b.lanes)};
}

inline Int operator&(Int a, Int b) {
    return {_mm512_and_si512(a.lanes, b.lanes)};
}

inline Int operator|(Int a, Int b) {
    return {_mm512_or_si512(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_left(Int a) {
    return {_mm512_slli_epi32(a.lanes, bits)};
}

template <int bits> inline Int shift_right(Int a) {
    return {_mm512_srli_epi32(a.lanes, bits)};
}

inline Int shift_right_by(Int a, int bits) {
    return {_mm512_srl_epi32(a.lanes, _mm_cvtsi32_si128(bits))};
}

inline Int multiply_halves(Int a, Int b) {
    return {_mm512_mullo_epi16(a.lanes, b.lanes)};
}

inline Int multiply_halves_high(Int a, Int b) {
    return {_mm512_mulhi_epu16(a.lanes, b.lanes)};
}

inline Int mixed_bytes(Int a, Int b, Int weights) {
    // Weights side by side: w and 255 - w.
    const __m512i complement = _mm512_set1_epi16(static_cast<short>(0xFF00));
    const auto weights_of = [&](__m512i lanes) {
        return _mm512_xor_si512(_mm512_shuffle_epi8(weights.lanes, lanes), complement);
    };
    // Bytes less 128 are signed ones, and the sum of the products is less by 128 * 255.
    const __m512i half = _mm512_set1_epi8(static_cast<char>(0x80));
    const __m512i from_a = _mm512_xor_si512(a.lanes, half);
    const __m512i from_b = _mm512_xor_si512(b.lanes, half);
    // Of v up to 255 * 255, floor(v / 255) = (v + 1) * 257 >> 16.
    const auto quotients = [&](__m512i pairs, __m512i of_pairs) {
        return _mm512_mulhi_epu16(_mm512_add_epi16(_mm512_maddubs_epi16(of_pairs, pairs), _mm512_set1_epi16(128 * 255 + 1)),
                                  _mm512_set1_epi16(257));
    };
    const __m512i low = _mm512_broadcast_i32x4(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 4, 4, 4, 4, 4, 4, 4, 4));
    const __m512i high = _mm512_broadcast_i32x4(_mm_setr_epi8(8, 8, 8, 8, 8, 8, 8, 8, 12, 12, 12, 12, 12, 12, 12, 12));
    return {_mm512_packus_epi16(quotients(_mm512_unpacklo_epi8(from_a, from_b), weights_of(low)),
                                quotients(_mm512_unpackhi_epi8(from_a, from_b), weights_of(high)))};
}

inline Int greatest(Int a, Int b) {
    return {_mm512_max_epi32(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_halves_right(Int a) {
    return {_mm512_srli_epi16(a.lanes, bits)};
}

inline Int upper_halves_in_both(Int a) {
    return {_mm512_shuffle_epi8(a.lanes,
                                _mm512_broadcast_i32x4(_mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15)))};
}

inline Active first_lanes(std::int32_t count) {
    return {static_cast<__mmask16>(count >= 16 ? 0xFFFFU : (1U << count) - 1)};
}

inline Active lanes_between(std::int32_t begin, std::int32_t end) {
    return {static_cast<__mmask16>(first_lanes(end).lanes & ~first_lanes(begin).lanes)};
}

inline Active lanes_of_bits(std::uint32_t bits) {
    return {static_cast<__mmask16>(bits)};
}

inline Active less_or_equal(Int a, Int b) {
    return {_mm512_cmple_epi32_mask(a.lanes, b.lanes)};
}

inline Active equal(Int a, Int b) {
    return {_mm512_cmpeq_epi32_mask(a.lanes, b.lanes)};
}

inline Active operator&(Active a, Active b) {
    return {static_cast<__mmask16>(a.lanes & b.lanes)};
}

inline Active operator&(All, Active b) {
    return b;
}

inline Active without(Active a, Active b) {
    return {static_cast<__mmask16>(a.lanes & ~b.lanes)};
}

inline bool none(Active a) {
    return a.lanes == 0;
}

inline bool has_lane(Active active, std::int32_t lane) {
    return (active.lanes >> lane & 1) != 0;
}

inline std::uint32_t lane_of(Int a, std::int32_t lane) {
    return static_cast<std::uint32_t>(
        _mm_cvtsi128_si32(_mm512_castsi512_si128(_mm512_permutexvar_epi32(_mm512_set1_epi32(lane), a.lanes))));
}

inline Int select(Active condition, Int yes, Int no) {
    return {_mm512_mask_blend_epi32(condition.lanes, no.lanes, yes.lanes)};
}

inline Int where(Active condition, Int value) {
    return {_mm512_maskz_mov_epi32(condition.lanes, value.lanes)};
}

inline Int load_ints(const std::int32_t* from) {
    return {_mm512_loadu_si512(from)};
}

inline Int load_depths(const std::uint8_t* from, Active active) {
    return {_mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(active.lanes, from))};
}

inline Int load_depths(const std::uint8_t* from, All) {
    return {_mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)))};
}

inline Int load_indices(const std::uint8_t* from, Active active) {
    return {_mm512_cvtepu8_epi32(_mm_maskz_loadu_epi8(active.lanes, from))};
}

inline Int load_indices(const std::uint8_t* from, All) {
    return {_mm512_cvtepu8_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)))};
}

inline Int gather(const std::uint8_t* table, Int positions) {
    const __m128i first = gather_4(table, _mm512_castsi512_si128(positions.lanes));
    const __m128i second = gather_4(table, _mm512_extracti32x4_epi32(positions.lanes, 1));
    const __m128i third = gather_4(table, _mm512_extracti32x4_epi32(positions.lanes, 2));
    const __m128i fourth = gather_4(table, _mm512_extracti32x4_epi32(positions.lanes, 3));
    const __m256i low = _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
    const __m256i high = _mm256_inserti128_si256(_mm256_castsi128_si256(third), fourth, 1);
    return {_mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1)};
}

inline constexpr Texel_Shape texel_shapes[] = {{2, 16}, {4, 8}, {8, 8}};

template <int rows, int columns> inline Int block_texels(const std::uint8_t* first, std::int64_t row_bytes, Int s, Int t) {
    const __m512i column = _mm512_srli_epi32(s.lanes, 16);
    if constexpr (columns == 16) {
        static_assert(rows == 2);
        const __m512i position =
            _mm512_or_si512(column, _mm512_and_si512(_mm512_srli_epi32(t.lanes, 12), _mm512_set1_epi32(0x10)));
        return {_mm512_permutex2var_epi32(_mm512_loadu_si512(first), position, _mm512_loadu_si512(first + row_bytes))};
    } else {
        static_assert(columns == 8 && (rows == 4 || rows == 8));
        const __m512i position =
            _mm512_or_si512(column, _mm512_and_si512(_mm512_srli_epi32(t.lanes, 13), _mm512_set1_epi32(0x38)));
        const auto two_rows = [&](int row) {
            const auto of_row = [&](int i) {
                return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(first + i * row_bytes));
            };
            return _mm512_inserti64x4(_mm512_castsi256_si512(of_row(row)), of_row(row + 1), 1);
        };
        const auto of_four_rows = [&](int row) { return _mm512_permutex2var_epi32(two_rows(row), position, two_rows(row + 2)); };
        if constexpr (rows == 4) {
            return {of_four_rows(0)};
        } else {
            return {_mm512_mask_blend_epi32(_mm512_test_epi32_mask(position, _mm512_set1_epi32(0x20)), of_four_rows(0),
                                            of_four_rows(4))};
        }
    }
}

inline void store_depths(std::uint8_t* to, Int depths, Active active) {
    _mm256_mask_storeu_epi16(to, active.lanes, _mm512_cvtepi32_epi16(depths.lanes));
}

inline Int load_pixels(const std::uint8_t* from, Active active) {
    return {_mm512_maskz_loadu_epi32(active.lanes, from)};
}

inline Int load_pixels(const std::uint8_t* from, All) {
    return {_mm512_loadu_si512(from)};
}

inline void store_pixels(std::uint8_t* to, Int pixels, Active active) {
    _mm512_mask_storeu_epi32(to, active.lanes, pixels.lanes);
}

inline void store_pixels(std::uint8_t* to, Int pixels, All) {
    _mm512_storeu_si512(to, pixels.lanes);
}

inline void store_first_pixels(std::uint8_t* to, Int pixels, std::int32_t count) {
    store_pixels(to, pixels, first_lanes(count));
}

inline void store_indices(std::uint8_t* to, Int indices, Active active) {
    _mm_mask_storeu_epi8(to, active.lanes, _mm512_cvtepi32_epi8(indices.lanes));
}

inline void store_indices(std::uint8_t* to, Int indices, All) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm512_cvtepi32_epi8(indices.lanes));
}

// All eight quotients at once.
inline Attributes<8> quotient(Attributes<8> a, std::int32_t divisor) {
    return {_mm512_cvttpd_epi32(_mm512_mul_pd(_mm512_cvtepi32_pd(a.value), _mm512_set1_pd(reciprocal(divisor))))};
}

template <int lane> inline Int spread(Attributes<4> a) {
    return {_mm512_broadcastd_epi32(_mm_shuffle_epi32(a.value, lane * 0x55))};
}

template <int lane> inline Int spread(Attributes<8> a) {
    return {_mm512_permutexvar_epi32(_mm512_set1_epi32(lane), _mm512_castsi256_si512(a.value))};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
