// Draws a model with its materials.
#include "drawing/model/textured_scene.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "drawing/model/facing.h"
#include "drawing/model/vectors.h"
#include "vorna/draw.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
// Pixels by which a place on an edge may be wrong.
constexpr double allowed_error = 0.5;

std::uint8_t planes_beyond(const Clip_Point& p) noexcept {
    return static_cast<std::uint8_t>((p.x < -p.w) * beyond::left + (p.x > p.w) * beyond::right + (p.y < -p.w) * beyond::bottom +
                                     (p.y > p.w) * beyond::top + (p.z < 0) * beyond::near + (p.z > p.w) * beyond::far);
}

} // namespace

// A point on a triangle.
struct Textured_Scene::Corner {
    Clip_Point clip;
    double u, v;
    float blue, green, red;
    double x, y; // pixels from the window's corner, not rounded
    VT_DCI_Point device;

    void place(const Viewport& viewport) {
        x = (clip.x / clip.w + 1) * viewport.half_width;
        y = (clip.y / clip.w + 1) * viewport.half_height;
        device = viewport.device_point(static_cast<float>(clip.x / clip.w), static_cast<float>(clip.y / clip.w),
                                       static_cast<float>(clip.z / clip.w));
    }

    // How far the middle of an edge is drawn from where it belongs.
    static double error(const Corner& a, const Corner& b) {
        const double dx = a.x - b.x, dy = a.y - b.y;
        return std::sqrt(dx * dx + dy * dy) * std::abs(a.clip.w - b.clip.w) / (2 * (a.clip.w + b.clip.w));
    }

    // What is seen halfway between two points of the screen. The same bit by bit whichever comes first.
    static Corner between(const Corner& a, const Corner& b, const Viewport& viewport) {
        const double sum = a.clip.w + b.clip.w;
        const auto mean = [&](double of_a, double of_b) { return (of_a * b.clip.w + of_b * a.clip.w) / sum; };
        const auto channel = [&](float of_a, float of_b) { return static_cast<float>(mean(of_a, of_b)); };
        Corner middle{{mean(a.clip.x, b.clip.x), mean(a.clip.y, b.clip.y), mean(a.clip.z, b.clip.z), mean(a.clip.w, b.clip.w)},
                      mean(a.u, b.u),
                      mean(a.v, b.v),
                      channel(a.blue, b.blue),
                      channel(a.green, b.green),
                      channel(a.red, b.red),
                      0,
                      0,
                      {}};
        middle.place(viewport);
        return middle;
    }

    VT_RGB32 color(std::uint8_t alpha) const {
        const auto byte = [](float value) { return static_cast<std::uint8_t>(value + 0.5F); };
        return {byte(blue), byte(green), byte(red), alpha};
    }
};

// Drawing of one tile, and the paint in use.
struct Textured_Scene::Drawing {
    VT_Renderer_Data& renderer;
    VT_Rendition& rendition;
    const Viewport& viewport;
    VT_Int_Rectangle window;
    const Paint* paint = nullptr;

    // Whether a triangle may touch the window. Pieces of a triangle lie in it but for rounding.
    bool shows(const Corner& a, const Corner& b, const Corner& c) const {
        const auto [left, right] = std::minmax({a.device.x, b.device.x, c.device.x});
        const auto [bottom, top] = std::minmax({a.device.y, b.device.y, c.device.y});
        return left - 1 <= window.right && right + 1 >= window.left && bottom - 1 <= window.top && top + 1 >= window.bottom;
    }
    // Draws a triangle whose edges run evenly enough.
    void draw(const std::array<const Corner*, 3>& corners);

private:
    Texture::Cut choose_texture(const std::array<const Corner*, 3>& corners, std::array<VT_Parameter, 6>& parameters) const;
};

Textured_Scene::Textured_Scene(const Mesh& mesh, VT_RGB32 base_color, bool own_colors, std::vector<std::string>& warnings,
                               Load_Limits& limits) {
    std::tie(textures_, paints_) = load_paints(mesh, warnings, limits);
    order_triangles(mesh);
    set_colors(mesh, lay_out(mesh), base_color, own_colors);
}

bool Textured_Scene::has_work(const Mesh& mesh) {
    return std::ranges::any_of(mesh.materials,
                               [](const Material& material) { return material.image != no_image || material.opacity < 1; });
}

