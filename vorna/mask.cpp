// The mask of a clip region: even-odd rule over all contours, decided at pixel centres.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <vector>

#include "host/contour.h"
#include "host/frame_buffer.h"
#include "vorna/exact.h"
#include "vorna/raster.h"

// Each edge inverts, in each row that it crosses, the bit of the first pixel that is not left of it. A pixel is inside when an
// odd number of inverted bits precedes or equals its own, which one pass over the row finds; no list of edges and no sorting is
// needed. An edge covers the rows whose centres lie from its lower end, inclusive, to its upper end, exclusive. So a row through
// a vertex meets it once, and two regions with a common edge neither share a pixel nor leave one out.

namespace {

constexpr unsigned first_bit = 0x80;

// Corners that are not finite are left out of their contour.
bool is_finite(const VT_Point& point) noexcept {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

struct Exact_Point {
    double x, y;
};

// An edge with its lower end first, in whichever direction its contour runs: both regions at an edge find the same crossings.
struct Upward_Edge {
    Upward_Edge(const VT_Point& a, const VT_Point& b) noexcept
        : low(a.y <= b.y ? Exact_Point{a.x, a.y} : Exact_Point{b.x, b.y}),
          high(a.y <= b.y ? Exact_Point{b.x, b.y} : Exact_Point{a.x, a.y}), slope((high.x - low.x) / (high.y - low.y)) {}

    Exact_Point low, high;
    double slope; // unused for a level edge, which crosses no row
};

// The first of count rows or columns whose centre, origin + i + 0.5, is not below the value; count when there is none.
std::int32_t first_centre(double value, double origin, std::int32_t count) noexcept {
    return static_cast<std::int32_t>(std::clamp(std::ceil(value - (origin + 0.5)), 0.0, static_cast<double>(count)));
}

// The first of width columns whose centre at height y is not left of the edge.
std::int32_t first_column(const Upward_Edge& edge, double y, double origin, std::int32_t width) noexcept {
    const double x = edge.low.x + edge.slope * (y - edge.low.y);
    std::int32_t column = first_centre(x, origin, width);
    // A bound of the rounding error of x; only a centre nearer to x than that needs an exact test.
    const double most_error = 1e-15 * (std::abs(edge.low.x) + std::abs(edge.high.x) + std::abs(origin) + width);
    const double centres = x - (origin + 0.5);
    if (std::abs(centres - std::nearbyint(centres)) > most_error) {
        return column;
    }
    const auto is_reached_by = [&](std::int32_t i) {
        return vorna::turn(edge.low, edge.high, Exact_Point{origin + i + 0.5, y}) <= 0;
    };
    while (column > 0 && is_reached_by(column - 1)) {
        --column;
    }
    while (column < width && !is_reached_by(column)) {
        ++column;
    }
    return column;
}

void flip_crossings(const Upward_Edge& edge, Frame_Buffer& raster, VT_Int_Pair size, VT_Int_Pair origin) noexcept {
    const std::int32_t end = first_centre(edge.high.y, origin.y, size.y);
    for (std::int32_t r = first_centre(edge.low.y, origin.y, size.y); r < end; ++r) {
        const std::int32_t column = first_column(edge, origin.y + r + 0.5, origin.x, size.x);
        if (column < size.x) {
            std::uint8_t& byte = raster.rows[r][column / 8];
            byte = static_cast<std::uint8_t>(byte ^ first_bit >> column % 8);
        }
    }
}

// Turns inverted bits into the mask: a bit is set where the number of inverted bits up to it is even.
void mask_outside(std::uint8_t* bytes, std::int32_t count) noexcept {
    unsigned outside = 0xFF;
    for (std::int32_t i = 0; i < count; ++i) {
        unsigned flips = bytes[i];
        flips ^= flips >> 1;
        flips ^= flips >> 2;
        flips ^= flips >> 4;
        bytes[i] = static_cast<std::uint8_t>(flips ^ outside);
        outside = bytes[i] & 1U ? 0xFF : 0;
    }
}

} // namespace

Frame_Buffer_Mask::Frame_Buffer_Mask() = default;
Frame_Buffer_Mask::~Frame_Buffer_Mask() = default;

void Frame_Buffer_Mask::establish_configuration(std::int32_t width, std::int32_t height, std::int32_t origin_x,
                                                std::int32_t origin_y) {
    const VT_Int_Pair size{width, height};
    if (width < 1 || height < 1) {
        raster_ = nullptr;
    } else if (!raster_ || size != size_) {
        raster_ = vorna::make_raster((width + 7) / 8 + 4, height, Buffer_Format::index8);
    }
    size_ = size;
    origin_ = {origin_x, origin_y};
    key_ = 0;
}

void Frame_Buffer_Mask::clear_and_rasterize_mask(const VT_Contour_Set& contours) {
    // The key is set last: after an exception, a half finished mask must not be found.
    key_ = 0;
    if (!raster_) {
        key_ = contours.serial();
        return;
    }
    for (std::int32_t r = 0; r < size_.y; ++r) {
        std::memset(raster_->rows[r], 0, static_cast<std::size_t>(raster_->bytes_per_row));
    }
    std::vector<VT_Point> points;
    for (const auto& contour : contours.contours()) {
        points.clear();
        std::copy_if(contour.begin(), contour.end(), std::back_inserter(points), is_finite);
        for (std::size_t i = 0; i < points.size(); ++i) {
            flip_crossings({points[i], points[i + 1 < points.size() ? i + 1 : 0]}, *raster_, size_, origin_);
        }
    }
    for (std::int32_t r = 0; r < size_.y; ++r) {
        mask_outside(raster_->rows[r], raster_->width);
    }
    key_ = contours.serial();
}

const std::uint8_t* Frame_Buffer_Mask::row(std::int32_t r) const noexcept {
    return raster_->rows[r];
}
