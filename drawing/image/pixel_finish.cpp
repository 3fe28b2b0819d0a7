// From drawn pixels to those of the file.
#include "drawing/image/pixel_finish.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "drawing/image/light_roots.h"

namespace vorna::drawing {
namespace {

// Red, green, blue and alpha of pixels that are the means of two by two. A word holds two channels with room for their sums.
void store_means_of_four(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width, std::uint8_t* samples) {
    constexpr std::uint32_t channels = 0x00FF00FF, half = 0x00020002;
    constexpr int blue_and_red = std::endian::native == std::endian::little ? 0 : 8, green_and_alpha = 8 - blue_and_red;
    for (std::size_t pixel = 0; pixel < width; ++pixel) {
        std::array<std::uint32_t, 4> drawn;
        std::memcpy(drawn.data(), upper + 8 * pixel, 8);
        std::memcpy(drawn.data() + 2, lower + 8 * pixel, 8);
        const auto mean = [&](int shift) {
            std::uint32_t sum = half;
            for (const std::uint32_t word : drawn) {
                sum += word >> shift & channels;
            }
            return sum >> 2 & channels;
        };
        const std::uint32_t color = std::rotl(mean(blue_and_red), 16) << blue_and_red | mean(green_and_alpha) << green_and_alpha;
        std::memcpy(samples + 4 * pixel, &color, sizeof color);
    }
}

} // namespace

Pixel_Finish::Pixel_Finish(const Finish_Settings& settings) : settings_(settings) {
    if (settings.palette) {
        palette_ = std::make_unique<Palette_Dither>(*settings.palette);
    }
    settings_.linear = settings.linear && settings.supersample > 1 && !settings.transparent;
    if (settings_.linear) {
        roots_ = make_light_roots();
    }
}

void Pixel_Finish::keep(const Raster& over_black) {
    const std::size_t row_bytes = 4 * static_cast<std::size_t>(over_black.width);
    kept_.resize(row_bytes * static_cast<std::size_t>(over_black.height));
    for (std::int32_t r = 0; r < over_black.height; ++r) {
        std::memcpy(&kept_[static_cast<std::size_t>(r) * row_bytes], over_black.top + r * over_black.row_bytes, row_bytes);
    }
}

// Blue, green, red and alpha of so many pixels of the file.
void Pixel_Finish::add_up(const std::uint8_t* top, std::ptrdiff_t row_bytes, std::size_t width,
                          std::vector<std::uint32_t>& sums) const {
    const auto n = static_cast<std::size_t>(settings_.supersample);
    sums.assign(4 * width, 0);
    for (std::size_t r = 0; r < n; ++r) {
        const std::uint8_t* drawn = top + static_cast<std::ptrdiff_t>(r) * row_bytes;
        for (std::size_t pixel = 0; pixel < width; ++pixel) {
            std::uint32_t* sum = &sums[4 * pixel];
            for (std::size_t i = 0; i < n; ++i, drawn += 4) {
                for (std::size_t channel = 0; channel < 4; ++channel) {
                    const std::uint32_t value = drawn[channel];
                    sum[channel] += settings_.linear ? value * value : value;
                }
            }
        }
    }
}

VT_RGB32 Pixel_Finish::mean(std::size_t pixel) const {
    const auto count = static_cast<std::uint32_t>(settings_.supersample * settings_.supersample);
    const auto channel = [&](std::size_t i) { return static_cast<std::uint8_t>((sums_[4 * pixel + i] + count / 2) / count); };
    return {channel(0), channel(1), channel(2), channel(3)};
}

VT_RGB32 Pixel_Finish::mean_of_light(std::size_t pixel) const {
    const auto count = static_cast<std::uint32_t>(settings_.supersample * settings_.supersample);
    const auto channel = [&](std::size_t i) { return roots_[(sums_[4 * pixel + i] + count / 2) / count]; };
    return {channel(0), channel(1), channel(2), channel(3)};
}

VT_RGB32 Pixel_Finish::transparent_color(std::size_t pixel) const {
    const std::uint32_t *white = &sums_[4 * pixel], *black = &black_sums_[4 * pixel];
    // Three channels' worth.
    const auto full = static_cast<std::uint32_t>(3 * 255 * settings_.supersample * settings_.supersample);
    std::uint32_t through = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        through += white[i] - std::min(black[i], white[i]);
    }
    const std::uint32_t hidden = full - std::min(through, full);
    const auto alpha = static_cast<std::uint8_t>((255 * hidden + full / 2) / full);
    if (alpha == 0) {
        return {0, 0, 0, 0};
    }
    const auto channel = [&](std::size_t i) {
        return static_cast<std::uint8_t>(std::min((3 * 255 * black[i] + hidden / 2) / hidden, 255U));
    };
    return {channel(0), channel(1), channel(2), alpha};
}

void Pixel_Finish::store_row(const Raster& drawn, std::int32_t row, VT_Int_Pair place, std::uint8_t* samples) {
    const std::int32_t first = row * settings_.supersample;
    const std::uint8_t* top = drawn.top + first * drawn.row_bytes;
    if (settings_.is_plain()) {
        store_samples(top, drawn.width, drawn.format, samples);
        return;
    }
    const auto width = static_cast<std::size_t>(drawn.width / settings_.supersample);
    if (settings_.supersample == 2 && !settings_.transparent && !settings_.linear && !palette_) {
        store_means_of_four(top, top + drawn.row_bytes, width, samples);
        return;
    }
    add_up(top, drawn.row_bytes, width, sums_);
    if (settings_.transparent) {
        const std::ptrdiff_t kept_bytes = 4 * std::ptrdiff_t{drawn.width};
        add_up(&kept_[static_cast<std::size_t>(first * kept_bytes)], kept_bytes, width, black_sums_);
    }
    for (std::size_t pixel = 0; pixel < width; ++pixel) {
        const VT_RGB32 color = settings_.transparent ? transparent_color(pixel)
                               : settings_.linear    ? mean_of_light(pixel)
                                                     : mean(pixel);
        if (palette_) {
            *samples++ = palette_->index(color, place.x + static_cast<std::int32_t>(pixel), place.y);
            continue;
        }
        *samples++ = color.red;
        *samples++ = color.green;
        *samples++ = color.blue;
        *samples++ = color.alpha;
    }
}

} // namespace vorna::drawing
