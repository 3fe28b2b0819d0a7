// Draws a model with its materials.
#include "drawing/model/textured_scene.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "drawing/model/facing.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;

std::uint8_t planes_beyond(const Clip_Point& p) noexcept {
    return static_cast<std::uint8_t>((p.x < -p.w) * beyond::left + (p.x > p.w) * beyond::right + (p.y < -p.w) * beyond::bottom +
                                     (p.y > p.w) * beyond::top + (p.z < 0) * beyond::near + (p.z > p.w) * beyond::far);
}

} // namespace

Textured_Scene::Textured_Scene(const Mesh& mesh, const Facing& facing, VT_RGB32 base_color, bool own_colors,
                               std::vector<std::string>& warnings, Load_Limits& limits) {
    paints_ = load_paints(mesh, warnings, limits);
    order_triangles(mesh, facing);
    set_colors(mesh, lay_out(mesh), base_color, own_colors);
}

bool Textured_Scene::has_work(const Mesh& mesh) {
    return std::ranges::any_of(mesh.materials,
                               [](const Material& material) { return material.has_image() || material.opacity < 1; });
}

// By material, for few changes between them.
void Textured_Scene::order_triangles(const Mesh& mesh, const Facing& facing) {
    const auto plain = static_cast<std::uint32_t>(mesh.materials.size());
    std::vector<std::uint32_t> paints(mesh.triangle_count(), plain);
    std::ranges::transform(mesh.triangle_materials, paints.begin(),
                           [=](std::uint32_t m) { return m == no_material ? plain : m; });
    std::vector<std::size_t> order(mesh.triangle_count());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {},
                             [&](std::size_t t) { return std::pair(paints_.by_material[paints[t]].translucent, paints[t]); });
    faces_.resize(order.size());
    hides_backs_ = facing.hides_backs() && std::ranges::none_of(paints_.by_material, [](const Paint& paint) {
                       return paint.texture && paint.texture->transparency() != Transparency::none;
                   });
    for (const std::size_t t : order) {
        const std::uint32_t* corners = &mesh.triangles[3 * t];
        faces_.set(triangles_.size(), facing.normals()[t], mesh.positions[corners[0]]);
        triangles_.push_back({corners[0], corners[1], corners[2]});
        triangle_paints_.push_back(paints[t]);
        opaque_count_ += !paints_.by_material[paints[t]].translucent;
    }
}

// Keeps the vertices that are drawn, and numbers them anew. Gives their old numbers.
std::vector<std::uint32_t> Textured_Scene::lay_out(const Mesh& mesh) {
    std::vector<std::uint32_t> new_number(mesh.positions.size(), none);
    std::vector<std::uint32_t> kept;
    for (auto& triangle : triangles_) {
        for (std::uint32_t& vertex : triangle) {
            std::uint32_t& number = new_number[vertex];
            if (number == none) {
                number = static_cast<std::uint32_t>(kept.size());
                kept.push_back(vertex);
            }
            vertex = number;
        }
    }
    vertices_.resize(kept.size());
    points_.reserve(kept.size());
    coordinates_.reserve(kept.size());
    for (std::size_t v = 0; v < kept.size(); ++v) {
        points_.push_back(mesh.positions[kept[v]]);
        coordinates_.push_back(mesh.coordinates.empty() ? Texture_Point{} : mesh.coordinates[kept[v]]);
        vertices_.set(v, mesh.normals[kept[v]], points_[v]);
    }
    return kept;
}

