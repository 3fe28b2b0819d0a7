// The vocabulary of lanes for AVX2: eight pixels. The names are documented in lanes_portable.inl.
#pragma once

#include "renderer/kernels/attributes_avx2.inl"
#include "renderer/kernels/gather_4.inl"
#include "renderer/kernels/texel_shape.h"

namespace krb::KRB_KERNEL_SET {
namespace {

inline constexpr int lane_count = 8;
// Depths and indices have no masked loads and stores here: a group always lies inside its row, and lanes that take no part are
// written back as they were.
inline constexpr bool masked_memory = false;

struct Int {
    __m256i lanes;
};

// All bits of a lane set or clear.
struct Active {
    __m256i lanes;
};

struct All {};

inline void clear_upper_halves() {
    _mm256_zeroupper();
}

inline Int splat(std::int32_t value) {
    return {_mm256_set1_epi32(value)};
}

inline Int lane_numbers() {
    return {_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)};
}

inline Int operator+(Int a, Int b) {
    return {_mm256_add_epi32(a.lanes, b.lanes)};
}

inline Int operator-(Int a, Int b) {
    return {_mm256_sub_epi32(a.lanes, b.lanes)};
}

inline Int operator*(Int a, Int b) {
    return {_mm256_mullo_epi32(a.lanes, b.lanes)};
}

inline Int operator&(Int a, Int b) {
    return {_mm256_and_si256(a.lanes, b.lanes)};
}

inline Int operator|(Int a, Int b) {
    return {_mm256_or_si256(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_left(Int a) {
    return {_mm256_slli_epi32(a.lanes, bits)};
}

template <int bits> inline Int shift_right(Int a) {
    return {_mm256_srli_epi32(a.lanes, bits)};
}

inline Int shift_right_by(Int a, int bits) {
    return {_mm256_srl_epi32(a.lanes, _mm_cvtsi32_si128(bits))};
}

inline Int multiply_halves(Int a, Int b) {
    return {_mm256_mullo_epi16(a.lanes, b.lanes)};
}

inline Int multiply_halves_high(Int a, Int b) {
    return {_mm256_mulhi_epu16(a.lanes, b.lanes)};
}

inline Int mixed_bytes(Int a, Int b, Int weights) {
    // Weights side by side: w and 255 - w.
    const __m256i complement = _mm256_set1_epi16(static_cast<short>(0xFF00));
    const auto weights_of = [&](__m256i lanes) {
        return _mm256_xor_si256(_mm256_shuffle_epi8(weights.lanes, lanes), complement);
    };
    // Bytes less 128 are signed ones, and the sum of the products is less by 128 * 255.
    const __m256i half = _mm256_set1_epi8(static_cast<char>(0x80));
    const __m256i from_a = _mm256_xor_si256(a.lanes, half);
    const __m256i from_b = _mm256_xor_si256(b.lanes, half);
    // Of v up to 255 * 255, floor(v / 255) = (v + 1) * 257 >> 16.
    const auto quotients = [&](__m256i pairs, __m256i of_pairs) {
        return _mm256_mulhi_epu16(_mm256_add_epi16(_mm256_maddubs_epi16(of_pairs, pairs), _mm256_set1_epi16(128 * 255 + 1)),
                                  _mm256_set1_epi16(257));
    };
    const __m256i low = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 4, 4, 4, 4, 4, 4, 4, 4));
    const __m256i high = _mm256_broadcastsi128_si256(_mm_setr_epi8(8, 8, 8, 8, 8, 8, 8, 8, 12, 12, 12, 12, 12, 12, 12, 12));
    return {_mm256_packus_epi16(quotients(_mm256_unpacklo_epi8(from_a, from_b), weights_of(low)),
                                quotients(_mm256_unpackhi_epi8(from_a, from_b), weights_of(high)))};
}

inline Int greatest(Int a, Int b) {
    return {_mm256_max_epi32(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_halves_right(Int a) {
    return {_mm256_srli_epi16(a.lanes, bits)};
}

inline Int upper_halves_in_both(Int a) {
    return {_mm256_shuffle_epi8(
        a.lanes, _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15)))};
}

inline Active lanes_between(std::int32_t begin, std::int32_t end) {
    return {_mm256_andnot_si256(_mm256_cmpgt_epi32(_mm256_set1_epi32(begin), lane_numbers().lanes),
                                _mm256_cmpgt_epi32(_mm256_set1_epi32(end), lane_numbers().lanes))};
}

inline Active first_lanes(std::int32_t count) {
    return {_mm256_cmpgt_epi32(_mm256_set1_epi32(count), lane_numbers().lanes)};
}

inline Active lanes_of_bits(std::uint32_t bits) {
    const __m256i own_bit = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
    return {_mm256_cmpeq_epi32(_mm256_and_si256(_mm256_set1_epi32(static_cast<int>(bits)), own_bit), own_bit)};
}

inline Active less_or_equal(Int a, Int b) {
    return {_mm256_cmpeq_epi32(_mm256_min_epi32(a.lanes, b.lanes), a.lanes)};
}

inline Active equal(Int a, Int b) {
    return {_mm256_cmpeq_epi32(a.lanes, b.lanes)};
}

inline Active operator&(Active a, Active b) {
    return {_mm256_and_si256(a.lanes, b.lanes)};
}

inline Active operator&(All, Active b) {
    return b;
}

inline Active without(Active a, Active b) {
    return {_mm256_andnot_si256(b.lanes, a.lanes)};
}

inline bool none(Active a) {
    return _mm256_testz_si256(a.lanes, a.lanes) != 0;
}

inline bool has_lane(Active active, std::int32_t lane) {
    return (_mm256_movemask_ps(_mm256_castsi256_ps(active.lanes)) >> lane & 1) != 0;
}

inline std::uint32_t lane_of(Int a, std::int32_t lane) {
    return static_cast<std::uint32_t>(
        _mm_cvtsi128_si32(_mm256_castsi256_si128(_mm256_permutevar8x32_epi32(a.lanes, _mm256_set1_epi32(lane)))));
}

inline Int select(Active condition, Int yes, Int no) {
    return {_mm256_blendv_epi8(no.lanes, yes.lanes, condition.lanes)};
}

inline Int where(Active condition, Int value) {
    return {_mm256_and_si256(condition.lanes, value.lanes)};
}

inline Int load_ints(const std::int32_t* from) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))};
}

