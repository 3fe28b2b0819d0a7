// How much two images differ, as measures of quality.
#include "drawing/image/image_measures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "drawing/image/pixel_values.h"

namespace vorna::drawing {

namespace {

// The colours of both images, row by row. Pixels that are not compared are those of the first image in both.
class Color_Pairs {
public:
    Color_Pairs(const Png_Image& a, const Png_Image& b, const Pixel_Mask* mask) : a_(a, true), b_(b, true), mask_(mask) {}

    bool counts(std::size_t i) const noexcept { return !mask_ || mask_->counts(i); }
    Pixel first(std::size_t i) const noexcept { return a_.at(i); }
    Pixel second(std::size_t i) const noexcept { return counts(i) ? b_.at(i) : a_.at(i); }
    double most() const noexcept { return a_.most(); }

private:
    Pixel_Values a_, b_;
    const Pixel_Mask* mask_;
};

std::optional<double> psnr_of(const Color_Pairs& pairs, std::size_t pixels, std::size_t channels) {
    std::uint64_t squares = 0, compared = 0; // below 2^28 pixels of 4 channels, each square below 2^32
    for (std::size_t i = 0; i < pixels; ++i) {
        if (!pairs.counts(i)) {
            continue;
        }
        const Pixel first = pairs.first(i), second = pairs.second(i);
        for (std::size_t c = 0; c < channels; ++c) {
            const std::int64_t difference = first[c] - second[c];
            squares += static_cast<std::uint64_t>(difference * difference);
        }
        ++compared;
    }
    if (squares == 0) {
        return {};
    }
    const double mean = static_cast<double>(squares) / (static_cast<double>(compared) * static_cast<double>(channels));
    return 10 * std::log10(pairs.most() * pairs.most() / mean);
}

constexpr std::size_t window = 11, reach = window / 2;

std::array<double, window> gaussian() {
    constexpr double sigma = 1.5;
    std::array<double, window> weights{};
    double sum = 0;
    for (std::size_t i = 0; i < window; ++i) {
        const double distance = static_cast<double>(i) - static_cast<double>(reach);
        weights[i] = std::exp(-distance * distance / (2 * sigma * sigma));
        sum += weights[i];
    }
    for (double& weight : weights) {
        weight /= sum;
    }
    return weights;
}

// Weighted means over a window: of both luminances, their squares and their product.
enum Moment : std::size_t { mean_a, mean_b, square_a, square_b, product, moment_count };
using Moments = std::array<std::vector<double>, moment_count>;

class Similarity {
public:
    Similarity(const Color_Pairs& pairs, std::size_t width) : pairs_(pairs), width_(width), places_(width - window + 1) {
        for (Moments& row : rows_) {
            for (std::vector<double>& moment : row) {
                moment.resize(places_);
            }
        }
        for (std::vector<double>& signal : signals_) {
            signal.resize(width);
        }
        for (std::vector<double>& moment : sums_) {
            moment.resize(places_);
        }
    }

    std::optional<double> mean(std::size_t height) {
        double sum = 0;
        std::size_t count = 0;
        for (std::size_t y = 0; y < height; ++y) {
            add_row(y);
            if (y + 1 < window) {
                continue;
            }
            combine(y + 1 - window);
            for (std::size_t x = 0; x < places_; ++x) {
                if (pairs_.counts((y - reach) * width_ + x + reach)) {
                    sum += at(x);
                    ++count;
                }
            }
        }
        return count > 0 ? std::optional(sum / static_cast<double>(count)) : std::nullopt;
    }

private:
    double luminance(const Pixel& color) const noexcept {
        return (0.299 * color[0] + 0.587 * color[1] + 0.114 * color[2]) * color[3] / pairs_.most();
    }

    // The means along a row.
    void add_row(std::size_t y) {
        for (std::size_t x = 0; x < width_; ++x) {
            const double a = luminance(pairs_.first(y * width_ + x)), b = luminance(pairs_.second(y * width_ + x));
            signals_[mean_a][x] = a;
            signals_[mean_b][x] = b;
            signals_[square_a][x] = a * a;
            signals_[square_b][x] = b * b;
            signals_[product][x] = a * b;
        }
        Moments& row = rows_[y % window];
        for (std::size_t m = 0; m < moment_count; ++m) {
            std::ranges::fill(row[m], 0.0);
            for (std::size_t i = 0; i < window; ++i) {
                add_weighted(signals_[m].data() + i, weights_[i], row[m]);
            }
        }
    }
    // The means of the window whose uppermost row is `top`, at all places along it.
    void combine(std::size_t top) {
        for (std::size_t m = 0; m < moment_count; ++m) {
            std::ranges::fill(sums_[m], 0.0);
            for (std::size_t i = 0; i < window; ++i) {
                add_weighted(rows_[(top + i) % window][m].data(), weights_[i], sums_[m]);
            }
        }
    }
    static void add_weighted(const double* values, double weight, std::vector<double>& sums) {
        for (std::size_t x = 0; x < sums.size(); ++x) {
            sums[x] += weight * values[x];
        }
    }
    double at(std::size_t x) const noexcept {
        const double c1 = 0.01 * pairs_.most() * (0.01 * pairs_.most()), c2 = 0.03 * pairs_.most() * (0.03 * pairs_.most());
        const double a = sums_[mean_a][x], b = sums_[mean_b][x];
        const double variance_a = sums_[square_a][x] - a * a, variance_b = sums_[square_b][x] - b * b;
        const double covariance = sums_[product][x] - a * b;
        return (2 * a * b + c1) * (2 * covariance + c2) / ((a * a + b * b + c1) * (variance_a + variance_b + c2));
    }

    const Color_Pairs& pairs_;
    std::size_t width_, places_;
    std::array<double, window> weights_ = gaussian();
    Moments signals_, sums_;
    std::array<Moments, window> rows_; // of the last rows, each at its number modulo their count
};

} // namespace

std::optional<Image_Measures> measure(const Png_Image& a, const Png_Image& b, const Pixel_Mask* mask) {
    if (a.width != b.width || a.height != b.height || (a.sample_bits == 16) != (b.sample_bits == 16)) {
        return {};
    }
    const Color_Pairs pairs(a, b, mask);
    const auto width = static_cast<std::size_t>(a.width), height = static_cast<std::size_t>(a.height);
    Image_Measures measures;
    measures.psnr = psnr_of(pairs, width * height, is_opaque(a) && is_opaque(b) ? 3 : 4);
    if (std::min(width, height) >= window) {
        measures.ssim = Similarity(pairs, width).mean(height);
    }
    return measures;
}

} // namespace vorna::drawing
