// 32-bit pixels as words. In memory a pixel is blue, green, red and alpha on every machine; in its word blue is the low byte.
//
// The same for every vocabulary of lanes, of which a source may include two; anonymous, so that each source has its own copy.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace krb {
namespace {

// Compilers make one instruction of it.
inline std::uint32_t in_memory_order(std::uint32_t word) {
    if constexpr (std::endian::native == std::endian::big) {
        return word >> 24 | (word >> 8 & 0xFF00) | (word << 8 & 0xFF0000) | word << 24;
    }
    return word;
}

// No alignment is required.
inline std::uint32_t load_word(const void* pixel) {
    std::uint32_t word;
    std::memcpy(&word, pixel, sizeof word);
    return in_memory_order(word);
}

inline void store_word(void* pixel, std::uint32_t word) {
    word = in_memory_order(word);
    std::memcpy(pixel, &word, sizeof word);
}

} // namespace
} // namespace krb