// By material, for few changes between them.
void Textured_Scene::order_triangles(const Mesh& mesh) {
    const auto plain = static_cast<std::uint32_t>(mesh.materials.size());
    std::vector<std::uint32_t> paints(mesh.triangle_count(), plain);
    std::ranges::transform(mesh.triangle_materials, paints.begin(),
                           [=](std::uint32_t m) { return m == no_material ? plain : m; });
    std::vector<std::size_t> order(mesh.triangle_count());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t t) { return std::pair(paints_[paints[t]].translucent, paints[t]); });
    faces_.resize(order.size());
    const Facing facing(mesh);
    hides_backs_ = facing.hides_backs() && std::ranges::none_of(paints_, [](const Paint& paint) {
                       return paint.texture && paint.texture->transparency() != Transparency::none;
                   });
    for (const std::size_t t : order) {
        const std::uint32_t* corners = &mesh.triangles[3 * t];
        faces_.set(triangles_.size(), facing.normal(t), mesh.positions[corners[0]]);
        triangles_.push_back({corners[0], corners[1], corners[2]});
        triangle_paints_.push_back(paints[t]);
        opaque_count_ += !paints_[paints[t]].translucent;
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
            const Texture* texture = paints_[triangle_paints_[t]].texture;
            const bool textured = texture && !texture->name().empty();
            for (const std::uint32_t vertex : triangles_[t]) {
                const VT_RGB32 own = mesh.colors.empty() ? VT_RGB32{0, 0, 0, 0} : mesh.colors[vertices[vertex]];
                colors[vertex] = own.alpha != 0 ? own : textured ? VT_RGB32{255, 255, 255, 255} : base_color;
            }
        }
    }
    const std::vector<std::uint32_t> finishes = own_colors ? vertex_finishes(mesh) : std::vector<std::uint32_t>();
    for (std::size_t v = 0; v < colors.size(); ++v) {
        vertices_.add_color(colors[v]);
        if (!finishes.empty()) {
            const std::uint32_t material = finishes[vertices[v]];
            vertices_.add_finish(material == no_material ? Finish{} : mesh.materials[material].finish, colors[v]);
        }
    }
}

