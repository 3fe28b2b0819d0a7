// The codes of deflate's Huffman trees, and the tables of its match lengths and distances.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vorna::drawing {

inline constexpr int longest_code = 15;
inline constexpr std::size_t end_of_block = 256, first_length = 257, literal_codes = 286, distance_codes = 30;

// Bits that follow the code of a match's length or distance.
inline constexpr std::array<std::uint8_t, 29> length_extra{0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                                           2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
inline constexpr std::array<std::uint8_t, 30> distance_extra{0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                                             6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};
// The order in which a block states the lengths of the codes of code lengths.
inline constexpr std::array<std::uint8_t, 19> length_order{16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};

// The lengths of codes for symbols that occur so often: 0 for those that do not occur, else 1 to `longest`.
std::vector<std::uint8_t> code_lengths(std::span<const std::uint32_t> counts, int longest);

// The codes with these lengths, with the first bit lowest, as they stand in the stream.
std::vector<std::uint16_t> codes_of(std::span<const std::uint8_t> lengths);

} // namespace vorna::drawing
