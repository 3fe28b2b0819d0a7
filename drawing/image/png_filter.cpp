// The filters of PNG rows.
#include "drawing/image/png_filter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace vorna::drawing {

namespace {

enum class Filter : std::uint8_t { none = 0, sub = 1, up = 2 };

constexpr std::size_t group_bytes = 65536;
// Of every 256 pixels in a row 64 are sampled, others in each of four rows.
constexpr std::size_t sample_pixels = 64, sample_period = 256;

// The bits of a difference of two bytes: about twice its logarithm, since its sign and size are two choices.
constexpr auto difference_bits = [] {
    std::array<std::uint8_t, 256> bits{};
    for (int byte = 0; byte < 256; ++byte) {
        const int difference = byte < 128 ? byte : 256 - byte;
        bits[static_cast<std::size_t>(byte)] =
            static_cast<std::uint8_t>(std::bit_width(static_cast<unsigned>(2 * difference + 1)));
    }
    return bits;
}();

template <std::size_t step> std::uint32_t pixel_at(const std::uint8_t* bytes) noexcept {
    std::uint32_t pixel = 0;
    for (std::size_t i = 0; i < step; ++i) {
        pixel |= std::uint32_t{bytes[i]} << 8 * i;
    }
    return pixel;
}

// The difference of each byte.
template <std::size_t step> std::uint32_t difference(std::uint32_t a, std::uint32_t b) noexcept {
    std::uint32_t differences = 0;
    for (std::size_t i = 0; i < 8 * step; i += 8) {
        differences |= (((a >> i) - (b >> i)) & 0xFF) << i;
    }
    return differences;
}

// What a filter leaves of a pixel costs the bits of its differences, and little when the pixel before has left the same: then it
// is found.
template <std::size_t step> class Residue {
public:
    std::uint32_t cost(std::uint32_t differences) noexcept {
        if (differences == last_) {
            return differences == 0 ? 0 : 2;
        }
        last_ = differences;
        std::uint32_t bits = 2;
        for (std::size_t i = 0; i < 8 * step; i += 8) {
            bits += difference_bits[differences >> i & 0xFF];
        }
        return bits;
    }

private:
    std::uint32_t last_ = 0;
};

// What filters leave of the sampled pixels of a group.
template <std::size_t step> class Choice {
public:
    explicit Choice(Compression compression) : known_color_bits_(compression == Compression::fast ? new_color_bits : 12) {}

    void add(const std::uint8_t* row, const std::uint8_t* above, std::size_t pixels, std::size_t number) {
        const std::size_t first = number * sample_pixels % sample_period;
        for (std::size_t start = first; start < pixels; start += sample_period) {
            add_pixels(row, above, std::max<std::size_t>(start, 1), std::min(start + sample_pixels, pixels));
        }
    }

    // Begins the next group. Colours stay known.
    Filter take() {
        const Filter filter = none_ < std::min(sub_, up_) ? Filter::none : sub_ <= up_ ? Filter::sub : Filter::up;
        none_ = sub_ = up_ = 0;
        return filter;
    }

private:
    static constexpr std::uint32_t new_color_bits = 22;

    void add_pixels(const std::uint8_t* row, const std::uint8_t* above, std::size_t start, std::size_t end) {
        std::uint32_t left = pixel_at<step>(row + (start - 1) * step);
        Residue<step> after_sub, after_up;
        for (std::size_t i = start; i < end; ++i) {
            const std::uint32_t pixel = pixel_at<step>(row + i * step), up = pixel_at<step>(above + i * step);
            sub_ += after_sub.cost(difference<step>(pixel, left));
            up_ += after_up.cost(difference<step>(pixel, up));
            if (pixel != left) {
                std::uint64_t& known = colors_[pixel * 2654435761U >> 22];
                none_ += known == pixel + std::uint64_t{1} ? known_color_bits_ : new_color_bits;
                known = pixel + std::uint64_t{1};
            }
            left = pixel;
        }
    }

    std::uint32_t known_color_bits_;
    std::array<std::uint64_t, 1024> colors_{}; // a colour and 1, by its hash
    std::uint64_t none_ = 0, sub_ = 0, up_ = 0;
};

void apply(Filter filter, const std::uint8_t* row, const std::uint8_t* above, std::size_t row_bytes, std::size_t step,
           std::uint8_t* filtered) {
    *filtered++ = static_cast<std::uint8_t>(filter);
    if (filter == Filter::none) {
        std::memcpy(filtered, row, row_bytes);
        return;
    }
    const bool is_up = filter == Filter::up;
    if (!is_up) {
        std::memcpy(filtered, row, step);
    }
    const std::uint8_t* prediction = is_up ? above : row - step;
    for (std::size_t i = is_up ? 0 : step; i < row_bytes; ++i) {
        filtered[i] = static_cast<std::uint8_t>(row[i] - prediction[i]);
    }
}

template <std::size_t step>
bool filter_pixels(const std::uint8_t* bytes, const std::uint8_t* above, std::size_t row_bytes, std::size_t rows,
                   Compression compression, std::uint8_t* filtered) {
    const std::size_t group = std::max<std::size_t>(group_bytes / row_bytes, 1);
    const auto above_row = [=](std::size_t row) { return row == 0 ? above : bytes + (row - 1) * row_bytes; };
    Choice<step> choice(compression);
    bool all_differences = true;
    for (std::size_t start = 0; start < rows; start += group) {
        const std::size_t end = std::min(start + group, rows);
        for (std::size_t row = start; row < end; ++row) {
            choice.add(bytes + row * row_bytes, above_row(row), row_bytes / step, row);
        }
        const Filter filter = choice.take();
        all_differences &= filter != Filter::none;
        for (std::size_t row = start; row < end; ++row) {
            apply(filter, bytes + row * row_bytes, above_row(row), row_bytes, step, filtered + row * (row_bytes + 1));
        }
    }
    return all_differences;
}

} // namespace

bool filter_rows(const std::uint8_t* bytes, const std::uint8_t* above, std::size_t row_bytes, std::size_t rows, std::size_t step,
                 Compression compression, std::uint8_t* filtered) {
    const std::vector<std::uint8_t> zeros(above ? 0 : row_bytes);
    constexpr decltype(&filter_pixels<1>) by_step[] = {filter_pixels<1>, filter_pixels<2>, filter_pixels<3>, filter_pixels<4>};
    return by_step[step - 1](bytes, above ? above : zeros.data(), row_bytes, rows, compression, filtered);
}

} // namespace vorna::drawing
