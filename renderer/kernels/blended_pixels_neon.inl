// Pixels of smoothed lines for AArch64. The names are documented in blended_pixels_portable.inl.
#pragma once

#include <cstdint>

#include <arm_neon.h>

#include "renderer/kernels/pixel_words.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

template <int count> struct Pixels { uint8x16_t bytes; };

// A 16-bit word for each channel of two pixels, twice.
struct Weights {
    int16x8_t low, high;
};

struct Ink {
    int16x8_t channels;
    std::int32_t weight;

    Ink(std::uint32_t color, std::uint32_t own_weight)
        : channels(vreinterpretq_s16_u16(vmovl_u8(vreinterpret_u8_u32(vdup_n_u32(color))))),
          weight(static_cast<std::int32_t>(own_weight)) {}
};

template <int count> inline Pixels<count> load_pixels(const std::uint8_t* from) {
    if constexpr (count == 1) {
        return {vreinterpretq_u8_u32(vdupq_n_u32(load_word(from)))};
    } else if constexpr (count == 3) {
        return {vcombine_u8(vld1_u8(from), vcreate_u8(load_word(from + 8)))};
    } else {
        return {vld1q_u8(from)};
    }
}

inline Pixels<3> load_pixels(const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c) {
    const uint32x4_t first = vdupq_n_u32(load_word(a));
    return {vreinterpretq_u8_u32(vsetq_lane_u32(load_word(c), vsetq_lane_u32(load_word(b), first, 1), 2))};
}

template <int lane> inline void store_lane(std::uint8_t* to, uint8x16_t bytes) {
    store_word(to, vgetq_lane_u32(vreinterpretq_u32_u8(bytes), lane));
}

template <int count> inline void store_pixels(std::uint8_t* to, Pixels<count> pixels) {
    if constexpr (count == 1) {
        store_lane<0>(to, pixels.bytes);
    } else if constexpr (count == 3) {
        vst1_u8(to, vget_low_u8(pixels.bytes));
        store_lane<2>(to + 8, pixels.bytes);
    } else {
        vst1q_u8(to, pixels.bytes);
    }
}

inline void store_pixels(std::uint8_t* a, std::uint8_t* b, std::uint8_t* c, Pixels<3> pixels) {
    store_lane<0>(a, pixels.bytes);
    store_lane<1>(b, pixels.bytes);
    store_lane<2>(c, pixels.bytes);
}

inline Weights load_weights(const std::uint16_t* four) {
    const int16x4_t words = vreinterpret_s16_u16(vld1_u16(four));
    return {vcombine_s16(vdup_lane_s16(words, 0), vdup_lane_s16(words, 1)),
            vcombine_s16(vdup_lane_s16(words, 2), vdup_lane_s16(words, 3))};
}

inline Weights same_weights(std::uint16_t weight) {
    const int16x8_t words = vdupq_n_s16(static_cast<std::int16_t>(weight));
    return {words, words};
}

// stored + ((ink - stored) * w >> 16), where w is the product of both weights. The difference times one weight no longer fits in
// 16 bits, but times both in 32.
inline uint8x8_t blended_bytes(uint8x8_t bytes, int16x8_t weights, const Ink& ink) {
    const int16x8_t stored = vreinterpretq_s16_u16(vmovl_u8(bytes));
    const int16x8_t difference = vsubq_s16(ink.channels, stored);
    const int32x4_t low = vmulq_n_s32(vmull_s16(vget_low_s16(difference), vget_low_s16(weights)), ink.weight);
    const int32x4_t high = vmulq_n_s32(vmull_high_s16(difference, weights), ink.weight);
    return vqmovun_s16(vaddq_s16(stored, vshrn_high_n_s32(vshrn_n_s32(low, 16), high, 16)));
}

template <int count> inline Pixels<count> blended(Pixels<count> stored, Weights weights, const Ink& ink) {
    const uint8x8_t low = blended_bytes(vget_low_u8(stored.bytes), weights.low, ink);
    uint8x8_t high = low;
    if constexpr (count > 2) {
        high = blended_bytes(vget_high_u8(stored.bytes), weights.high, ink);
    }
    return {vorrq_u8(vcombine_u8(low, high), vreinterpretq_u8_u32(vdupq_n_u32(0xFF000000)))};
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
