// PNG files as they are stored.
#include "tests/support/png_pixels.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <zlib.h>

#include "tests/support/command_line.h"

namespace replay_tests {

namespace {

// Reads numbers, chunks and rows; throws std::runtime_error with the reason for what no picture of ours has.
class Reading {
public:
    explicit Reading(const std::string& file) : file_(file) {
        require(take(8) == "\x89PNG\r\n\x1A\n", "no PNG file");
        for (std::string type; type != "IEND";) {
            const std::uint32_t size = number();
            const std::size_t start = place_;
            type = take(4);
            const std::string content = take(size);
            const auto* checked = reinterpret_cast<const Bytef*>(file_.data() + start);
            require(number() == crc32(0, checked, size + 4), "a chunk's checksum is wrong");
            chunks_[type] += content;
        }
        require(place_ == file_.size(), "there is more after the end");
    }

    Png_Pixels pixels() {
        std::istringstream header(chunks_["IHDR"]);
        const auto number_of = [&header](int bytes) {
            std::uint32_t value = 0;
            while (bytes-- > 0) {
                value = value << 8 | static_cast<std::uint32_t>(header.get());
            }
            return value;
        };
        Png_Pixels pixels;
        pixels.width = number_of(4);
        pixels.height = number_of(4);
        pixels.bit_depth = static_cast<int>(number_of(1));
        pixels.color_type = static_cast<int>(number_of(1));
        require(number_of(3) == 0, "unknown ways of storing");
        require(pixels.bit_depth >= 8 || pixels.color_type == 3, "samples of less than a byte");
        const std::size_t samples[] = {1, 0, 3, 1, 2, 0, 4};
        pixels.pixel_bytes = samples[pixels.color_type] * static_cast<std::size_t>(std::max(pixels.bit_depth / 8, 1));
        pixels.palette.assign(chunks_["PLTE"].begin(), chunks_["PLTE"].end());
        pixels.alphas.assign(chunks_["tRNS"].begin(), chunks_["tRNS"].end());
        read_rows(pixels);
        if (pixels.bit_depth < 8) {
            unpack(pixels);
        }
        return pixels;
    }

private:
    static void require(bool condition, const char* reason) {
        if (!condition) {
            throw std::runtime_error(reason);
        }
    }

    std::string take(std::size_t count) {
        require(file_.size() - place_ >= count, "it ends too early");
        place_ += count;
        return file_.substr(place_ - count, count);
    }

    std::uint32_t number() {
        std::uint32_t value = 0;
        for (const char byte : take(4)) {
            value = value << 8 | static_cast<std::uint8_t>(byte);
        }
        return value;
    }

    void read_rows(Png_Pixels& pixels) {
        const std::string& packed = chunks_["IDAT"];
        const std::size_t row_bytes = pixels.bit_depth < 8 ? (pixels.width * static_cast<std::size_t>(pixels.bit_depth) + 7) / 8
                                                           : pixels.width * pixels.pixel_bytes;
        std::vector<std::uint8_t> filtered((row_bytes + 1) * pixels.height);
        auto size = static_cast<uLongf>(filtered.size());
        const int status =
            uncompress(filtered.data(), &size, reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size()));
        require(status == Z_OK && size == filtered.size(), "its rows cannot be unpacked");
        const std::size_t step = pixels.pixel_bytes;
        std::vector<std::uint8_t> above(step + row_bytes), row(step + row_bytes);
        for (std::size_t start = 0; start < filtered.size(); start += row_bytes + 1) {
            for (std::size_t i = step; i < row.size(); ++i) {
                const int left = row[i - step], up = above[i], corner = above[i - step];
                row[i] = static_cast<std::uint8_t>(filtered[start + 1 + i - step] + predicted(filtered[start], left, up, corner));
            }
            pixels.bytes.insert(pixels.bytes.end(), row.begin() + static_cast<std::ptrdiff_t>(step), row.end());
            above = row;
        }
    }

    // The index of each pixel in a byte.
    static void unpack(Png_Pixels& pixels) {
        const auto bits = static_cast<std::size_t>(pixels.bit_depth);
        const std::size_t row_bytes = pixels.bytes.size() / pixels.height;
        std::vector<std::uint8_t> indices;
        for (std::size_t row = 0; row < pixels.height; ++row) {
            for (std::size_t bit = 0; bit < pixels.width * bits; bit += bits) {
                const unsigned byte = pixels.bytes[row * row_bytes + bit / 8];
                indices.push_back(static_cast<std::uint8_t>(byte >> (8 - bits - bit % 8) & ((1U << bits) - 1)));
            }
        }
        pixels.bytes = std::move(indices);
    }

    static int predicted(int filter, int left, int up, int corner) {
        const auto farness = [=](int neighbour) { return std::abs(left + up - corner - neighbour); };
        switch (filter) {
        case 0:
            return 0;
        case 1:
            return left;
        case 2:
            return up;
        case 3:
            return (left + up) / 2;
        case 4:
            return std::min({left, up, corner}, [&](int a, int b) { return farness(a) < farness(b); });
        default:
            throw std::runtime_error("a filter that does not exist");
        }
    }

    std::string file_;
    std::size_t place_ = 0;
    std::map<std::string, std::string> chunks_; // by type, joined
};

std::string hex(const std::uint8_t* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
        text += digits;
    }
    return text;
}

Png_Pixels colors_of(Png_Pixels pixels) {
    const bool indexed = pixels.color_type == 3;
    if (!indexed && pixels.color_type != 2) {
        return pixels;
    }
    std::vector<std::uint8_t> colors;
    for (std::size_t i = 0; i < pixels.bytes.size(); i += pixels.pixel_bytes) {
        const std::size_t index = pixels.bytes[i];
        const std::uint8_t* color = indexed ? &pixels.palette.at(3 * index) : &pixels.bytes[i];
        colors.insert(colors.end(), color, color + 3);
        colors.push_back(indexed && index < pixels.alphas.size() ? pixels.alphas[index] : std::uint8_t{255});
    }
    return {.width = pixels.width, .height = pixels.height, .bit_depth = 8, .color_type = 6, .pixel_bytes = 4, .bytes = colors};
}

} // namespace

Png_Pixels read_png(const std::string& path) {
    try {
        return Reading(read_file(path)).pixels();
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ": not a readable PNG file: " + error.what());
    }
}

Png_Pixels read_colors(const std::string& path) {
    return colors_of(read_png(path));
}

std::string difference(const Png_Pixels& stored, const Png_Pixels& expected) {
    const Png_Pixels drawn = expected.color_type == 6 ? colors_of(stored) : stored;
    const auto form = [](const Png_Pixels& pixels) {
        return std::to_string(pixels.width) + " x " + std::to_string(pixels.height) + ", " + std::to_string(pixels.bit_depth) +
               " bits, colour type " + std::to_string(pixels.color_type);
    };
    if (form(drawn) != form(expected)) {
        return form(drawn) + ", expected " + form(expected);
    }
    if (drawn.palette != expected.palette) {
        return "another palette";
    }
    for (std::size_t i = 0; i < drawn.bytes.size(); i += drawn.pixel_bytes) {
        const std::string pixel = hex(&drawn.bytes[i], drawn.pixel_bytes);
        const std::string wanted = hex(&expected.bytes[i], drawn.pixel_bytes);
        if (pixel != wanted) {
            const std::size_t position = i / drawn.pixel_bytes;
            return "column " + std::to_string(position % drawn.width) + ", row " + std::to_string(position / drawn.width) +
                   " from the top: " + pixel + ", expected " + wanted;
        }
    }
    return {};
}

} // namespace replay_tests
