// Means of a channel of an image over rectangles of it.
#include "drawing/model/area_means.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vorna::drawing::model {
namespace {

std::uint32_t value_of(const VT_RGB32& pixel, Area_Means::Channel channel) {
    switch (channel) {
    case Area_Means::Channel::green:
        return pixel.green;
    case Area_Means::Channel::blue:
        return pixel.blue;
    default:
        return std::max({pixel.red, pixel.green, pixel.blue});
    }
}

} // namespace

void Texture_Area::include(const Texture_Point& place) {
    low = {std::min(low.u, place.u), std::min(low.v, place.v)};
    high = {std::max(high.u, place.u), std::max(high.v, place.v)};
}

std::vector<Texture_Area> vertex_areas(const Mesh& mesh) {
    std::vector<Texture_Area> areas(mesh.positions.size());
    for (std::size_t t = 0; t < (mesh.coordinates.empty() ? 0 : mesh.triangle_count()); ++t) {
        Texture_Area area;
        for (std::size_t k = 0; k < 3; ++k) {
            area.include(mesh.coordinates[mesh.triangles[3 * t + k]]);
        }
        for (std::size_t k = 0; k < 3; ++k) {
            areas[mesh.triangles[3 * t + k]].include(area.low);
            areas[mesh.triangles[3 * t + k]].include(area.high);
        }
    }
    return areas;
}

Area_Means::Area_Means(const Image& image, Channel channel, Wrap wrap_u, Wrap wrap_v)
    : wraps_{wrap_u, wrap_v}, columns_(static_cast<std::size_t>(std::min(image.width, most_cells))),
      rows_(static_cast<std::size_t>(std::min(image.height, most_cells))), sums_((columns_ + 1) * (rows_ + 1)) {
    const auto cell = [](std::int32_t place, std::int32_t size, std::size_t cells) {
        return static_cast<std::size_t>(place) * cells / static_cast<std::size_t>(size);
    };
    for (std::int32_t r = 0; r < image.height; ++r) {
        Sum* row = &sums_[(cell(r, image.height, rows_) + 1) * (columns_ + 1) + 1];
        for (std::int32_t c = 0; c < image.width; ++c) {
            Sum& sum = row[cell(c, image.width, columns_)];
            sum.values += value_of(image.row(r)[c], channel);
            ++sum.count;
        }
    }
    for (std::size_t r = 1; r <= rows_; ++r) {
        for (std::size_t c = 1; c <= columns_; ++c) {
            Sum& sum = sums_[r * (columns_ + 1) + c];
            sum.values += up_to(c - 1, r).values + up_to(c, r - 1).values - up_to(c - 1, r - 1).values;
            sum.count += up_to(c - 1, r).count + up_to(c, r - 1).count - up_to(c - 1, r - 1).count;
        }
    }
}

Area_Means::Range Area_Means::range(float low, float high, Wrap wrap, std::size_t cells) const {
    constexpr float border_width = 1.0F / 1024; // places this little beyond a border are meant to lie on it
    const float tile = std::floor(low + border_width);
    float first = low - tile, last = high - tile;
    if (!(std::isfinite(low) && std::isfinite(high))) {
        return {0, cells};
    }
    if (wrap == Wrap::clamp) {
        first = std::clamp(low, 0.0F, 1.0F);
        last = std::clamp(high, 0.0F, 1.0F);
    } else if (last > 1 + border_width) {
        return {0, cells};
    } else if (wrap == Wrap::mirror && std::fmod(tile, 2.0F) != 0) {
        first = 1 - std::exchange(last, 1 - first);
    }
    const auto count = static_cast<float>(cells);
    const auto begin = std::min(static_cast<std::size_t>(std::max(first, 0.0F) * count), cells - 1);
    const auto end = static_cast<std::size_t>(std::ceil(std::clamp(last, 0.0F, 1.0F) * count));
    return {begin, std::clamp(end, begin + 1, cells)};
}

float Area_Means::of(const Texture_Area& area) const {
    const Range columns = range(area.low.u, area.high.u, wraps_[0], columns_),
                up = range(area.low.v, area.high.v, wraps_[1], rows_), rows{rows_ - up[1], rows_ - up[0]};
    const auto difference = [&](std::uint64_t Sum::*part) {
        return up_to(columns[1], rows[1]).*part - up_to(columns[0], rows[1]).*part - up_to(columns[1], rows[0]).*part +
               up_to(columns[0], rows[0]).*part;
    };
    return static_cast<float>(static_cast<double>(difference(&Sum::values)) /
                              (255.0 * static_cast<double>(difference(&Sum::count))));
}

} // namespace vorna::drawing::model
