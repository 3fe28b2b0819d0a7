// Draws a model through a renderer.
#include "app/scene/scene_renderer.h"

#include <algorithm>
#include <cmath>

#include "app/scene/vectors.h"
#include "app/scene/viewport.h"
#include "vorna/draw.h"

namespace app::scene {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
} // namespace

// What stays the same over one picture.
struct Scene_Renderer::Drawing {
    VT_Renderer_Data& renderer;
    const VT_Rendition& rendition;
    const Camera& camera;
    Viewport viewport;
    bool flat;
    bool cull_backs;
};

Scene_Renderer::Scene_Renderer(const Mesh& mesh, VT_RGB32 base_color, bool own_colors) : triangle_count_(mesh.triangle_count()) {
    const Strips strips = make_strips(mesh.triangles, static_cast<std::uint32_t>(mesh.positions.size()));
    strip_starts_ = strips.starts;
    lay_out(mesh, strips);
    if (own_colors && !mesh.colors.empty()) {
        std::vector<VT_RGB32> colors(points_.size());
        for (std::size_t place = 0; place < strips.vertices.size(); ++place) {
            const VT_RGB32 own = mesh.colors[strips.vertices[place]];
            colors[strip_vertices_[place]] = own.alpha == 0 ? base_color : own;
        }
        std::ranges::for_each(colors, [this](VT_RGB32 color) { vertices_.add_color(color); });
        std::ranges::for_each(strip_vertices_, [&](std::uint32_t vertex) { faces_.add_color(colors[vertex]); });
    } else {
        vertices_.add_color(base_color);
        faces_.add_color(base_color);
    }
}

std::string Scene_Renderer::summary() const {
    return std::to_string(triangle_count()) + " triangles in " + std::to_string(strip_count()) + " strips";
}

void Scene_Renderer::lay_out(const Mesh& mesh, const Strips& strips) {
    std::vector<std::uint32_t> new_number(mesh.positions.size(), none);
    std::vector<VT_Vector> normals;
    strip_vertices_.reserve(strips.vertices.size());
    points_.reserve(mesh.positions.size());
    normals.reserve(mesh.positions.size());
    for (const std::uint32_t vertex : strips.vertices) {
        if (new_number[vertex] == none) {
            new_number[vertex] = static_cast<std::uint32_t>(points_.size());
            points_.push_back(mesh.positions[vertex]);
            normals.push_back(mesh.normals[vertex]);
        }
        strip_vertices_.push_back(new_number[vertex]);
    }
    positions_ = Vector_Columns(points_.size());
    vertices_.resize(points_.size());
    for (std::size_t v = 0; v < points_.size(); ++v) {
        positions_.set(v, points_[v]);
        vertices_.set(v, normals[v], points_[v]);
    }
    faces_.resize(strip_vertices_.size());
    for (std::size_t place = 0; place < strips.triangle_order.size(); ++place) {
        const std::uint32_t triangle = strips.triangle_order[place];
        if (triangle == no_triangle) {
            continue;
        }
        faces_.set(place, face_normal(mesh, triangle), mesh.positions[mesh.triangles[3 * std::size_t{triangle}]]);
    }
}

void Scene_Renderer::light(const Camera& camera, const Picture_Settings& settings) {
    const Lighting lighting(camera, settings.light);
    const Surfaces& surfaces = settings.shading == Shading::flat ? faces_ : vertices_;
    front_colors_.resize(surfaces.size());
    lighting.shade_fronts(surfaces, front_colors_);
    if (settings.culling != Culling::back) {
        back_colors_.resize(surfaces.size());
        lighting.shade_backs(surfaces, back_colors_);
    }
}

Scene_Renderer::Manner Scene_Renderer::manner_of(const Drawing& drawing, std::size_t place) const noexcept {
    const bool front = faces_.face_viewer(place, drawing.camera);
    if (!front && drawing.cull_backs) {
        return Manner::hidden;
    }
    if (projection_.any_beyond) {
        const std::uint32_t* vertex = &strip_vertices_[place];
        const int a = projection_.planes[vertex[0]], b = projection_.planes[vertex[1]], c = projection_.planes[vertex[2]];
        if ((a & b & c) != 0) {
            return Manner::hidden;
        }
        if ((a | b | c) != 0) {
            return Manner::crossing;
        }
    }
    return front ? Manner::front : Manner::back;
}

