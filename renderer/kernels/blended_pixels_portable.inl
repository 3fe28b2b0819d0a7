// Pixels of smoothed lines in plain C++. The vectors of the other kernel sets define the same names, inside the anonymous
// namespace of their set:
//   Pixels   one, three or four 32-bit pixels
//   Weights  of four pixels, 0 to 256 each
//   Ink      a colour and its own weight, 0 to 256
// Pixels are addressed by bytes; no alignment is required, and nothing is read or written beside them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "renderer/kernels/pixel_words.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

template <int count> struct Pixels { std::uint32_t pixel[std::size_t{count}]; };

struct Weights {
    std::uint16_t of[4];
};

// Blue and red with 32 bits each, so that both can be multiplied by up to 65536.
inline std::uint64_t blue_and_red(std::uint32_t pixel) {
    return std::uint64_t{pixel & 0xFF} | std::uint64_t{pixel & 0xFF0000} << 16;
}

inline std::uint32_t green(std::uint32_t pixel) {
    return pixel >> 8 & 0xFF;
}

struct Ink {
    std::uint32_t color;
    std::uint32_t weight;
};

// Neighbours in a row.
template <int count> inline Pixels<count> load_pixels(const std::uint8_t* from) {
    Pixels<count> pixels;
    for (int i = 0; i < count; ++i) {
        pixels.pixel[i] = load_word(from + 4 * i);
    }
    return pixels;
}

inline Pixels<3> load_pixels(const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c) {
    return {{load_word(a), load_word(b), load_word(c)}};
}

template <int count> inline void store_pixels(std::uint8_t* to, Pixels<count> pixels) {
    for (int i = 0; i < count; ++i) {
        store_word(to + 4 * i, pixels.pixel[i]);
    }
}

inline void store_pixels(std::uint8_t* a, std::uint8_t* b, std::uint8_t* c, Pixels<3> pixels) {
    store_word(a, pixels.pixel[0]);
    store_word(b, pixels.pixel[1]);
    store_word(c, pixels.pixel[2]);
}

inline Weights load_weights(const std::uint16_t* four) {
    Weights weights;
    std::memcpy(weights.of, four, 8);
    return weights;
}

inline Weights same_weights(std::uint16_t weight) {
    return {{weight, weight, weight, weight}};
}

// stored + ((ink - stored) * w >> 16) with the product w of both weights, for each colour byte; the pixel becomes opaque. That is
// (stored * (65536 - w) + ink * w) >> 16, which never leaves its 24 bits.
template <int count> inline Pixels<count> blended(Pixels<count> stored, Weights weights, const Ink& ink) {
    for (int i = 0; i < count; ++i) {
        const std::uint32_t pixel = stored.pixel[i];
        const std::uint32_t w = ink.weight * weights.of[i];
        const std::uint32_t rest = 65536 - w;
        const std::uint64_t outer = blue_and_red(pixel) * rest + blue_and_red(ink.color) * w;
        const std::uint32_t inner = green(pixel) * rest + green(ink.color) * w;
        stored.pixel[i] =
            static_cast<std::uint32_t>((outer >> 16 & 0xFF) | (outer >> 32 & 0xFF0000)) | (inner >> 8 & 0xFF00) | 0xFF000000;
    }
    return stored;
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
