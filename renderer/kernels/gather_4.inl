// Four lanes' entries of a table, for the sets of x86-64. Lane by lane: the instruction that gathers takes 1.6 times as long on some
// processors, and longer still where it is kept from speculation.
#pragma once

#include <cstdint>
#include <cstring>

#include <immintrin.h>

namespace krb::KRB_KERNEL_SET {
namespace {

inline __m128i gather_4(const std::uint8_t* table, __m128i positions) {
    const auto entry = [table](std::uint64_t position) {
        std::int32_t word;
        std::memcpy(&word, table + 4 * position, 4);
        return word;
    };
    const auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(positions));
    const auto high = static_cast<std::uint64_t>(_mm_extract_epi64(positions, 1));
    __m128i words = _mm_cvtsi32_si128(entry(low & 0xFFFFFFFF));
    words = _mm_insert_epi32(words, entry(low >> 32), 1);
    words = _mm_insert_epi32(words, entry(high & 0xFFFFFFFF), 2);
    return _mm_insert_epi32(words, entry(high >> 32), 3);
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
