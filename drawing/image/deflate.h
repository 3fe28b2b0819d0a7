// Deflate streams that are made of pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "drawing/image/compression.h"

namespace vorna::drawing {

// Raw deflate data of a piece, without references to other pieces: pieces one after the other are one stream. All but the last
// end on a byte and without the stream's end. step: bytes from a sample to the same sample of the next pixel, 1 to 4. The bytes
// depend on the arguments and on the library only, not on the processor. prefers_runs: whether repetitions are mostly runs; then
// a search is left out where runs alone compress well. Throws std::runtime_error when the library fails.
std::string deflate_piece(std::span<const std::uint8_t> bytes, Compression compression, std::size_t step, bool last,
                          bool prefers_runs = false);

// The checksums of zlib streams and of PNG chunks.
std::uint32_t adler32_of(std::span<const std::uint8_t> bytes);
std::uint32_t crc32_of(std::span<const std::uint8_t> bytes);

// Parts of deflate_piece, for tests.

// Literals and repetitions of the pixel before, with Huffman codes of the piece's own. Empty when that takes more than `most`
// bytes.
std::string deflate_runs(std::span<const std::uint8_t> bytes, std::size_t step, bool last, std::size_t most = SIZE_MAX);

// Where raw deflate data ends, in bits.
struct Deflate_End {
    std::size_t last_block = 0; // where the last block begins
    std::size_t end = 0;
};
// Reads the codes and makes no bytes of them. Throws std::runtime_error for what is no complete stream.
Deflate_End deflate_end(std::span<const std::uint8_t> stream);

// Takes the end of the stream away from a stream and fills its last byte up.
void open_stream(std::string& stream);

} // namespace vorna::drawing
