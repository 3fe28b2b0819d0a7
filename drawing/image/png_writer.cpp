// PNG files, written.
//
// Rows are filtered before they are compressed: each byte becomes its distance from a prediction by its neighbours. Of the five
// predictions, the one with the least sum of distances is taken row by row; palette indices, which have no neighbourhood, stay as
// they are.
//
// Blocks of rows are compressed apart from each other, each with the end of the one before as its dictionary and all but the last
// ended on a byte, as pigz does: joined they are one stream.
#include "drawing/image/png_writer.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <zlib.h>

namespace vorna::drawing {

namespace {

constexpr std::size_t block_bytes = std::size_t{1} << 20;
constexpr std::size_t window_bytes = 32768;

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
    append_number(file, static_cast<std::uint32_t>(crc32_z(0, checked, file.size() - start)));
}

// Without branches, in 16 bits: a loop that compilers vectorise.
inline std::uint8_t paeth_prediction(std::int16_t left, std::int16_t up, std::int16_t corner) noexcept {
    const auto distance = [](int a) { return static_cast<std::int16_t>(a < 0 ? -a : a); };
    const std::int16_t to_left = distance(up - corner), to_up = distance(left - corner),
                       to_corner = distance(left + up - 2 * corner);
    const std::int16_t other = to_up <= to_corner ? up : corner;
    return static_cast<std::uint8_t>(((to_left <= to_up) & (to_left <= to_corner)) != 0 ? left : other);
}

// Chooses filters. Rows begin with pixel_bytes zeros, which stand for the pixel left of the first one.
class Filter {
public:
    Filter(std::size_t pixel_bytes, std::size_t row_bytes)
        : pixel_bytes_(pixel_bytes), row_bytes_(row_bytes), row_(pixel_bytes + row_bytes), above_(row_.size()),
          best_(row_bytes + 1), trial_(row_bytes + 1) {}

    // Filters a row of samples where it stands, with the samples of the row above; null = all zero.
    void apply(std::uint8_t* row, const std::uint8_t* above) {
        std::memcpy(&row_[pixel_bytes_], row + 1, row_bytes_);
        if (above) {
            std::memcpy(&above_[pixel_bytes_], above, row_bytes_);
        } else {
            std::fill(above_.begin(), above_.end(), std::uint8_t{0});
        }
        least_ = static_cast<std::uint64_t>(-1);
        try_filter(0, [](int, int, int) { return 0; });
        try_filter(2, [](int, int up, int) { return up; });
        try_filter(1, [](int left, int, int) { return left; });
        try_filter(3, [](int left, int up, int) { return (left + up) / 2; });
        try_filter(4, [](int left, int up, int corner) {
            return paeth_prediction(static_cast<std::int16_t>(left), static_cast<std::int16_t>(up),
                                    static_cast<std::int16_t>(corner));
        });
        std::memcpy(row, best_.data(), best_.size());
    }

private:
    template <class Prediction> void try_filter(std::uint8_t number, Prediction prediction) {
        if (least_ == 0) {
            return;
        }
        const std::uint8_t *row = &row_[pixel_bytes_], *up = &above_[pixel_bytes_], *left = row_.data(), *corner = above_.data();
        std::uint8_t* distances = &trial_[1];
        std::uint64_t sum = 0;
        constexpr std::size_t step = 4096; // sums of so many fit 32 bits and more
        for (std::size_t start = 0; start < row_bytes_; start += step) {
            const std::size_t end = std::min(start + step, row_bytes_);
            std::uint32_t part = 0;
            for (std::size_t i = start; i < end; ++i) {
                const auto distance = static_cast<std::uint8_t>(row[i] - prediction(left[i], up[i], corner[i]));
                distances[i] = distance;
                part += std::min<std::uint8_t>(distance, static_cast<std::uint8_t>(-distance));
            }
            sum += part;
        }
        if (sum < least_) {
            least_ = sum;
            trial_[0] = number;
            std::swap(best_, trial_);
        }
    }

