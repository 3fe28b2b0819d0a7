// Files with parts of images.
#include "drawing/job/part_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <zlib.h>

#include "drawing/files/path.h"
#include "drawing/files/setting_names.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/png_writer.h"
#include "drawing/job/share_rows.h"

namespace vorna::drawing {

namespace {

constexpr std::uint32_t most_packed = 65536;
constexpr std::uint32_t largest_head_chunk = 4096;

std::uint32_t number_of(const char* bytes) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = value << 8 | static_cast<std::uint8_t>(bytes[i]);
    }
    return value;
}

int paeth_prediction(int left, int up, int corner) {
    const int to_left = std::abs(up - corner), to_up = std::abs(left - corner), to_corner = std::abs(left + up - 2 * corner);
    return to_left <= to_up && to_left <= to_corner ? left : to_up <= to_corner ? up : corner;
}

} // namespace

struct Part_Reader::Inflation : z_stream {
    Inflation() : z_stream{} {
        if (inflateInit(this) != Z_OK) {
            throw std::runtime_error("an image cannot be unpacked");
        }
    }
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;
    ~Inflation() { inflateEnd(this); }
};

Part_Reader::Part_Reader(const std::string& name) : name_(name), file_(std::fopen(name.c_str(), "rb")) {
    if (!file_) {
        throw Usage_Error(name + ": cannot be read: " + std::generic_category().message(errno));
    }
    read_head();
    inflation_ = std::make_unique<Inflation>();
    packed_.resize(most_packed);
    row_.resize(layout_->step() + 1 + layout_->row_bytes());
    above_.resize(row_.size());
}

Part_Reader::~Part_Reader() = default;

void Part_Reader::fail(const std::string& reason) const {
    throw Usage_Error(name_ + ": expected a part drawn with " + name_of(Setting::part) + ", found " + reason);
}

void Part_Reader::read(void* bytes, std::size_t count) {
    if (std::fread(bytes, 1, count, file_.get()) != count) {
        fail("a file that ends too early");
    }
}

std::uint32_t Part_Reader::read_number() {
    char bytes[4];
    read(bytes, sizeof bytes);
    return number_of(bytes);
}

void Part_Reader::begin_chunk() {
    left_ = read_number();
    type_.resize(4);
    read(type_.data(), 4);
    checksum_ = static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(type_.data()), 4));
}

std::string Part_Reader::chunk_content() {
    if (left_ > largest_head_chunk) {
        fail("another kind of file");
    }
    std::string content(left_, '\0');
    read(content.data(), left_);
    checksum_ = static_cast<std::uint32_t>(crc32(checksum_, reinterpret_cast<const Bytef*>(content.data()), left_));
    left_ = 0;
    end_chunk();
    return content;
}

void Part_Reader::end_chunk() {
    if (read_number() != checksum_) {
        fail("a file that has been damaged");
    }
}