// What a texture is seen through is white unless the model says otherwise.
void Textured_Scene::set_colors(const Mesh& mesh, const std::vector<std::uint32_t>& vertices, VT_RGB32 base_color,
                                bool own_colors) {
    std::vector<VT_RGB32> colors(points_.size(), base_color);
    if (own_colors) {
        for (std::size_t t = 0; t < triangles_.size(); ++t) {
            const Texture* texture = paints_.by_material[triangle_paints_[t]].texture;
            const bool textured = texture && !texture->name().empty();
            for (const std::uint32_t vertex : triangles_[t]) {
                const VT_RGB32 own = mesh.colors.empty() ? VT_RGB32{0, 0, 0, 0} : mesh.colors[vertices[vertex]];
                colors[vertex] = own.alpha != 0 ? own : textured ? VT_RGB32{255, 255, 255, 255} : base_color;
            }
        }
    }
    const std::vector<std::uint32_t> materials = own_colors ? vertex_materials(mesh) : std::vector<std::uint32_t>();
    const bool has_images = std::ranges::any_of(mesh.materials, &Material::has_image);
    const std::vector<Texture_Area> areas = own_colors && has_images ? vertex_areas(mesh) : std::vector<Texture_Area>();
    for (std::size_t v = 0; v < colors.size(); ++v) {
        vertices_.add_color(colors[v]);
        if (materials.empty()) {
            continue;
        }
        const std::uint32_t material = materials[vertices[v]];
        if (material == no_material) {
            vertices_.add_finish({}, colors[v]);
            continue;
        }
        const Paint& paint = paints_.by_material[material];
        const Texture_Area area = areas.empty() ? Texture_Area() : areas[vertices[v]];
        const float lightness = !paint.highlights_apart ? -1.0F : paint.lightness ? paint.lightness->of(area) : 1.0F;
        vertices_.add_finish(finish_at(mesh.materials[material], paint, area), colors[v], lightness);
    }
}

std::string Textured_Scene::summary() const {
    std::string text = std::to_string(triangles_.size()) + " triangles";
    for (const auto& texture : paints_.textures) {
        if (!texture->name().empty()) {
            text += ", texture " + texture->name() + " " + texture->summary();
        }
    }
    return text;
}

void Textured_Scene::transform(const Camera& camera) {
    clip_points_.resize(points_.size());
    beyond_.resize(points_.size());
    for (std::size_t v = 0; v < points_.size(); ++v) {
        clip_points_[v] = transformed(camera.clip_from_model, points_[v]);
        beyond_[v] = planes_beyond(clip_points_[v]);
    }
}

// Opaque triangles seen from behind come first: at the outline of a body they have depths like those of the ones that hide them,
// and of equal depths the one drawn last is seen. Translucent ones are sorted by the distance of their centroids.
void Textured_Scene::order_drawing(const Camera& camera) {
    std::vector<double> nearness(triangles_.size() - opaque_count_);
    for (std::size_t t = opaque_count_; t < triangles_.size(); ++t) {
        VT_Vector_D centroid;
        for (const std::uint32_t vertex : triangles_[t]) {
            centroid = centroid + widened(points_[vertex]) * (1.0 / 3);
        }
        nearness[t - opaque_count_] = camera.eye_is_place ? -length(camera.eye - centroid) : dot(camera.toward, centroid);
    }
    order_.resize(triangles_.size());
    std::iota(order_.begin(), order_.end(), 0U);
    const auto translucent = order_.begin() + static_cast<std::ptrdiff_t>(opaque_count_);
    std::stable_partition(order_.begin(), translucent, [&](std::uint32_t t) { return !faces_.face_viewer(t, camera); });
    std::ranges::stable_sort(translucent, order_.end(), {}, [&](std::uint32_t t) { return nearness[t - opaque_count_]; });
}

void Textured_Scene::prepare(const Tile_Grid& grid, const Camera& camera, const Model_Look& settings) {
    camera_ = camera;
    viewport_ = Viewport(grid.frame);
    transform(camera);
    const bool stands_outside = std::ranges::none_of(beyond_, [](std::uint8_t planes) { return (planes & beyond::near) != 0; });
    cull_backs_ = settings.culling == Culling::back || (hides_backs_ && stands_outside);
    tints_.resize(vertices_, !cull_backs_);
    tints_.set(vertices_, 0, vertices_.size(), camera, settings);
    has_highlights_ = settings.tint == Tint::lit && !vertices_.texture_lightness.empty();
    order_drawing(camera);
    bins_.start(grid);
    if (bins_.sorts()) {
        for (std::size_t place = 0; place < order_.size(); ++place) {
            bins_.add(static_cast<std::uint32_t>(place), extent_of(order_[place]));
        }
        bins_.finish();
    }
}