std::string Textured_Scene::summary() const {
    std::string text = std::to_string(triangles_.size()) + " triangles";
    for (const auto& texture : textures_) {
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
    tints_.set(vertices_, !cull_backs_, camera, settings);
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
    Drawing drawing{renderer, *own, viewport_, rendition.window.rectangle};
    bins_.for_each(tile, order_.size(), [&](std::size_t place) { draw_triangle(drawing, order_[place]); });
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

void Textured_Scene::draw_triangle(Drawing& drawing, std::size_t triangle) const {
    const Clip_Polygon polygon = clipped(triangle);
    drawing.paint = &paints_[triangle_paints_[triangle]];
    std::array<Corner, 9> corners;
    for (std::size_t i = 0; i < polygon.count; ++i) {
        const Clip_Vertex& vertex = polygon.vertices[i];
        corners[i] = {vertex.point,
                      vertex.u,
                      vertex.v,
                      static_cast<float>(vertex.color.blue),
                      static_cast<float>(vertex.color.green),
                      static_cast<float>(vertex.color.red),
                      0,
                      0,
                      {}};
        corners[i].place(drawing.viewport);
    }
    for (std::size_t i = 2; i < polygon.count; ++i) {
        draw_piece(drawing, corners[0], corners[i - 1], corners[i]);
    }
}

// Halves what needs it until the pieces can be drawn. Ends because the error of a half is at most half as large.
void Textured_Scene::draw_piece(Drawing& drawing, const Corner& a, const Corner& b, const Corner& c) const {
    if (!drawing.shows(a, b, c)) {
        return;
    }
    const std::array<const Corner*, 3> corners{&a, &b, &c};
    std::array<bool, 3> halved{}; // the edge from each corner to the next
    int count = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        halved[i] = Corner::error(*corners[i], *corners[(i + 1) % 3]) > allowed_error;
        count += halved[i];
    }
    if (count == 0) {
        drawing.draw(corners);
        return;
    }
    std::array<Corner, 3> middles;
    for (std::size_t i = 0; i < 3; ++i) {
        if (halved[i]) {
            middles[i] = Corner::between(*corners[i], *corners[(i + 1) % 3], drawing.viewport);
        }
    }
    if (count == 3) {
        for (std::size_t i = 0; i < 3; ++i) {
            draw_piece(drawing, *corners[i], middles[i], middles[(i + 2) % 3]);
        }
        draw_piece(drawing, middles[0], middles[1], middles[2]);
        return;
    }
    // Turned so that the first edge is halved and, of two, the second one as well.
    std::size_t first = 0;
    while (!halved[first] || (count == 2 && !halved[(first + 1) % 3])) {
        ++first;
    }
    const std::size_t second = (first + 1) % 3, third = (first + 2) % 3;
    const Corner &from = *corners[first], &tip = *corners[second], &to = *corners[third], &middle = middles[first];
    if (count == 1) {
        draw_piece(drawing, from, middle, to);
        draw_piece(drawing, middle, tip, to);
    } else {
        draw_piece(drawing, middle, tip, middles[second]);
        draw_piece(drawing, from, middle, middles[second]);
        draw_piece(drawing, from, middles[second], to);
    }
}

void Textured_Scene::Drawing::draw(const std::array<const Corner*, 3>& corners) {
    std::array<VT_DCI_Point, 3> points;
    std::array<VT_RGB32, 3> colors;
    for (std::size_t i = 0; i < 3; ++i) {
        points[i] = corners[i]->device;
        colors[i] = corners[i]->color(paint->alpha);
    }
    const auto extent = [&](const VT_DCI_Point& p, const VT_DCI_Point& q) {
        return std::int64_t{p.x - points[0].x} * (q.y - points[0].y) - std::int64_t{p.y - points[0].y} * (q.x - points[0].x);
    };
    if (extent(points[1], points[2]) == 0) {
        return; // Rounded to a line, of which nothing is drawn.
    }
    if (!paint->texture) {
        VD_Draw_DCI_Gouraud_Polytriangle(renderer, rendition, 3, points.data(), colors.data());
        return;
    }
    std::array<VT_Parameter, 6> parameters;
    rendition.face.material = choose_texture(corners, parameters).material;
    VD_Draw_DCI_Textured_Polytriangle(renderer, rendition, 3, points.data(), colors.data(), parameters.data(), 2, nullptr,
                                      nullptr);
}

// The image for a triangle, and where its points lie in it. Points are rounded to corners of pixels, and the renderer looks at
// that corner while what a pixel shows is its middle: coordinates are moved along with both, or straight lines would waver.
Texture::Cut Textured_Scene::Drawing::choose_texture(const std::array<const Corner*, 3>& corners,
                                                     std::array<VT_Parameter, 6>& parameters) const {
    const Corner &a = *corners[0], &b = *corners[1], &c = *corners[2];
    const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
    const double bu = b.u - a.u, bv = b.v - a.v, cu = c.u - a.u, cv = c.v - a.v;
    const double area = bx * cy - cx * by; // in pixels, twice
    const double low[2] = {std::min({a.u, b.u, c.u}), std::min({a.v, b.v, c.v})};
    const double high[2] = {std::max({a.u, b.u, c.u}), std::max({a.v, b.v, c.v})};
    // Needles have no direction to trust.
    const double longest = std::max({bx * bx + by * by, cx * cx + cy * cy, (cx - bx) * (cx - bx) + (cy - by) * (cy - by)});
    const bool needle = std::abs(area) <= longest * 1e-4;
    const double scale = needle ? 0 : 1 / area;
    const double across[2] = {(bu * cy - cu * by) * scale, (bv * cy - cv * by) * scale};
    const double up[2] = {(cu * bx - bu * cx) * scale, (cv * bx - bv * cx) * scale};
    double covered[2];
    for (std::size_t axis = 0; axis < 2; ++axis) {
        covered[axis] = needle ? (high[axis] - low[axis]) / std::sqrt(std::max(longest, 1.0))
                               : std::sqrt(across[axis] * across[axis] + up[axis] * up[axis]);
    }
    Texture::Cut cut = paint->texture->cut(covered, low, high);
    for (std::size_t i = 0; i < 3; ++i) {
        const Corner& corner = *corners[i];
        const double dx = corner.device.x - viewport.left + 0.5 - corner.x,
                     dy = corner.device.y - viewport.bottom + 0.5 - corner.y;
        const double place[2] = {corner.u, corner.v};
        for (std::size_t axis = 0; axis < 2; ++axis) {
            // A moved point stays near what the triangle shows.
            const double room = 1.5 * cut.texel[axis];
            const double moved = std::clamp(place[axis] + across[axis] * dx + up[axis] * dy, low[axis] - room, high[axis] + room);
            parameters[2 * i + axis] =
                static_cast<VT_Parameter>(std::clamp((moved - cut.first[axis]) * cut.scale[axis], cut.low[axis], cut.high[axis]));
        }
    }
    return cut;
}

} // namespace vorna::drawing::model
