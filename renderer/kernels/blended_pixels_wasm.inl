// Pixels of smoothed lines for WebAssembly's SIMD. The names are documented in blended_pixels_portable.inl.
#pragma once

#include <cstdint>

#include <wasm_simd128.h>

namespace krb::KRB_KERNEL_SET {
namespace {

template <int count> struct Pixels { v128_t bytes; };

// A 16-bit word for each channel of two pixels, twice.
struct Weights {
    v128_t low, high;
};

struct Ink {
    v128_t channels;
    v128_t weight; // 32 bits each

    Ink(std::uint32_t color, std::uint32_t own_weight)
        : channels(wasm_u16x8_extend_low_u8x16(wasm_u32x4_splat(color))), weight(wasm_u32x4_splat(own_weight)) {}
};

template <int count> inline Pixels<count> load_pixels(const std::uint8_t* from) {
    if constexpr (count == 1) {
        return {wasm_v128_load32_zero(from)};
    } else if constexpr (count == 3) {
        return {wasm_v128_load32_lane(from + 8, wasm_v128_load64_zero(from), 2)};
    } else {
        return {wasm_v128_load(from)};
    }
}

inline Pixels<3> load_pixels(const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c) {
    return {wasm_v128_load32_lane(c, wasm_v128_load32_lane(b, wasm_v128_load32_zero(a), 1), 2)};
}

template <int count> inline void store_pixels(std::uint8_t* to, Pixels<count> pixels) {
    if constexpr (count == 1) {
        wasm_v128_store32_lane(to, pixels.bytes, 0);
    } else if constexpr (count == 3) {
        wasm_v128_store64_lane(to, pixels.bytes, 0);
        wasm_v128_store32_lane(to + 8, pixels.bytes, 2);
    } else {
        wasm_v128_store(to, pixels.bytes);
    }
}

inline void store_pixels(std::uint8_t* a, std::uint8_t* b, std::uint8_t* c, Pixels<3> pixels) {
    wasm_v128_store32_lane(a, pixels.bytes, 0);
    wasm_v128_store32_lane(b, pixels.bytes, 1);
    wasm_v128_store32_lane(c, pixels.bytes, 2);
}

inline Weights load_weights(const std::uint16_t* four) {
    const v128_t words = wasm_v128_load64_zero(four);
    return {wasm_i16x8_shuffle(words, words, 0, 0, 0, 0, 1, 1, 1, 1), wasm_i16x8_shuffle(words, words, 2, 2, 2, 2, 3, 3, 3, 3)};
}

inline Weights same_weights(std::uint16_t weight) {
    const v128_t words = wasm_u16x8_splat(weight);
    return {words, words};
}

// stored + ((ink - stored) * w >> 16), where w is the product of both weights. The difference times one weight no longer fits in
// 16 bits, but times both in 32.
inline v128_t blended_words(v128_t stored, v128_t weights, const Ink& ink) {
    const v128_t difference = wasm_i16x8_sub(ink.channels, stored);
    const v128_t low = wasm_i32x4_mul(wasm_i32x4_extmul_low_i16x8(difference, weights), ink.weight);
    const v128_t high = wasm_i32x4_mul(wasm_i32x4_extmul_high_i16x8(difference, weights), ink.weight);
    return wasm_i16x8_add(stored, wasm_i16x8_shuffle(low, high, 1, 3, 5, 7, 9, 11, 13, 15));
}

template <int count> inline Pixels<count> blended(Pixels<count> stored, Weights weights, const Ink& ink) {
    const v128_t low = blended_words(wasm_u16x8_extend_low_u8x16(stored.bytes), weights.low, ink);
    v128_t high = low;
    if constexpr (count > 2) {
        high = blended_words(wasm_u16x8_extend_high_u8x16(stored.bytes), weights.high, ink);
    }
    return {wasm_v128_or(wasm_u8x16_narrow_i16x8(low, high), wasm_u32x4_const_splat(0xFF000000))};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