void Part_Reader::read_head() {
    char signature[8] = {};
    errno = 0;
    const bool whole = std::fread(signature, 1, 8, file_.get()) == 8;
    if (std::ferror(file_.get()) != 0) {
        throw Usage_Error(name_ + ": cannot be read: " + std::generic_category().message(errno));
    }
    if (!whole || std::memcmp(signature, "\x89PNG\r\n\x1A\n", 8) != 0) {
        fail("another kind of file");
    }
    bool has_place = false;
    int sample_bits = 0;
    auto colors = Png_Layout::Colors::grey;
    for (begin_chunk(); type_ != "IDAT"; begin_chunk()) {
        const std::string content = chunk_content();
        if (type_ == "IHDR" && content.size() == 13) {
            form_.width = number_of(content.data());
            form_.height = number_of(content.data() + 4);
            sample_bits = static_cast<std::uint8_t>(content[8]);
            colors = static_cast<Png_Layout::Colors>(content[9]);
            form_.opaque = colors != Png_Layout::Colors::red_green_blue_alpha;
            form_.colors =
                colors == Png_Layout::Colors::palette ? Image_Form::Colors::palette : Image_Form::Colors::red_green_blue_alpha;
            if (colors == Png_Layout::Colors::grey && sample_bits == 16) { // depths
                form_.colors = Image_Form::Colors::grey;
                form_.sample_bits = 16;
                form_.linear = true;
            }
        } else if (type_ == "PLTE") {
            form_.palette = content;
        } else if (type_ == "pHYs" && content.size() == 9) {
            form_.pixels_per_metre = number_of(content.data());
        } else if (type_ == png_place_type) {
            has_place = part_.read(content);
            form_.place = content;
        } else if (type_ == "IEND") {
            fail("a file without pixels");
        }
    }
    if (!has_place) {
        fail("an image that does not say where it belongs");
    }
    layout_.emplace(form_);
    if (layout_->colors() != colors || layout_->sample_bits() != sample_bits) {
        fail("another kind of image");
    }
    const VT_Int_Rectangle area = part_.area();
    const std::uint32_t columns = part_.share ? share_columns : 1;
    if (form_.width != columns * static_cast<std::uint32_t>(area.right - area.left + 1) ||
        form_.height != static_cast<std::uint32_t>(area.top - area.bottom + 1)) {
        fail("an image of another size");
    }
    // A packed byte stands for 1032 bytes at the most.
    std::error_code none;
    const std::uintmax_t size = std::filesystem::file_size(path_of(name_), none);
    if (!none && std::uint64_t{form_.height} * (layout_->row_bytes() + 1) / 1032 > size) {
        fail("a file that is too short for its rows");
    }
}

void Part_Reader::inflate_row() {
    Inflation& stream = *inflation_;
    // The filter's number lies right before the samples, in place of the last of the zeros that are put there afterwards.
    stream.next_out = &row_[layout_->step()];
    stream.avail_out = static_cast<uInt>(layout_->row_bytes() + 1);
    const bool is_last = rows_read_ + 1 == form_.height;
    for (int status = Z_OK; stream.avail_out > 0 || (is_last && status != Z_STREAM_END);) {
        while (stream.avail_in == 0) {
            if (left_ == 0) {
                end_chunk();
                begin_chunk();
                if (type_ != "IDAT") {
                    fail("fewer rows than expected");
                }
                continue;
            }
            const std::uint32_t count = std::min(left_, most_packed);
            read(packed_.data(), count);
            checksum_ = static_cast<std::uint32_t>(crc32(checksum_, packed_.data(), count));
            left_ -= count;
            stream.next_in = packed_.data();
            stream.avail_in = count;
        }
        status = inflate(&stream, Z_NO_FLUSH);
        if (status != Z_OK && !(status == Z_STREAM_END && stream.avail_out == 0 && is_last)) {
            fail("a file that has been damaged");
        }
    }
}

void Part_Reader::undo_filter() {
    const std::size_t step = layout_->step();
    const int filter = std::exchange(row_[step], std::uint8_t{0});
    std::uint8_t* row = &row_[step + 1];
    const std::uint8_t* above = &above_[step + 1];
    const std::size_t count = layout_->row_bytes();
    const auto undo = [&](auto prediction) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::ptrdiff_t left = static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(step);
            row[i] = static_cast<std::uint8_t>(row[i] + prediction(row[left], above[i], above[left]));
        }
    };
    switch (filter) {
    case 0:
        break;
    case 1:
        undo([](int left, int, int) { return left; });
        break;
    case 2:
        undo([](int, int up, int) { return up; });
        break;
    case 3:
        undo([](int left, int up, int) { return (left + up) / 2; });
        break;
    case 4:
        undo(paeth_prediction);
        break;
    default:
        fail("a file that has been damaged");
    }
}

void Part_Reader::read_row(std::uint8_t* samples) {
    inflate_row();
    undo_filter();
    layout_->load_row(&row_[layout_->step() + 1], samples);
    std::swap(row_, above_);
    if (++rows_read_ == form_.height) {
        read_end();
    }
}

void Part_Reader::read_end() {
    const auto fail_if = [this](bool is_more) {
        if (is_more) {
            fail("more than the rows expected");
        }
    };
    fail_if(left_ > 0 || inflation_->avail_in > 0);
    end_chunk();
    begin_chunk();
    fail_if(type_ != "IEND" || left_ > 0);
    end_chunk();
}

} // namespace vorna::drawing