void Scene_Renderer::draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& window,
                          const Camera& camera, const Picture_Settings& settings) {
    projection_.project(positions_, camera, window);
    light(camera, settings);
    const Drawing drawing{
        renderer, rendition, camera, Viewport(window), settings.shading == Shading::flat, settings.culling == Culling::back};
    for (std::size_t s = 0; s < strip_count(); ++s) {
        draw_strip(drawing, strip_starts_[s], strip_starts_[s + 1]);
    }
}

// A strip is drawn in runs of triangles of one manner.
void Scene_Renderer::draw_strip(const Drawing& drawing, std::size_t begin, std::size_t end) {
    std::size_t first = begin;
    Manner manner = manner_of(drawing, begin);
    const auto finish = [&](std::size_t place) {
        if (manner == Manner::crossing) {
            for (; first < place; ++first) {
                draw_clipped(drawing, first);
            }
        } else if (manner != Manner::hidden) {
            draw_run(drawing, first, place - first, manner);
        }
        first = place;
    };
    for (std::size_t place = begin + 1; place + 2 < end; ++place) {
        const Manner next = manner_of(drawing, place);
        if (next != manner) {
            finish(place);
            manner = next;
        }
    }
    finish(end - 2);
}

void Scene_Renderer::draw_run(const Drawing& drawing, std::size_t first, std::size_t triangles, Manner manner) {
    const std::vector<VT_RGB32>& colors = manner == Manner::front ? front_colors_ : back_colors_;
    const std::size_t count = triangles + 2;
    if (run_points_.size() < count) {
        run_points_.resize(count);
        run_colors_.resize(count);
    }
    for (std::size_t i = 0; i < count; ++i) {
        run_points_[i] = projection_.device_points[strip_vertices_[first + i]];
    }
    const auto point_count = static_cast<std::int32_t>(count);
    if (drawing.flat) {
        VD_Draw_DCI_Colorized_Polytriangle(drawing.renderer, drawing.rendition, point_count, run_points_.data(),
                                           colors.data() + first, false);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        run_colors_[i] = colors[strip_vertices_[first + i]];
    }
    VD_Draw_DCI_Gouraud_Polytriangle(drawing.renderer, drawing.rendition, point_count, run_points_.data(), run_colors_.data());
}

void Scene_Renderer::draw_clipped(const Drawing& drawing, std::size_t place) {
    const std::vector<VT_RGB32>& colors = faces_.face_viewer(place, drawing.camera) ? front_colors_ : back_colors_;
    std::array<Clip_Vertex, 3> triangle;
    std::uint8_t planes = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::uint32_t vertex = strip_vertices_[place + i];
        triangle[i] = {transformed(drawing.camera.clip_from_model, points_[vertex]), colors[drawing.flat ? place : vertex],
                       static_cast<int>(i)};
        planes |= projection_.planes[vertex];
    }
    const Clip_Polygon polygon = clip_triangle(triangle, planes);
    if (polygon.count < 3) {
        return;
    }
    // A convex polygon as a strip: from its first vertex to and fro between its two sides.
    std::array<VT_DCI_Point, 9> points;
    std::array<VT_RGB32, 9> point_colors;
    for (std::size_t i = 0; i < polygon.count; ++i) {
        const Clip_Vertex& vertex = polygon.vertices[i % 2 ? (i + 1) / 2 : (polygon.count - i / 2) % polygon.count];
        const Clip_Point& p = vertex.point;
        // Corners that are kept must be where the neighbouring triangles have them.
        points[i] = vertex.corner >= 0
                        ? projection_.device_points[strip_vertices_[place + static_cast<std::size_t>(vertex.corner)]]
                        : drawing.viewport.device_point(static_cast<float>(p.x / p.w), static_cast<float>(p.y / p.w),
                                                        static_cast<float>(p.z / p.w));
        point_colors[i] = vertex.color;
    }
    const auto count = static_cast<std::int32_t>(polygon.count);
    if (drawing.flat) {
        VD_Draw_DCI_Colorized_Polytriangle(drawing.renderer, drawing.rendition, count, points.data(), point_colors.data(), true);
    } else {
        VD_Draw_DCI_Gouraud_Polytriangle(drawing.renderer, drawing.rendition, count, points.data(), point_colors.data());
    }
}

} // namespace app::scene
