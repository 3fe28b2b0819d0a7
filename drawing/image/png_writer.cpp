// PNG files, written.
//
// Rows are filtered before they are compressed: each byte becomes its distance from that of a neighbour. Blocks of rows are
// filtered and compressed apart from each other; the pieces make one stream. Palette indices, which have no neighbourhood, stay
// as they are.
#include "drawing/image/png_writer.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "drawing/image/deflate.h"
#include "drawing/image/png_filter.h"

namespace vorna::drawing {

namespace {

constexpr std::size_t block_bytes = std::size_t{1} << 20;

void append_number(std::string& bytes, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
}

void append_chunk(std::string& file, std::string_view type, std::string_view content) {
    append_number(file, static_cast<std::uint32_t>(content.size()));
    const std::size_t start = file.size();
    file.append(type).append(content);
    append_number(file, crc32_of({reinterpret_cast<const std::uint8_t*>(file.data()) + start, file.size() - start}));
}

// Of bytes that two checksums are of, the second of so many bytes.
std::uint32_t combined_adler32(std::uint32_t first, std::uint32_t second, std::uint64_t second_size) {
    constexpr std::uint64_t base = 65521;
    const std::uint64_t low = (first & 0xFFFF) + (second & 0xFFFF) + base - 1;
    const std::uint64_t high = second_size % base * ((first & 0xFFFF) + base - 1) + (first >> 16) + (second >> 16);
    return static_cast<std::uint32_t>(high % base << 16 | low % base);
}

} // namespace

Row_Packer::Row_Packer(const Image_Form& form, Png_Layout layout) : form_(form), layout_(std::move(layout)) {
}

std::uint32_t Row_Packer::block_rows() const {
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(block_bytes / (layout_.row_bytes() + 1), 1, form_.height));
}

Packed_Rows Row_Packer::pack(const Sample_Rows& rows) const {
    const std::size_t count = rows.end - rows.first, row_bytes = layout_.row_bytes();
    const bool is_plain = layout_.colors() == Png_Layout::Colors::palette;
    const std::size_t size = row_bytes + 1;
    auto filtered = std::make_unique_for_overwrite<std::uint8_t[]>(count * size);
    bool all_differences = false;
    if (is_plain) {
        for (std::size_t row = 0; row < count; ++row) {
            filtered[row * size] = 0;
            layout_.store_row(rows.samples + row * form_.row_bytes(), &filtered[row * size + 1]);
        }
    } else {
        // The row above, then the rows.
        const auto stored = std::make_unique_for_overwrite<std::uint8_t[]>((count + 1) * row_bytes);
        if (rows.above) {
            layout_.store_row(rows.above, stored.get());
        }
        for (std::size_t row = 0; row < count; ++row) {
            layout_.store_row(rows.samples + row * form_.row_bytes(), &stored[(row + 1) * row_bytes]);
        }
        all_differences = filter_rows(&stored[row_bytes], rows.above ? stored.get() : nullptr, row_bytes, count, layout_.step(),
                                      form_.compression, filtered.get());
    }
    const std::span<const std::uint8_t> bytes(filtered.get(), count * size);
    return {deflate_piece(bytes, form_.compression, layout_.step(), rows.end == form_.height, all_differences),
            adler32_of(bytes)};
}

std::string Row_Packer::joined(const Sample_Rows& rows, const Packed_Rows& packed) {
    std::string content;
    if (rows.first == 0) {
        content = "\x78\x9C"; // deflate with its largest window
    }
    content += packed.bytes;
    checksum_ = combined_adler32(checksum_, packed.checksum, (rows.end - rows.first) * (layout_.row_bytes() + 1));
    if (rows.end == form_.height) {
        append_number(content, checksum_);
    }
    return content;
}

std::string Png_Encoder::head() {
    std::string header;
    append_number(header, form().width);
    append_number(header, form().height);
    header += static_cast<char>(layout().sample_bits());
    header += static_cast<char>(layout().colors());
    header.append(3, '\0'); // the only compression and filtering there are, and rows in order

    std::string file = "\x89PNG\r\n\x1A\n";
    append_chunk(file, "IHDR", header);
    if (form().linear) {
        std::string gamma;
        append_number(gamma, 100000);
        append_chunk(file, "gAMA", gamma);
    } else {
        append_chunk(file, "sRGB", std::string(1, '\0'));
    }
    if (form().pixels_per_metre > 0) {
        std::string density;
        append_number(density, form().pixels_per_metre);
        append_number(density, form().pixels_per_metre);
        density += '\x01'; // per metre
        append_chunk(file, "pHYs", density);
    }
    if (layout().colors() == Png_Layout::Colors::palette) {
        append_chunk(file, "PLTE", layout().palette());
        if (!layout().transparency().empty()) {
            append_chunk(file, "tRNS", layout().transparency());
        }
    }
    if (!form().place.empty()) {
        append_chunk(file, png_place_type, form().place);
    }
    return file;
}

std::string Png_Encoder::join(const Sample_Rows& rows, Packed_Rows packed) {
    std::string chunk;
    append_chunk(chunk, "IDAT", joined(rows, packed));
    return chunk;
}

std::string Png_Encoder::tail() {
    std::string file;
    append_chunk(file, "IEND", {});
    return file;
}

std::string png_file(const Image_Form& form, const std::function<void(std::uint32_t, std::uint8_t*)>& fill) {
    const std::size_t row_bytes = form.row_bytes();
    std::vector<std::uint8_t> samples;
    const bool whole = looks_at_samples(form);
    if (whole) {
        samples.resize(form.height * row_bytes);
        for (std::uint32_t row = 0; row < form.height; ++row) {
            fill(row, &samples[row * row_bytes]);
        }
    }
    Png_Encoder encoder(form, whole ? Png_Layout(form, samples.data()) : Png_Layout(form));
    std::string file = encoder.head();
    if (!whole) {
        samples.resize((encoder.block_rows() + 1) * row_bytes); // the row above, then a block
    }
    for (std::uint32_t first = 0; first < form.height; first += encoder.block_rows()) {
        Sample_Rows rows{first, std::min(first + encoder.block_rows(), form.height), nullptr, nullptr};
        std::uint8_t* block = &samples[whole ? first * row_bytes : row_bytes];
        rows.samples = block;
        rows.above = first > 0 ? block - row_bytes : nullptr;
        if (!whole && first > 0) {
            std::memcpy(samples.data(), &samples[encoder.block_rows() * row_bytes], row_bytes);
        }
        for (std::uint32_t row = first; row < rows.end && !whole; ++row) {
            fill(row, block + (row - first) * row_bytes);
        }
        file += encoder.join(rows, encoder.pack(rows));
    }
    return file + encoder.tail();
}

} // namespace vorna::drawing