void Textured_Scene::draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const {
    const VT_Reference<VT_Rendition> own(new VT_Rendition(rendition));
    Textured_Triangles triangles(renderer, *own, viewport_);
    bins_.for_each(tile, order_.size(), [&](std::size_t place) { draw_triangle(triangles, order_[place]); });
}

// What is seen of a triangle, perhaps nothing.
Clip_Polygon Textured_Scene::clipped(std::size_t triangle) const {
    const bool front = faces_.face_viewer(triangle, camera_);
    if (!front && cull_backs_) {
        return {};
    }
    std::array<Clip_Vertex, 3> vertices;
    std::uint8_t planes = 0, common = 0xFF;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::uint32_t vertex = triangles_[triangle][i];
        const Texture_Point& place = coordinates_[vertex];
        vertices[i] = {clip_points_[vertex], (front ? tints_.front : tints_.back)[vertex], static_cast<int>(i), place.u, place.v};
        planes |= beyond_[vertex];
        common &= beyond_[vertex];
    }
    return common != 0 ? Clip_Polygon{} : clip_triangle(vertices, planes);
}

Extent Textured_Scene::extent_of(std::size_t triangle) const {
    const Clip_Polygon polygon = clipped(triangle);
    Extent extent;
    for (std::size_t i = 0; i < polygon.count; ++i) {
        const Clip_Point& p = polygon.vertices[i].point;
        extent.include(viewport_.device_point(static_cast<float>(p.x / p.w), static_cast<float>(p.y / p.w), 0));
    }
    return extent;
}

void Textured_Scene::draw_triangle(Textured_Triangles& triangles, std::size_t triangle) const {
    const Clip_Polygon polygon = clipped(triangle);
    const Paint& paint = paints_.by_material[triangle_paints_[triangle]];
    std::array<Textured_Corner, 9> corners;
    // color(vertex): of a corner.
    const auto draw_with = [&](Texture* texture, const auto& color) {
        triangles.set_texture(texture);
        for (std::size_t i = 0; i < polygon.count; ++i) {
            const Clip_Vertex& vertex = polygon.vertices[i];
            const VT_RGB32 shown = color(vertex.color);
            corners[i] = {vertex.point,
                          vertex.u,
                          vertex.v,
                          static_cast<float>(shown.blue),
                          static_cast<float>(shown.green),
                          static_cast<float>(shown.red),
                          static_cast<float>(shown.alpha),
                          0,
                          0,
                          {}};
            corners[i].place(viewport_);
        }
        for (std::size_t i = 2; i < polygon.count; ++i) {
            triangles.draw(corners[0], corners[i - 1], corners[i]);
        }
    };
    draw_with(paint.texture, [&](const VT_RGB32& lit) { return VT_RGB32{lit.blue, lit.green, lit.red, paint.alpha}; });
    if (paint.emission) {
        draw_with(paint.emission, [&](const VT_RGB32&) { return paint.emission_color; });
    }
    constexpr std::uint8_t least_seen = 4; // fainter highlights are left out
    const auto end = polygon.vertices.begin() + static_cast<std::ptrdiff_t>(polygon.count);
    if (paint.highlights_apart && has_highlights_ &&
        std::any_of(polygon.vertices.begin(), end, [](const Clip_Vertex& vertex) { return vertex.color.alpha >= least_seen; })) {
        draw_with(paints_.white, [](const VT_RGB32& lit) { return VT_RGB32{255, 255, 255, lit.alpha}; });
    }
}

} // namespace vorna::drawing::model
