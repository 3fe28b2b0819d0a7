// The vocabulary of lanes for x86-64-v2 (SSE4.2): four pixels. The names are documented in lanes_portable.inl.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <immintrin.h>

#include "renderer/kernels/gather_4.inl"
#include "renderer/kernels/reciprocals.h"

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

inline Int multiply_halves(Int a, Int b) {
    return {_mm_mullo_epi16(a.lanes, b.lanes)};
}

inline Int multiply_halves_high(Int a, Int b) {
    return {_mm_mulhi_epu16(a.lanes, b.lanes)};
}

inline Int greatest(Int a, Int b) {
    return {_mm_max_epi32(a.lanes, b.lanes)};
}

template <int bits> inline Int shift_halves_right(Int a) {
    return {_mm_srli_epi16(a.lanes, bits)};
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

inline void store_depths(std::uint8_t* to, Int depths, Active active) {
    __m128i* at = reinterpret_cast<__m128i*>(to);
    _mm_storel_epi64(at, _mm_blendv_epi8(_mm_loadl_epi64(at), packed_depths(depths), packed_lanes(active)));
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

template <int size> struct Attributes;

template <> struct Attributes<4> { __m128i low; };

template <> struct Attributes<8> {
    __m128i low;  // x, z
    __m128i high; // blue, green, red, alpha
};

inline Attributes<4> attributes_of(std::int32_t x, std::int32_t z) {
    return {_mm_setr_epi32(x, z, 0, 0)};
}

inline Attributes<8> attributes_of(std::int32_t x, std::int32_t z, std::uint32_t color) {
    return {_mm_setr_epi32(x, z, 0, 0), _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(color)))};
}

inline Attributes<8> textured_attributes_of(std::int32_t x, std::int32_t z, std::int32_t s, std::int32_t t, std::uint32_t color) {
    const __m128i channels = _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(color)));
    return {_mm_setr_epi32(x, z, s, t), _mm_add_epi32(channels, _mm_slli_epi32(channels, 8))};
}

// Most operations treat the eight attributes as two vectors of four; positions says which of the two holds the depth.
enum class Positions_Of { low, high };

template <class Operation> inline Attributes<4> in_parts(Operation operation, Attributes<4> a, Attributes<4> b) {
    return {operation(a.low, b.low, Positions_Of::low)};
}

template <class Operation> inline Attributes<8> in_parts(Operation operation, Attributes<8> a, Attributes<8> b) {
    return {operation(a.low, b.low, Positions_Of::low), operation(a.high, b.high, Positions_Of::high)};
}

template <int size> inline Attributes<size> operator+(Attributes<size> a, Attributes<size> b) {
    return in_parts([](__m128i x, __m128i y, Positions_Of) { return _mm_add_epi32(x, y); }, a, b);
}

template <int size> inline Attributes<size> operator-(Attributes<size> a, Attributes<size> b) {
    return in_parts([](__m128i x, __m128i y, Positions_Of) { return _mm_sub_epi32(x, y); }, a, b);
}

template <int size> inline Attributes<size> scaled(Attributes<size> a, std::int32_t factor) {
    return in_parts([factor](__m128i x, __m128i, Positions_Of) { return _mm_mullo_epi32(x, _mm_set1_epi32(factor)); }, a, a);
}

// The depth's lane of one vector, every other lane of the other.
inline __m128i with_depth(__m128i others, __m128i depth, Positions_Of part) {
    return part == Positions_Of::low ? _mm_blend_epi16(others, depth, 0x0C) : others;
}

template <int size> inline Attributes<size> to_fixed(Attributes<size> a, int drop = 0) {
    const __m128i by_16 = _mm_cvtsi32_si128(16 - drop);
    const __m128i by_15 = _mm_cvtsi32_si128(15 - drop);
    return in_parts(
        [by_16, by_15](__m128i x, __m128i, Positions_Of part) {
            return with_depth(_mm_sll_epi32(x, by_16), _mm_sll_epi32(x, by_15), part);
        },
        a, a);
}

inline Attributes<8> shifted_right(Attributes<8> a, int bits) {
    const __m128i by = _mm_cvtsi32_si128(bits);
    return {_mm_sra_epi32(a.low, by), _mm_sra_epi32(a.high, by)};
}

inline Attributes<8> with_positions(Attributes<8> positions, Attributes<8> others) {
    return {_mm_blend_epi16(others.low, positions.low, 0x0F), others.high};
}

template <int size> inline Attributes<size> half_units() {
    return in_parts(
        [](__m128i, __m128i, Positions_Of part) { return with_depth(_mm_set1_epi32(0x8000), _mm_set1_epi32(0x4000), part); },
        Attributes<size>{}, Attributes<size>{});
}

template <int size> inline Attributes<size> integer_parts(Attributes<size> a) {
    return in_parts(
        [](__m128i x, __m128i, Positions_Of part) {
            return _mm_and_si128(with_depth(_mm_srli_epi32(x, 16), _mm_srli_epi32(x, 15), part), _mm_set1_epi32(0xFFFF));
        },
        a, a);
}

template <int size> inline Attributes<size> mean_of_edges(Attributes<size> a, Attributes<size> b) {
    return in_parts(
        [](__m128i x, __m128i y, Positions_Of part) {
            const __m128i halved_first = _mm_add_epi32(_mm_srai_epi32(x, 1), _mm_srai_epi32(y, 1));
            return with_depth(_mm_srai_epi32(_mm_add_epi32(x, y), 17), _mm_srai_epi32(halved_first, 15), part);
        },
        a, b);
}

template <int size> inline Attributes<size> quotient(Attributes<size> a, std::int32_t divisor) {
    const __m128d by = _mm_set1_pd(reciprocal(divisor));
    return in_parts(
        [by](__m128i x, __m128i, Positions_Of) {
            const __m128i first = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(x), by));
            const __m128i second = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(_mm_srli_si128(x, 8)), by));
            return _mm_unpacklo_epi64(first, second);
        },
        a, a);
}

template <int size> inline Attributes<size> select(bool condition, Attributes<size> yes, Attributes<size> no) {
    const __m128i lanes = _mm_set1_epi32(-static_cast<int>(condition));
    return in_parts([lanes](__m128i x, __m128i y, Positions_Of) { return _mm_blendv_epi8(y, x, lanes); }, yes, no);
}

template <int size> inline std::int32_t x_of(Attributes<size> a) {
    return _mm_cvtsi128_si32(a.low);
}

template <int lane, int size> inline Int spread(Attributes<size> a) {
    if constexpr (lane < 4) {
        return {_mm_shuffle_epi32(a.low, lane * 0x55)};
    } else {
        return {_mm_shuffle_epi32(a.high, (lane - 4) * 0x55)};
    }
}

inline bool colors_differ(Attributes<8> a, Attributes<8> b, Attributes<8> c, std::int32_t limit) {
    const __m128i to_b = _mm_abs_epi32(_mm_sub_epi32(b.high, a.high));
    const __m128i to_c = _mm_abs_epi32(_mm_sub_epi32(c.high, a.high));
    const __m128i beyond = _mm_cmpgt_epi32(_mm_max_epi32(to_b, to_c), _mm_set1_epi32(limit));
    return (_mm_movemask_ps(_mm_castsi128_ps(beyond)) & 7) != 0;
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
