// Pixels of smoothed lines in plain C++. The vectors of the other kernel sets define the same names, inside the anonymous
// namespace of their set:
//   Pixels   up to four 32-bit pixels
//   Weights  of four pixels, 0 to 256 each
//   Ink      a colour and its own weight, 0 to 256
// Pixels are addressed by bytes; no alignment is asked for, and nothing is read or written beside them.
#pragma once

#include <cstdint>
#include <cstring>

namespace krb::KRB_KERNEL_SET {
namespace {

struct Pixels {
    std::uint32_t pixel[4];
};

struct Weights {
    std::uint16_t of[4];
};

// Three colour bytes with 24 bits for each, so that each can be multiplied by up to 65536.
inline std::uint64_t spread_out(std::uint32_t pixel) {
    return std::uint64_t{pixel & 0xFF} | std::uint64_t{pixel & 0xFF00} << 16 | std::uint64_t{pixel & 0xFF0000} << 32;
}

struct Ink {
    std::uint64_t channels;
    std::uint32_t weight;

    Ink(std::uint32_t color, std::uint32_t own_weight) : channels(spread_out(color)), weight(own_weight) {}
};

inline Pixels load_one(const std::uint8_t* from) {
    Pixels pixels{};
    std::memcpy(pixels.pixel, from, 4);
    return pixels;
}

inline Pixels load_three(const std::uint8_t* from) {
    Pixels pixels{};
    std::memcpy(pixels.pixel, from, 12);
    return pixels;
}

inline Pixels load_three(const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c) {
    Pixels pixels{};
    std::memcpy(&pixels.pixel[0], a, 4);
    std::memcpy(&pixels.pixel[1], b, 4);
    std::memcpy(&pixels.pixel[2], c, 4);
    return pixels;
}

inline Pixels load_four(const std::uint8_t* from) {
    Pixels pixels;
    std::memcpy(pixels.pixel, from, 16);
    return pixels;
}

inline void store_one(std::uint8_t* to, Pixels pixels) {
    std::memcpy(to, pixels.pixel, 4);
}

inline void store_three(std::uint8_t* to, Pixels pixels) {
    std::memcpy(to, pixels.pixel, 12);
}

inline void store_three(std::uint8_t* a, std::uint8_t* b, std::uint8_t* c, Pixels pixels) {
    std::memcpy(a, &pixels.pixel[0], 4);
    std::memcpy(b, &pixels.pixel[1], 4);
    std::memcpy(c, &pixels.pixel[2], 4);
}

inline void store_four(std::uint8_t* to, Pixels pixels) {
    std::memcpy(to, pixels.pixel, 16);
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
inline Pixels blended(Pixels stored, Weights weights, const Ink& ink) {
    for (int i = 0; i < 4; ++i) {
        const std::uint64_t w = ink.weight * weights.of[i];
        const std::uint64_t sum = spread_out(stored.pixel[i]) * (65536 - w) + ink.channels * w;
        stored.pixel[i] =
            static_cast<std::uint32_t>((sum >> 16 & 0xFF) | (sum >> 32 & 0xFF00) | (sum >> 48 & 0xFF0000)) | 0xFF000000;
    }
    return stored;
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
