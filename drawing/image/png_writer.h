// PNG files, written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vorna::drawing {

struct Png_Form {
    enum class Colors : std::uint8_t { grey = 0, palette = 3, red_green_blue_alpha = 6 };

    std::uint32_t width = 0, height = 0; // 1 or more
    std::uint8_t sample_bits = 8;        // 8, or 16 with the high byte first
    Colors colors = Colors::red_green_blue_alpha;
    bool linear = false;      // samples are amounts and no sRGB levels
    std::string palette = {}; // red, green, blue; for Colors::palette only
    std::string place = {};   // content of the chunk that says which part of a picture this is; empty = no part

    std::size_t pixel_bytes() const noexcept { return (colors == Colors::red_green_blue_alpha ? 4U : 1U) * sample_bits / 8U; }
    std::size_t row_bytes() const noexcept { return width * pixel_bytes(); }
};

// The type of the chunk with the place.
inline constexpr char png_place_type[] = "vtIL";

// Rows are packed in blocks of so many, the last one perhaps fewer. It depends on the row's length only, and so do a file's
// bytes: not on how many threads pack.
std::uint32_t png_block_rows(const Png_Form& form);

// All before the rows.
std::string png_head(const Png_Form& form);
// All after them.
std::string png_tail();

// Some rows of a picture on their way into a file: filled with samples, filtered, packed. Blocks of one picture are filtered
// and packed in any order and at the same time; only the filtered bytes of the block before must be there when one is packed.
class Png_Block {
public:
    Png_Block(const Png_Form& form, std::uint32_t first_row);

    std::uint32_t first_row() const noexcept { return first_row_; }
    std::uint32_t end_row() const noexcept { return end_row_; }
    bool is_last() const noexcept { return end_row_ == height_; }
    // Where the samples of a row belong, or are until they are filtered.
    std::uint8_t* samples(std::uint32_t row) noexcept { return &bytes_[(row - first_row_) * row_size_ + 1]; }
    // The samples of the row above the first, which filters look at. Call it before that block is filtered; the first has none.
    void set_above(const std::uint8_t* samples);
    void filter();
    // before: the block above, filtered; null for the first. Throws std::runtime_error when zlib fails.
    void pack(const Png_Block* before);
    // What the file gets: chunks whose checksum over all rows so far goes on from the blocks above, 1 for the first. Gives up
    // what was packed.
    std::string chunks(std::uint32_t& checksum);

private:
    std::size_t size() const noexcept { return (end_row_ - first_row_) * row_size_; }

    std::size_t row_size_, pixel_bytes_; // a row has the filter's number first
    bool indexed_;
    std::uint32_t height_, first_row_, end_row_;
    std::unique_ptr<std::uint8_t[]> bytes_, above_;
    std::string packed_;
    std::uint32_t checksum_ = 1;
};

// The bytes of a file. fill(row, samples) is called for each row from the top down and stores row_bytes() bytes. The same bytes
// on every machine that has the same zlib. Throws std::runtime_error when zlib fails.
std::string png_file(const Png_Form& form, const std::function<void(std::uint32_t, std::uint8_t*)>& fill);

} // namespace vorna::drawing
