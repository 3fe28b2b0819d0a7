// PNG files, written.
//
// Rows are filtered before they are compressed: each byte becomes its distance from a prediction by its neighbours. Of the five
// predictions, the one with the least sum of distances is taken row by row; palette indices, which have no neighbourhood, stay as
// they are.
#include "app/png_writer.h"

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <zlib.h>

namespace app {

namespace {

using Row = std::vector<std::uint8_t>;

void append_number(std::string& bytes, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
}

void append_chunk(std::string& file, std::string_view type, std::string_view content) {
    append_number(file, static_cast<std::uint32_t>(content.size()));
    const std::size_t start = file.size();
    file.append(type).append(content);
    const auto* checked = reinterpret_cast<const Bytef*>(file.data() + start);
    append_number(file, static_cast<std::uint32_t>(crc32(0, checked, static_cast<uInt>(file.size() - start))));
}

int paeth_prediction(int left, int up, int corner) noexcept {
    const int to_left = std::abs(up - corner);
    const int to_up = std::abs(left - corner);
    const int to_corner = std::abs(left + up - 2 * corner);
    return to_left <= to_up && to_left <= to_corner ? left : to_up <= to_corner ? up : corner;
}

class Compressor {
public:
    Compressor() {
        if (deflateInit(&stream_, Z_DEFAULT_COMPRESSION) != Z_OK) {
            throw std::runtime_error("a picture cannot be compressed");
        }
    }
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
    ~Compressor() { deflateEnd(&stream_); }

    void add(Row& bytes) {
        stream_.next_in = bytes.data();
        stream_.avail_in = static_cast<uInt>(bytes.size());
        run(Z_NO_FLUSH);
    }

    const std::string& finish() {
        run(Z_FINISH);
        return compressed_;
    }

private:
    void run(int flush) {
        std::array<Bytef, 65536> block;
        do {
            stream_.next_out = block.data();
            stream_.avail_out = static_cast<uInt>(block.size());
            deflate(&stream_, flush);
            compressed_.append(reinterpret_cast<const char*>(block.data()), block.size() - stream_.avail_out);
        } while (stream_.avail_out == 0);
    }

    z_stream stream_ = {};
    std::string compressed_;
};

// Chooses filters. Rows begin with pixel_bytes zeros, which stand for the pixel left of the first one.
class Filter {
public:
    Filter(std::size_t pixel_bytes, std::size_t row_bytes)
        : pixel_bytes_(pixel_bytes), best_(row_bytes + 1), trial_(row_bytes + 1) {}

    Row& choose(const Row& row, const Row& above) {
        least_ = static_cast<std::uint64_t>(-1);
        try_filter(0, row, above, [](int, int, int) { return 0; });
        try_filter(1, row, above, [](int left, int, int) { return left; });
        try_filter(2, row, above, [](int, int up, int) { return up; });
        try_filter(3, row, above, [](int left, int up, int) { return (left + up) / 2; });
        try_filter(4, row, above, paeth_prediction);
        return best_;
    }

private:
    template <class Prediction> void try_filter(std::uint8_t number, const Row& row, const Row& above, Prediction prediction) {
        std::uint64_t sum = 0;
        trial_[0] = number;
        for (std::size_t i = pixel_bytes_; i < row.size(); ++i) {
            const std::size_t left = i - pixel_bytes_;
            const auto distance = static_cast<std::uint8_t>(row[i] - prediction(row[left], above[i], above[left]));
            trial_[left + 1] = distance;
            sum += distance < 128 ? distance : 256U - distance;
        }
        if (sum < least_) {
            least_ = sum;
            std::swap(best_, trial_);
        }
    }

    std::size_t pixel_bytes_;
    std::uint64_t least_ = 0;
    Row best_, trial_; // the filter's number, then what it gives
};

} // namespace

std::string png_file(const Png_Form& form, const std::function<void(std::uint32_t, std::uint8_t*)>& fill) {
    std::string header;
    append_number(header, form.width);
    append_number(header, form.height);
    header += static_cast<char>(form.sample_bits);
    header += static_cast<char>(form.colors);
    header.append(3, '\0'); // the only compression and filtering there are, and rows in order

    std::string file = "\x89PNG\r\n\x1A\n";
    append_chunk(file, "IHDR", header);
    if (form.linear) {
        std::string gamma;
        append_number(gamma, 100000);
        append_chunk(file, "gAMA", gamma);
    } else {
        append_chunk(file, "sRGB", std::string(1, '\0'));
    }
    const bool indexed = form.colors == Png_Form::Colors::palette;
    if (indexed) {
        append_chunk(file, "PLTE", form.palette);
    }

    const std::size_t pixel_bytes = form.pixel_bytes();
    Row row(pixel_bytes + form.row_bytes()), above(row.size()), unfiltered(form.row_bytes() + 1);
    Filter filter(pixel_bytes, form.row_bytes());
    Compressor compressor;
    for (std::uint32_t r = 0; r < form.height; ++r) {
        if (indexed) {
            fill(r, unfiltered.data() + 1);
            compressor.add(unfiltered);
        } else {
            fill(r, row.data() + pixel_bytes);
            compressor.add(filter.choose(row, above));
            std::swap(row, above);
        }
    }
    append_chunk(file, "IDAT", compressor.finish());
    append_chunk(file, "IEND", {});
    return file;
}

} // namespace app
