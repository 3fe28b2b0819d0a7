// Letters at their places in an image, and the pixels that they cover.
#include "drawing/map/lettering.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace vorna::drawing::map {
namespace {

// Where a point of the outline lies.
Position place_in(const Placed_Letter& letter, Position p) {
    return {letter.at.x + p.x * letter.along.x - p.y * letter.along.y, letter.at.y + p.x * letter.along.y + p.y * letter.along.x};
}

// What outlines cover of each pixel of an area. Each side of an outline adds, to the cells that it passes, its height and the
// area to its left; sums from the left of a row give how often a pixel is enclosed. Outlines that overlap count once.
class Coverage {
public:
    explicit Coverage(const VT_Int_Rectangle& area)
        : area_(area), width_(std::int64_t{area.right} - area.left + 1), height_(std::int64_t{area.top} - area.bottom + 1),
          cells_(static_cast<std::size_t>(width_ * height_)) {}

    void add_side(Position a, Position b) {
        Place low = fixed(a), high = fixed(b);
        const int sign = low.y < high.y ? 1 : -1;
        if (sign < 0) {
            std::swap(low, high);
        }
        const std::int64_t first = std::max<std::int64_t>(low.y >> bits, 0);
        const std::int64_t last = std::min((high.y - 1) >> bits, height_ - 1);
        const auto x_at = [&](std::int64_t y) { return low.x + floored((high.x - low.x) * (y - low.y), high.y - low.y); };
        for (std::int64_t row = first; row <= last && low.y < high.y; ++row) {
            const std::int64_t from = std::max(low.y, row << bits), to = std::min(high.y, (row + 1) << bits);
            add_in_row(row, x_at(from), x_at(to), to - from, sign);
        }
    }

    std::vector<std::uint8_t> shares() const {
        std::vector<std::uint8_t> shares(cells_.size());
        for (std::int64_t row = 0; row < height_; ++row) {
            std::int64_t height = 0;
            for (auto i = static_cast<std::size_t>(row * width_), end = i + static_cast<std::size_t>(width_); i < end; ++i) {
                height += cells_[i].height;
                const std::int64_t share = std::abs(2 * one * height - cells_[i].left_area) >> (bits + 1);
                shares[i] = static_cast<std::uint8_t>(std::min<std::int64_t>(share, 255));
            }
        }
        return shares;
    }

private:
    static constexpr int bits = 8; // of fractions of a pixel
    static constexpr std::int64_t one = 1 << bits;

    struct Place {
        std::int64_t x, y;
    };
    struct Cell {
        std::int64_t height = 0, left_area = 0; // the area twice
    };

    static std::int64_t floored(std::int64_t dividend, std::int64_t divisor) {
        const std::int64_t quotient = dividend / divisor;
        return dividend % divisor < 0 ? quotient - 1 : quotient;
    }

    Place fixed(Position p) const {
        const auto whole = [](double value, std::int32_t from) {
            constexpr double farthest = 1 << 30;
            return std::llround(std::clamp(value, -farthest, farthest) * one) - from * one;
        };
        return {whole(p.x, area_.left), whole(p.y, area_.bottom)};
    }

    // A part of a side within one row.
    void add_in_row(std::int64_t row, std::int64_t from, std::int64_t to, std::int64_t height, int sign) {
        Cell* const cells = &cells_[static_cast<std::size_t>(row * width_)];
        const std::int64_t left = std::min(from, to), right = std::max(from, to);
        const auto height_at = [&](std::int64_t x) { return right > left ? height * (x - left) / (right - left) : height; };
        std::int64_t before = 0;
        if (left < 0) { // whatever lies beside the area counts for the whole row
            before = right <= 0 ? height : height_at(0);
            cells[0].height += sign * before;
        }
        for (std::int64_t column = std::max<std::int64_t>(left >> bits, 0); column < width_ && before < height; ++column) {
            const std::int64_t begin = std::max(left, column * one), end = std::min(right, (column + 1) * one);
            const std::int64_t here = (end == right ? height : height_at(end)) - before;
            cells[column].height += sign * here;
            cells[column].left_area += sign * here * (begin + end - 2 * column * one);
            before += here;
        }
    }