    std::size_t pixel_bytes_, row_bytes_;
    std::uint64_t least_ = 0;
    std::vector<std::uint8_t> row_, above_;
    std::vector<std::uint8_t> best_, trial_; // the filter's number, then what it gives
};

// Raw deflate data. dictionary: what comes before, as far as it counts.
std::string deflated(std::uint8_t* bytes, std::size_t size, const std::uint8_t* dictionary, std::size_t dictionary_size,
                     bool last) {
    struct Stream : z_stream {
        Stream() : z_stream{} {
            if (deflateInit2(this, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
                throw std::runtime_error("a picture cannot be compressed");
            }
        }
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        ~Stream() { deflateEnd(this); }
    } stream;
    if (dictionary_size > 0) {
        deflateSetDictionary(&stream, dictionary, static_cast<uInt>(dictionary_size));
    }
    std::string result;
    std::array<Bytef, 65536> piece;
    constexpr std::size_t most = std::size_t{1} << 30;
    do {
        const std::size_t count = std::min(size, most);
        stream.next_in = bytes;
        stream.avail_in = static_cast<uInt>(count);
        bytes += count;
        size -= count;
        do {
            stream.next_out = piece.data();
            stream.avail_out = static_cast<uInt>(piece.size());
            deflate(&stream, size > 0 ? Z_NO_FLUSH : last ? Z_FINISH : Z_SYNC_FLUSH);
            result.append(reinterpret_cast<const char*>(piece.data()), piece.size() - stream.avail_out);
        } while (stream.avail_out == 0);
    } while (size > 0);
    return result;
}

} // namespace

std::uint32_t png_block_rows(const Png_Form& form) {
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(block_bytes / (form.row_bytes() + 1), 1, form.height));
}

std::string png_head(const Png_Form& form) {
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
    if (form.colors == Png_Form::Colors::palette) {
        append_chunk(file, "PLTE", form.palette);
    }
    if (!form.place.empty()) {
        append_chunk(file, png_place_type, form.place);
    }
    return file;
}

std::string png_tail() {
    std::string file;
    append_chunk(file, "IEND", {});
    return file;
}

Png_Block::Png_Block(const Png_Form& form, std::uint32_t first_row)
    : row_size_(form.row_bytes() + 1), pixel_bytes_(form.pixel_bytes()), indexed_(form.colors == Png_Form::Colors::palette),
      height_(form.height), first_row_(first_row), end_row_(std::min(form.height, first_row + png_block_rows(form))),
      bytes_(std::make_unique_for_overwrite<std::uint8_t[]>(size())) {
}

void Png_Block::set_above(const std::uint8_t* samples) {
    if (!indexed_) {
        above_ = std::make_unique_for_overwrite<std::uint8_t[]>(row_size_ - 1);
        std::memcpy(above_.get(), samples, row_size_ - 1);
    }
}

// From the bottom up, so that the row above is still there.
void Png_Block::filter() {
    if (indexed_) {
        for (std::size_t start = 0; start < size(); start += row_size_) {
            bytes_[start] = 0;
        }
        return;
    }
    Filter filter(pixel_bytes_, row_size_ - 1);
    for (std::uint32_t row = end_row_; row-- > first_row_;) {
        filter.apply(samples(row) - 1, row > first_row_ ? samples(row - 1) : above_.get());
    }
    above_ = nullptr;
}

void Png_Block::pack(const Png_Block* before) {
    const std::size_t known = before ? std::min(before->size(), window_bytes) : 0;
    packed_ = deflated(bytes_.get(), size(), before ? &before->bytes_[before->size() - known] : nullptr, known, is_last());
    checksum_ = static_cast<std::uint32_t>(adler32_z(1, bytes_.get(), size()));
}

std::string Png_Block::chunks(std::uint32_t& checksum) {
    checksum = static_cast<std::uint32_t>(adler32_combine(checksum, checksum_, static_cast<z_off_t>(size())));
    std::string content;
    if (first_row_ == 0) {
        content = "\x78\x9C"; // deflate with its largest window, packed as it is by default
    }
    content += packed_;
    packed_ = {};
    if (is_last()) {
        append_number(content, checksum);
    }
    std::string file;
    append_chunk(file, "IDAT", content);
    return file;
}

std::string png_file(const Png_Form& form, const std::function<void(std::uint32_t, std::uint8_t*)>& fill) {
    std::string file = png_head(form);
    std::uint32_t checksum = 1;
    std::unique_ptr<Png_Block> before;
    auto block = std::make_unique<Png_Block>(form, 0);
    while (block) {
        for (std::uint32_t row = block->first_row(); row < block->end_row(); ++row) {
            fill(row, block->samples(row));
        }
        std::unique_ptr<Png_Block> next;
        if (!block->is_last()) {
            next = std::make_unique<Png_Block>(form, block->end_row());
            next->set_above(block->samples(block->end_row() - 1));
        }
        block->filter();
        block->pack(before.get());
        file += block->chunks(checksum);
        before = std::exchange(block, std::move(next));
    }
    return file + png_tail();
}

} // namespace vorna::drawing