// The low 16 bits of every lane.
inline __m128i packed_depths(Int depths) {
    const __m256i low = _mm256_and_si256(depths.lanes, _mm256_set1_epi32(0xFFFF));
    return _mm_packus_epi32(_mm256_castsi256_si128(low), _mm256_extracti128_si256(low, 1));
}

inline __m128i packed_lanes(Active active) {
    return _mm_packs_epi32(_mm256_castsi256_si128(active.lanes), _mm256_extracti128_si256(active.lanes, 1));
}

inline Int load_depths(const std::uint8_t* from, All) {
    return {_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)))};
}

inline Int load_depths(const std::uint8_t* from, Active) {
    return load_depths(from, All{});
}

inline Int load_indices(const std::uint8_t* from, All) {
    return {_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)))};
}

inline Int load_indices(const std::uint8_t* from, Active) {
    return load_indices(from, All{});
}

inline Int gather(const std::uint8_t* table, Int positions) {
    const __m128i low = gather_4(table, _mm256_castsi256_si128(positions.lanes));
    const __m128i high = gather_4(table, _mm256_extracti128_si256(positions.lanes, 1));
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1)};
}

inline constexpr Texel_Shape texel_shapes[] = {{2, 8}, {4, 8}};

template <int rows, int columns> inline Int block_texels(const std::uint8_t* first, std::int64_t row_bytes, Int s, Int t) {
    static_assert(columns == 8 && (rows == 2 || rows == 4));
    const __m256i column = _mm256_srli_epi32(s.lanes, 16);
    // Blends look at the highest bit of a lane only.
    const __m256i row_bit_0 = _mm256_slli_epi32(t.lanes, 15);
    const auto of_row = [&](int row) {
        return _mm256_castsi256_ps(
            _mm256_permutevar8x32_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(first + row * row_bytes)), column));
    };
    const auto of_two_rows = [&](int row) {
        return _mm256_blendv_ps(of_row(row), of_row(row + 1), _mm256_castsi256_ps(row_bit_0));
    };
    if constexpr (rows == 2) {
        return {_mm256_castps_si256(of_two_rows(0))};
    } else {
        const __m256i row_bit_1 = _mm256_slli_epi32(t.lanes, 14);
        return {_mm256_castps_si256(_mm256_blendv_ps(of_two_rows(0), of_two_rows(2), _mm256_castsi256_ps(row_bit_1)))};
    }
}

