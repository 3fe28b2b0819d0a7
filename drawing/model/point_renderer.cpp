// Draws the points of a model.
#include "drawing/model/point_renderer.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "drawing/model/vectors.h"
#include "drawing/model/viewport.h"
#include "vorna/draw.h"

namespace vorna::drawing::model {
namespace {

constexpr std::int32_t smallest_chosen = 2, largest_chosen = 8;

// Points together have half as many pixels as the image, as far as sizes of single points allow.
std::int32_t chosen_size(std::int64_t width, std::int64_t height, std::size_t count) {
    const double each = 0.5 * static_cast<double>(width * height) / static_cast<double>(count);
    return std::clamp(static_cast<std::int32_t>(std::min(std::sqrt(each), 1e6)), smallest_chosen, largest_chosen);
}

std::uint8_t dimmed(std::uint8_t channel, std::int32_t depth) {
    constexpr std::int32_t range = 0xFFFF, lost = 9, of = 16; // of the brightness at the farthest depth
    return static_cast<std::uint8_t>(channel * (of * range - lost * depth) / (of * range));
}

// A square or an octagon of a size as the strip that covers it, around the place 0, 0. Strips leave out their last column and
// row.
std::vector<VT_Int_Pair> shape_of(std::int32_t size) {
    const std::int32_t low = -(size / 2), high = low + size;
    if (size <= 2) {
        return {{low, low}, {high, low}, {low, high}, {high, high}};
    }
    const std::int32_t cut = (size * 3 + 5) / 10, left = low + cut, right = high - cut;
    return {{left, low}, {right, low}, {low, left}, {high, left}, {low, right}, {high, right}, {left, high}, {right, high}};
}

} // namespace

Point_Renderer::Point_Renderer(const Mesh& mesh, VT_RGB32 base_color, bool own_colors)
    : positions_(mesh.points.size()), has_colors_(own_colors && !mesh.colors.empty()) {
    own_colors_.push_back(base_color);
    if (has_colors_) {
        own_colors_.resize(count());
    }
    const bool has_normals = !mesh.point_normals.empty();
    if (has_normals) {
        surfaces_.resize(count());
    }
    for (std::size_t p = 0; p < count(); ++p) {
        const std::uint32_t vertex = mesh.points[p];
        positions_.set(p, mesh.positions[vertex]);
        if (has_colors_) {
            const VT_RGB32 own = mesh.colors[vertex];
            own_colors_[p] = own.alpha == 0 ? base_color : own;
        }
        if (has_normals) {
            surfaces_.set(p, mesh.point_normals[p], mesh.positions[vertex]);
        }
    }
    if (has_normals) {
        std::ranges::for_each(own_colors_, [this](VT_RGB32 color) { surfaces_.add_color(color); });
    }
}

std::int32_t Point_Renderer::size_in(VT_Int_Pair image, const Point_Settings& settings) const {
    return settings.size > 0 ? settings.size : chosen_size(image.x, image.y, count());
}

void Point_Renderer::prepare(const Tile_Grid& grid, const Camera& camera, const Point_Settings& settings) {
    const std::int32_t width = grid.frame.right - grid.frame.left, height = grid.frame.top - grid.frame.bottom;
    const std::int32_t n = settings.enlarged;
    size_ = n * size_in({width / n, height / n}, settings);
    projection_.project(positions_, camera, grid.frame);
    set_colors(camera, settings);
    if (settings.over_faces) {
        // Enough for faces that rise by 45 degrees, in a model as deep as it is wide.
        const auto lift = static_cast<std::int32_t>(std::int64_t{size_ / 2 + 2} * 0xFFFF / std::max({width, height, size_}));
        for (VT_DCI_Point& p : projection_.device_points) {
            p.z = std::max(p.z - lift, 0);
        }
    }
    bins_.start(grid, size_);
    if (bins_.sorts()) {
        for (std::size_t p = 0; p < count(); ++p) {
            if (projection_.planes[p] == 0) {
                Extent extent;
                extent.include(projection_.device_points[p]);
                bins_.add(static_cast<std::uint32_t>(p), extent);
            }
        }
        bins_.finish();
    }
}

void Point_Renderer::set_colors(const Camera& camera, const Point_Settings& settings) {
    const auto own_color = [this](std::size_t p) { return own_colors_[has_colors_ ? p : 0]; };
    colors_.resize(count());
    if (surfaces_.size() == 0) {
        for (std::size_t p = 0; p < count(); ++p) {
            const VT_RGB32 own = own_color(p);
            const std::int32_t depth = has_colors_ || settings.over_faces ? 0 : projection_.device_points[p].z;
            colors_[p] = {dimmed(own.blue, depth), dimmed(own.green, depth), dimmed(own.red, depth), 255};
        }
        return;
    }
    const Lighting lighting(camera, settings.light, settings.specular);
    lighting.shade_fronts(surfaces_, 0, count(), colors_);
    std::vector<VT_RGB32> backs(count());
    lighting.shade_backs(surfaces_, 0, count(), backs);
    for (std::size_t p = 0; p < count(); ++p) {
        if (const VT_Vector normal = surfaces_.normals[p]; dot(normal, normal) == 0) {
            colors_[p] = own_color(p);
        } else if (!surfaces_.face_viewer(p, camera)) {
            colors_[p] = backs[p];
        }
    }
}

void Point_Renderer::draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const {
    const std::vector<VT_Int_Pair> shape = shape_of(size_);
    const auto corners = static_cast<std::int32_t>(shape.size());
    std::array<VT_DCI_Point, 8> strip;
    bins_.for_each(tile, count(), [&](std::size_t p) {
        if (projection_.planes[p] != 0) {
            return;
        }
        const VT_DCI_Point& place = projection_.device_points[p];
        for (std::size_t i = 0; i < shape.size(); ++i) {
            strip[i] = {place.x + shape[i].x, place.y + shape[i].y, place.z};
        }
        VD_Draw_DCI_Colorized_Polytriangle(renderer, rendition, corners, strip.data(), &colors_[p], true);
    });
}

} // namespace vorna::drawing::model
