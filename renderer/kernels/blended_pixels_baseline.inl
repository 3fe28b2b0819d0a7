// Pixels of smoothed lines for x86-64-v2 (SSE4.2) and everything above. The names are documented in
// blended_pixels_portable.inl.
#pragma once

#include <cstdint>
#include <cstring>

#include <immintrin.h>

namespace krb::KRB_KERNEL_SET {
namespace {

template <int count> struct Pixels { __m128i bytes; };

// A 16-bit word for each channel of two pixels, twice.
struct Weights {
    __m128i low, high;
};

struct Ink {
    __m128i channels;
    __m128i weight;
    __m128i upper_half; // a weight beyond this one gives a product of 32768 or more

    Ink(std::uint32_t color, std::uint32_t own_weight)
        : channels(_mm_cvtepu8_epi16(_mm_set1_epi32(static_cast<int>(color)))),
          weight(_mm_set1_epi16(static_cast<short>(own_weight))),
          upper_half(_mm_set1_epi16(static_cast<short>(own_weight == 0 ? 32767 : 32767 / own_weight))) {}
};

template <int count> inline Pixels<count> load_pixels(const std::uint8_t* from) {
    if constexpr (count == 1) {
        return {_mm_loadu_si32(from)};
    } else if constexpr (count == 3) {
        return {_mm_unpacklo_epi64(_mm_loadu_si64(from), _mm_loadu_si32(from + 8))};
    } else {
        return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
    }
}

inline Pixels<3> load_pixels(const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c) {
    return {_mm_unpacklo_epi64(_mm_unpacklo_epi32(_mm_loadu_si32(a), _mm_loadu_si32(b)), _mm_loadu_si32(c))};
}

template <int lane> inline void store_lane(std::uint8_t* to, __m128i bytes) {
    const int pixel = _mm_extract_epi32(bytes, lane);
    std::memcpy(to, &pixel, 4);
}

template <int count> inline void store_pixels(std::uint8_t* to, Pixels<count> pixels) {
    if constexpr (count == 1) {
        store_lane<0>(to, pixels.bytes);
    } else if constexpr (count == 3) {
        _mm_storeu_si64(to, pixels.bytes);
        store_lane<2>(to + 8, pixels.bytes);
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), pixels.bytes);
    }
}

inline void store_pixels(std::uint8_t* a, std::uint8_t* b, std::uint8_t* c, Pixels<3> pixels) {
    store_lane<0>(a, pixels.bytes);
    store_lane<1>(b, pixels.bytes);
    store_lane<2>(c, pixels.bytes);
}

inline Weights load_weights(const std::uint16_t* four) {
    const __m128i words = _mm_loadu_si64(four);
    const __m128i twice = _mm_unpacklo_epi16(words, words);
    return {_mm_shuffle_epi32(twice, 0x50), _mm_shuffle_epi32(twice, 0xFA)};
}

inline Weights same_weights(std::uint16_t weight) {
    const __m128i words = _mm_set1_epi16(static_cast<short>(weight));
    return {words, words};
}

// stored + ((ink - stored) * w >> 16), where w is the product of both weights. From 32768 on the word holds w - 65536, and the
// difference is added once more.
inline __m128i blended_words(__m128i stored, __m128i weights, const Ink& ink) {
    const __m128i difference = _mm_sub_epi16(ink.channels, stored);
    const __m128i part = _mm_mulhi_epi16(difference, _mm_mullo_epi16(weights, ink.weight));
    const __m128i once_more = _mm_and_si128(difference, _mm_cmpgt_epi16(weights, ink.upper_half));
    return _mm_add_epi16(_mm_add_epi16(stored, part), once_more);
}

template <int count> inline Pixels<count> blended(Pixels<count> stored, Weights weights, const Ink& ink) {
    const __m128i low = blended_words(_mm_cvtepu8_epi16(stored.bytes), weights.low, ink);
    __m128i high = low;
    if constexpr (count > 2) {
        high = blended_words(_mm_unpackhi_epi8(stored.bytes, _mm_setzero_si128()), weights.high, ink);
    }
    return {_mm_or_si128(_mm_packus_epi16(low, high), _mm_set1_epi32(static_cast<int>(0xFF000000)))};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