inline void store_depths(std::uint8_t* to, Int depths, Active active) {
    __m128i* at = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(at, _mm_blendv_epi8(_mm_loadu_si128(at), packed_depths(depths), packed_lanes(active)));
}

struct Depth_Pair {
    __m256i depths; // 16 bits each
};

// 16 bits each, all set or clear.
struct Active_Pair {
    __m256i lanes;
};

inline Depth_Pair packed_pair(Int first, Int second) {
    return {_mm256_permute4x64_epi64(_mm256_packus_epi32(first.lanes, second.lanes), 0xD8)};
}

inline Depth_Pair load_pair(const std::uint8_t* from, Int) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))};
}

inline void store_pair(std::uint8_t* to, Depth_Pair pair) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), pair.depths);
}

inline Active_Pair less_or_equal(Depth_Pair a, Depth_Pair b) {
    return {_mm256_cmpeq_epi16(_mm256_min_epu16(a.depths, b.depths), a.depths)};
}

inline bool none(Active_Pair a) {
    return _mm256_movemask_epi8(a.lanes) == 0;
}

inline bool all(Active_Pair a) {
    return _mm256_movemask_epi8(a.lanes) == -1;
}

inline Int load_pixels(const std::uint8_t* from, All) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))};
}

inline Int load_pixels(const std::uint8_t* from, Active) {
    return load_pixels(from, All{});
}

inline void store_pixels(std::uint8_t* to, Int pixels, Active active) {
    __m256i* at = reinterpret_cast<__m256i*>(to);
    _mm256_storeu_si256(at, _mm256_blendv_epi8(_mm256_loadu_si256(at), pixels.lanes, active.lanes));
}

inline void store_pixels(std::uint8_t* to, Int pixels, All) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), pixels.lanes);
}

inline void store_first_pixels(std::uint8_t* to, Int pixels, std::int32_t count) {
    _mm256_maskstore_epi32(reinterpret_cast<int*>(to), first_lanes(count).lanes, pixels.lanes);
}

// The low 8 bits of every lane.
inline __m128i packed_indices(Int indices) {
    const __m128i halves = packed_depths(indices);
    return _mm_packus_epi16(_mm_and_si128(halves, _mm_set1_epi16(0xFF)), _mm_setzero_si128());
}

inline void store_indices(std::uint8_t* to, Int indices, Active active) {
    __m128i* at = reinterpret_cast<__m128i*>(to);
    const __m128i lanes = _mm_packs_epi16(packed_lanes(active), _mm_setzero_si128());
    _mm_storel_epi64(at, _mm_blendv_epi8(_mm_loadl_epi64(at), packed_indices(indices), lanes));
}

inline void store_indices(std::uint8_t* to, Int indices, All) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), packed_indices(indices));
}

inline Attributes<8> quotient(Attributes<8> a, std::int32_t divisor) {
    const Attributes<4> low = quotient(Attributes<4>{_mm256_castsi256_si128(a.value)}, divisor);
    const Attributes<4> high = quotient(Attributes<4>{_mm256_extracti128_si256(a.value, 1)}, divisor);
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(low.value), high.value, 1)};
}

template <int lane> inline Int spread(Attributes<4> a) {
    return {_mm256_broadcastd_epi32(_mm_shuffle_epi32(a.value, lane * 0x55))};
}

template <int lane> inline Int spread(Attributes<8> a) {
    return {_mm256_permutevar8x32_epi32(a.value, _mm256_set1_epi32(lane))};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
