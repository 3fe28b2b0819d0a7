// Images on their way into files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorna::drawing {

// Some rows of an image, one after the other in memory.
struct Sample_Rows {
    std::uint32_t first = 0, end = 0;
    const std::uint8_t* samples = nullptr;
    const std::uint8_t* above = nullptr; // the row above the first; null for the image's first
};

struct Packed_Rows {
    std::string bytes;
    std::uint32_t checksum = 0;
};

// Bytes that replace others of a file.
struct Patch {
    std::uint64_t place = 0;
    std::string bytes;
};

// Makes a file's bytes from its samples. Rows come in blocks of block_rows(), the last one perhaps fewer. Everything throws
// std::runtime_error.
class Image_Encoder {
public:
    Image_Encoder() = default;
    Image_Encoder(const Image_Encoder&) = delete;
    Image_Encoder& operator=(const Image_Encoder&) = delete;
    virtual ~Image_Encoder() = default;

    // Depends on the form only, and not on how many threads pack.
    virtual std::uint32_t block_rows() const = 0;
    // Bytes of memory that it takes besides the rows that are given to it and what it gives.
    virtual std::uint64_t memory() const { return 0; }
    // All before the rows.
    virtual std::string head() { return {}; }
    // The work on a block that needs no other, in any order and in several threads at a time.
    virtual Packed_Rows pack(const Sample_Rows&) const { return {}; }
    // What the file gets for a block. Called from the top down.
    virtual std::string join(const Sample_Rows& rows, Packed_Rows packed) = 0;
    // All after the rows.
    virtual std::string tail() { return {}; }
    // Of what has been given, after the tail.
    virtual std::vector<Patch> patches() { return {}; }
};

} // namespace vorna::drawing
