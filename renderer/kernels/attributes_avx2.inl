// Attributes of vertices, edges and spans as one vector each, for the sets that have AVX2. The names are those of the portable
// set.
#pragma once

#include <cstdint>

#include <immintrin.h>

#include "renderer/kernels/reciprocals.h"

namespace krb::KRB_KERNEL_SET {
namespace {

template <int size> struct Attributes;

template <> struct Attributes<4> { __m128i value; };

template <> struct Attributes<8> { __m256i value; };

inline Attributes<4> attributes_of(std::int32_t x, std::int32_t z) {
    return {_mm_setr_epi32(x, z, 0, 0)};
}

inline Attributes<8> attributes_of(std::int32_t x, std::int32_t z, std::uint32_t color) {
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(_mm_setr_epi32(x, z, 0, 0)),
                                    _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(color))), 1)};
}

inline Attributes<8> textured_attributes_of(std::int32_t x, std::int32_t z, std::int32_t s, std::int32_t t, std::uint32_t color) {
    const __m128i channels = _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(color)));
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(_mm_setr_epi32(x, z, s, t)),
                                    _mm_add_epi32(channels, _mm_slli_epi32(channels, 8)), 1)};
}

inline Attributes<4> operator+(Attributes<4> a, Attributes<4> b) {
    return {_mm_add_epi32(a.value, b.value)};
}

inline Attributes<8> operator+(Attributes<8> a, Attributes<8> b) {
    return {_mm256_add_epi32(a.value, b.value)};
}

inline Attributes<4> operator-(Attributes<4> a, Attributes<4> b) {
    return {_mm_sub_epi32(a.value, b.value)};
}

inline Attributes<8> operator-(Attributes<8> a, Attributes<8> b) {
    return {_mm256_sub_epi32(a.value, b.value)};
}

inline Attributes<4> scaled(Attributes<4> a, std::int32_t factor) {
    return {_mm_mullo_epi32(a.value, _mm_set1_epi32(factor))};
}

inline Attributes<8> scaled(Attributes<8> a, std::int32_t factor) {
    return {_mm256_mullo_epi32(a.value, _mm256_set1_epi32(factor))};
}

inline __m128i fraction_bits_4() {
    return _mm_setr_epi32(16, 15, 16, 16);
}

inline __m256i fraction_bits_8() {
    return _mm256_setr_epi32(16, 15, 16, 16, 16, 16, 16, 16);
}

inline Attributes<4> to_fixed(Attributes<4> a, int drop = 0) {
    return {_mm_sllv_epi32(a.value, _mm_sub_epi32(fraction_bits_4(), _mm_set1_epi32(drop)))};
}

inline Attributes<8> to_fixed(Attributes<8> a, int drop = 0) {
    return {_mm256_sllv_epi32(a.value, _mm256_sub_epi32(fraction_bits_8(), _mm256_set1_epi32(drop)))};
}

inline Attributes<8> shifted_right(Attributes<8> a, int bits) {
    return {_mm256_sra_epi32(a.value, _mm_cvtsi32_si128(bits))};
}

inline Attributes<8> with_positions(Attributes<8> positions, Attributes<8> others) {
    return {_mm256_blend_epi32(others.value, positions.value, 0x03)};
}

template <int size> inline Attributes<size> half_units();

template <> inline Attributes<4> half_units<4>() {
    return {_mm_setr_epi32(0x8000, 0x4000, 0x8000, 0x8000)};
}

template <> inline Attributes<8> half_units<8>() {
    return {_mm256_setr_epi32(0x8000, 0x4000, 0x8000, 0x8000, 0x8000, 0x8000, 0x8000, 0x8000)};
}

inline Attributes<4> integer_parts(Attributes<4> a) {
    return {_mm_and_si128(_mm_srlv_epi32(a.value, fraction_bits_4()), _mm_set1_epi32(0xFFFF))};
}

inline Attributes<8> integer_parts(Attributes<8> a) {
    return {_mm256_and_si256(_mm256_srlv_epi32(a.value, fraction_bits_8()), _mm256_set1_epi32(0xFFFF))};
}

inline Attributes<4> mean_of_edges(Attributes<4> a, Attributes<4> b) {
    const __m128i before = _mm_setr_epi32(0, 1, 0, 0);
    const __m128i sum = _mm_add_epi32(_mm_srav_epi32(a.value, before), _mm_srav_epi32(b.value, before));
    return {_mm_srav_epi32(sum, _mm_setr_epi32(17, 15, 17, 17))};
}

inline Attributes<8> mean_of_edges(Attributes<8> a, Attributes<8> b) {
    const __m256i before = _mm256_setr_epi32(0, 1, 0, 0, 0, 0, 0, 0);
    const __m256i sum = _mm256_add_epi32(_mm256_srav_epi32(a.value, before), _mm256_srav_epi32(b.value, before));
    return {_mm256_srav_epi32(sum, _mm256_setr_epi32(17, 15, 17, 17, 17, 17, 17, 17))};
}

inline Attributes<4> select(bool condition, Attributes<4> yes, Attributes<4> no) {
    return {_mm_blendv_epi8(no.value, yes.value, _mm_set1_epi32(-static_cast<int>(condition)))};
}

inline Attributes<8> select(bool condition, Attributes<8> yes, Attributes<8> no) {
    return {_mm256_blendv_epi8(no.value, yes.value, _mm256_set1_epi32(-static_cast<int>(condition)))};
}

inline std::int32_t x_of(Attributes<4> a) {
    return _mm_cvtsi128_si32(a.value);
}

inline std::int32_t x_of(Attributes<8> a) {
    return _mm_cvtsi128_si32(_mm256_castsi256_si128(a.value));
}

inline bool colors_differ(Attributes<8> a, Attributes<8> b, Attributes<8> c, std::int32_t limit) {
    const __m256i to_b = _mm256_abs_epi32(_mm256_sub_epi32(b.value, a.value));
    const __m256i to_c = _mm256_abs_epi32(_mm256_sub_epi32(c.value, a.value));
    const __m256i beyond = _mm256_cmpgt_epi32(_mm256_max_epi32(to_b, to_c), _mm256_set1_epi32(limit));
    return (_mm256_movemask_ps(_mm256_castsi256_ps(beyond)) & 0x70) != 0;
}

inline bool lies_within(Attributes<8> a, Attributes<8> most) {
    return _mm256_movemask_epi8(_mm256_cmpeq_epi32(_mm256_min_epu32(a.value, most.value), a.value)) == -1;
}

inline Attributes<4> quotient(Attributes<4> a, std::int32_t divisor) {
    return {_mm256_cvttpd_epi32(_mm256_mul_pd(_mm256_cvtepi32_pd(a.value), _mm256_set1_pd(reciprocal(divisor))))};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
