// Images that go into a file while they are being drawn, by several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "drawing/files/output_file.h"
#include "drawing/image/image_form.h"
#include "drawing/image/sha256.h"

namespace vorna::drawing {

// Where the rows of a band go. Several threads may store parts of the same rows.
class Row_Places {
public:
    Row_Places() = default;
    // So many rows in memory, one after the other.
    Row_Places(std::uint8_t* samples, std::size_t row_bytes, std::uint32_t rows) {
        for (std::uint32_t row = 0; row < rows; ++row) {
            places_.push_back(samples + row * row_bytes);
        }
    }

    // Samples of a row, counted from the image's top.
    std::uint8_t* operator()(std::uint32_t row) const { return places_[row - first_]; }

private:
    friend class Image_Stream;
    std::uint32_t first_ = 0;
    std::vector<std::uint8_t*> places_;
};

// An image as bands of rows, each of them made in parts.
struct Row_Source {
    std::vector<std::uint32_t> band_ends; // rows from the top; the last one is the image's height
    std::uint32_t parts = 1;              // of every band
    bool in_order = false;                // a band's parts are made only after the bands above are whole
    // Makes a part, in one of several threads; each thread has a number of its own below the number of threads.
    std::function<void(unsigned thread, std::uint32_t band, std::uint32_t part, const Row_Places& places)> make;
};

struct Stream_Settings {
    unsigned threads = 1;
    std::uint32_t rows_ahead = 0;              // so many rows may be held; a band that is larger is held as a whole
    Sha256* hash = nullptr;                    // of the samples of all rows from the top down, and of nothing else
    std::function<void(double)> progress = {}; // is told how much is done, 0 to 1; none = nobody is
};

// Bytes that a stream holds at most, besides what its source does.
std::uint64_t stream_memory(const Image_Form& form, const std::vector<std::uint32_t>& band_ends, const Stream_Settings& settings);

// Makes the image and writes it into the file, which is not committed. Threads make parts, pack what is whole, and write it in
// order, whatever is to be done first. Small images that may be stored with a palette are made as a whole first. The bytes do not
// depend on bands, parts and threads. Throws what the source throws, and Interrupted.
void stream_image(Output_File& file, const Image_Form& form, const Row_Source& source, const Stream_Settings& settings);

} // namespace vorna::drawing