    VT_Int_Rectangle area_;
    std::int64_t width_, height_;
    std::vector<Cell> cells_;
};

// Widens the covered part by a round brush: a covered pixel reaches half a pixel from its centre, and so does the one that is
// drawn. Pixels whose neighbours are covered as well add nothing to what these cover.
std::vector<std::uint8_t> widened(const std::vector<std::uint8_t>& shares, std::int32_t width, std::int32_t height,
                                  double radius) {
    const auto reach = static_cast<std::int32_t>(std::ceil(radius));
    const std::int32_t side = 2 * reach + 1;
    std::vector<std::uint8_t> brush;
    for (std::int32_t y = -reach; y <= reach; ++y) {
        for (std::int32_t x = -reach; x <= reach; ++x) {
            const double inside = radius + 1 - std::sqrt(static_cast<double>(x * x + y * y));
            brush.push_back(static_cast<std::uint8_t>(std::lround(255 * std::clamp(inside, 0.0, 1.0))));
        }
    }
    std::vector<std::uint8_t> result = shares;
    const auto share = [&](std::int32_t x, std::int32_t y) {
        return x < 0 || y < 0 || x >= width || y >= height
                   ? 0
                   : int{shares[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]};
    };
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const int own = share(x, y);
            if (own == 0 || (own == 255 && share(x - 1, y) == 255 && share(x + 1, y) == 255 && share(x, y - 1) == 255 &&
                             share(x, y + 1) == 255)) {
                continue;
            }
            const std::int32_t left = std::max(x - reach, 0), right = std::min(x + reach, width - 1);
            for (std::int32_t row = std::max(y - reach, 0); row <= std::min(y + reach, height - 1); ++row) {
                const std::uint8_t* brush_row = &brush[static_cast<std::size_t>((row - y + reach) * side + left - x + reach)];
                std::uint8_t* to =
                    &result[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) + static_cast<std::size_t>(left)];
                for (std::int32_t column = left; column <= right; ++column, ++brush_row, ++to) {
                    *to = std::max(*to, static_cast<std::uint8_t>(own * *brush_row / 255));
                }
            }
        }
    }
    return result;
}

} // namespace

void Lettering::add(const Text& text, Position at) {
    for (const Letter& letter : text.letters) {
        letters.push_back({letter.outline, {at.x + letter.at.x, at.y + letter.at.y}, {text.size, 0}});
    }
}

void Lettering::find_box() {
    double left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY;
    for (const Placed_Letter& letter : letters) {
        for (const Path& ring : *letter.outline) {
            for (const Position& p : ring) {
                const Position place = place_in(letter, p);
                left = std::min(left, place.x);
                right = std::max(right, place.x);
                bottom = std::min(bottom, place.y);
                top = std::max(top, place.y);
            }
        }
    }
    const auto whole = [](double value) { return static_cast<std::int32_t>(std::clamp<double>(value, -(1 << 30), 1 << 30)); };
    const double beside = std::ceil(paint.halo_width) + 1;
    box = left <= right ? VT_Int_Rectangle{whole(std::floor(left - beside)), whole(std::ceil(right + beside)),
                                           whole(std::floor(bottom - beside)), whole(std::ceil(top + beside))}
                        : VT_Int_Rectangle{0, -1, 0, -1};
}

Face face_of(const Text& text, Position at) {
    Lettering lettering;
    lettering.add(text, at);
    Face face;
    for (const Placed_Letter& letter : lettering.letters) {
        for (const Path& ring : *letter.outline) {
            Path& placed = face.emplace_back(ring);
            std::ranges::transform(ring, placed.begin(), [&](Position p) { return place_in(letter, p); });
        }
    }
    return face;
}

void for_each_area(const Lettering& lettering, std::int32_t times, const VT_Int_Rectangle& window,
                   const std::function<void(const Letter_Pixels&)>& draw) {
    constexpr std::int32_t band_pixels = 1 << 20; // at a time
    const VT_Int_Rectangle& box = lettering.box;
    const double radius = lettering.paint.halo_width * times;
    const std::int32_t beside = radius > 0 ? static_cast<std::int32_t>(std::ceil(radius)) : 0;
    VT_Int_Rectangle seen{std::max(box.left * times, window.left), std::min(box.right * times + times - 1, window.right),
                          std::max(box.bottom * times, window.bottom), std::min(box.top * times + times - 1, window.top)};
    const std::int32_t band = std::max(16, band_pixels / std::max(seen.right - seen.left + 1, 1)); // rows
    for (; seen.left <= seen.right && seen.bottom <= seen.top; seen.bottom += band) {
        Letter_Pixels pixels{{seen.left, seen.right, seen.bottom, std::min(seen.bottom + band - 1, seen.top)}, {}, {}};
        const VT_Int_Rectangle& area = pixels.area;
        Coverage coverage({area.left - beside, area.right + beside, area.bottom - beside, area.top + beside});
        for (const Placed_Letter& letter : lettering.letters) {
            const Placed_Letter enlarged{
                letter.outline, {letter.at.x * times, letter.at.y * times}, {letter.along.x * times, letter.along.y * times}};
            for (const Path& ring : *letter.outline) {
                for (std::size_t i = 0; i < ring.size(); ++i) {
                    coverage.add_side(place_in(enlarged, ring[i]), place_in(enlarged, ring[(i + 1) % ring.size()]));
                }
            }
        }
        pixels.letters = coverage.shares();
        if (beside > 0) {
            const std::int32_t width = area.right - area.left + 1, height = area.top - area.bottom + 1;
            const auto inner = [&](const std::vector<std::uint8_t>& wide) {
                std::vector<std::uint8_t> shares;
                for (std::int32_t row = 0; row < height; ++row) {
                    const auto begin = wide.begin() + std::ptrdiff_t{row + beside} * (width + 2 * beside) + beside;
                    shares.insert(shares.end(), begin, begin + width);
                }
                return shares;
            };
            pixels.halo = inner(widened(pixels.letters, width + 2 * beside, height + 2 * beside, radius));
            pixels.letters = inner(pixels.letters);
        }
        draw(pixels);
    }
}

} // namespace vorna::drawing::map
