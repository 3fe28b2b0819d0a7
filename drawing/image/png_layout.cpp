// How PNG files store samples.
#include "drawing/image/png_layout.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>

namespace vorna::drawing {

namespace {

constexpr std::size_t table_size = 1024, most_colors = 256;

std::uint32_t color_at(const std::uint8_t* samples) noexcept {
    std::uint32_t color;
    std::memcpy(&color, samples, sizeof color);
    return color;
}

std::array<std::uint8_t, 4> bytes_of(std::uint32_t color) noexcept {
    return std::bit_cast<std::array<std::uint8_t, 4>>(color);
}

int bits_for(std::size_t colors) noexcept {
    return colors <= 2 ? 1 : colors <= 4 ? 2 : colors <= 16 ? 4 : 8;
}

} // namespace

bool looks_at_samples(const Image_Form& form) noexcept {
    constexpr std::uint64_t most_pixels = std::uint64_t{1} << 21;
    return form.reducible && form.place.empty() && form.colors == Image_Form::Colors::red_green_blue_alpha &&
           std::uint64_t{form.width} * form.height <= most_pixels;
}

Png_Layout::Png_Layout(const Image_Form& form)
    : width_(form.width), height_(form.height), sample_row_bytes_(form.row_bytes()), colors_(static_cast<Colors>(form.colors)),
      sample_bits_(form.sample_bits), palette_(form.palette) {
    if (colors_ == Colors::palette) {
        sample_bits_ = bits_for(palette_.size() / 3);
    } else if (colors_ == Colors::red_green_blue_alpha && form.opaque) {
        colors_ = Colors::red_green_blue;
    }
}

Png_Layout::Png_Layout(const Image_Form& form, const std::uint8_t* samples) : Png_Layout(form) {
    if (form.colors != Image_Form::Colors::red_green_blue_alpha) {
        return;
    }
    maps_colors_ = find_colors(samples);
    if (!maps_colors_ && is_opaque(samples)) {
        colors_ = Colors::red_green_blue;
    }
}

bool Png_Layout::is_opaque(const std::uint8_t* samples) const noexcept {
    std::uint8_t alphas = 255;
    for (std::size_t i = 3; i < height_ * sample_row_bytes_; i += 4) {
        alphas &= samples[i];
    }
    return alphas == 255;
}

std::size_t Png_Layout::channels() const noexcept {
    return colors_ == Colors::red_green_blue_alpha ? 4 : colors_ == Colors::red_green_blue ? 3 : 1;
}

std::size_t Png_Layout::row_bytes() const noexcept {
    return (width_ * channels() * static_cast<std::size_t>(sample_bits_) + 7) / 8;
}

std::size_t Png_Layout::step() const noexcept {
    return std::max<std::size_t>(channels() * static_cast<std::size_t>(sample_bits_) / 8, 1);
}

// Where a colour is in the table, or would be.
std::size_t Png_Layout::place_of(Color color) const noexcept {
    std::size_t place = color * 2654435761U >> 22;
    while (indices_[place] >= 0 && keys_[place] != color) {
        place = (place + 1) % table_size;
    }
    return place;
}

// False when there are too many.
bool Png_Layout::find_colors(const std::uint8_t* samples) {
    keys_.assign(table_size, 0);
    indices_.assign(table_size, -1);
    std::vector<Color> found;
    Color last = ~color_at(samples);
    for (const std::uint8_t* end = samples + height_ * sample_row_bytes_; samples < end; samples += 4) {
        const Color color = color_at(samples);
        if (color == last) {
            continue;
        }
        last = color;
        const std::size_t place = place_of(color);
        if (indices_[place] < 0) {
            if (found.size() == most_colors) {
                return false;
            }
            keys_[place] = color;
            indices_[place] = 0;
            found.push_back(color);
        }
    }
    use_palette(std::move(found));
    return true;
}

// Colours that are not opaque come first, since a file lists the alphas of the first ones.
void Png_Layout::use_palette(std::vector<Color> colors) {
    std::ranges::sort(colors, {}, [](Color color) {
        const auto [red, green, blue, alpha] = bytes_of(color);
        return std::array{alpha, red, green, blue};
    });
    palette_.clear();
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const auto color = bytes_of(colors[i]);
        palette_.append(reinterpret_cast<const char*>(color.data()), 3);
        if (color[3] != 255) {
            transparency_ += static_cast<char>(color[3]);
        }
        indices_[place_of(colors[i])] = static_cast<std::int16_t>(i);
    }
    colors_ = Colors::palette;
    sample_bits_ = bits_for(colors.size());
}

void Png_Layout::store_row(const std::uint8_t* samples, std::uint8_t* row) const {
    if (colors_ == Colors::red_green_blue) {
        store_opaque(samples, row);
    } else if (maps_colors_ || sample_bits_ < 8) {
        store_indices(samples, row);
    } else {
        std::memcpy(row, samples, sample_row_bytes_);
    }
}

void Png_Layout::load_row(const std::uint8_t* row, std::uint8_t* samples) const {
    if (colors_ == Colors::red_green_blue) {
        for (std::size_t i = 0; i < width_; ++i) {
            std::memcpy(samples + 4 * i, row + 3 * i, 3);
            samples[4 * i + 3] = 255;
        }
    } else if (sample_bits_ < 8) {
        const auto bits = static_cast<std::size_t>(sample_bits_);
        for (std::size_t i = 0; i < width_; ++i) {
            const std::size_t shift = 8 - bits - i * bits % 8;
            samples[i] = static_cast<std::uint8_t>(row[i * bits / 8] >> shift & ((1U << bits) - 1));
        }
    } else {
        std::memcpy(samples, row, sample_row_bytes_);
    }
}

void Png_Layout::store_opaque(const std::uint8_t* samples, std::uint8_t* row) const {
    std::uint8_t alphas = 255;
    for (std::size_t i = 0; i < width_; ++i) {
        row[3 * i] = samples[4 * i];
        row[3 * i + 1] = samples[4 * i + 1];
        row[3 * i + 2] = samples[4 * i + 2];
        alphas &= samples[4 * i + 3];
    }
    if (alphas != 255) {
        throw std::runtime_error("expected opaque pixels, found one that is not");
    }
}

void Png_Layout::store_indices(const std::uint8_t* samples, std::uint8_t* row) const {
    const int bits = sample_bits_;
    int filled = 0;
    unsigned byte = 0;
    Color last = 0;
    unsigned index = 0;
    for (std::size_t i = 0; i < width_; ++i) {
        if (maps_colors_) {
            if (const Color color = color_at(samples + 4 * i); i == 0 || color != last) {
                last = color;
                index = static_cast<unsigned>(indices_[place_of(color)]);
            }
        } else {
            index = samples[i];
        }
        byte = byte << bits | index;
        filled += bits;
        if (filled == 8) {
            *row++ = static_cast<std::uint8_t>(byte);
            filled = 0;
            byte = 0;
        }
    }
    if (filled > 0) {
        *row = static_cast<std::uint8_t>(byte << (8 - filled));
    }
}

} // namespace vorna::drawing
