// Draws a model through a renderer.
#include "drawing/model/scene_renderer.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "drawing/files/helpers.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
// Vertices or triangles that threads prepare at a time.
constexpr std::size_t least_part = 8192;

} // namespace

Scene_Renderer::Scene_Renderer(const Mesh& mesh, const Facing& facing, VT_RGB32 base_color, bool own_colors, bool numbered,
                               unsigned threads, Triangle_Order order)
    : triangle_count_(mesh.triangle_count()), threads_(threads), order_(order) {
    const auto find_facing = [&] { hides_backs_ = facing.hides_backs(); };
    const Strips strips =
        order == Triangle_Order::mesh
            ? single_strips(mesh.triangles)
            : make_strips(mesh.triangles, static_cast<std::uint32_t>(mesh.positions.size()), threads, find_facing);
    strip_starts_ = strips.starts;
    lay_out(mesh, facing, strips, threads);
    blocks_ = Place_Blocks(points_, strip_vertices_, strip_starts_, threads);
    if (numbered) {
        reserve_in_large_pages(numbers_, strips.triangle_order.size());
        numbers_.resize(strips.triangle_order.size());
        share_range(numbers_.size(), threads, [&](std::size_t first, std::size_t end) {
            for (std::size_t place = first; place < end; ++place) {
                numbers_[place] = color_of_number(strips.triangle_order[place] + 1);
            }
        });
    }
    const std::vector<std::uint32_t> finishes =
        own_colors && has_finishes(mesh) ? vertex_materials(mesh) : std::vector<std::uint32_t>();
    if (own_colors && (!mesh.colors.empty() || !finishes.empty())) {
        std::vector<std::uint32_t> numbers(points_.size()); // in the mesh
        for (std::size_t place = 0; place < strips.vertices.size(); ++place) {
            numbers[strip_vertices_[place]] = strips.vertices[place];
        }
        const auto add_to = [&](Surfaces& surfaces, std::uint32_t vertex) {
            const VT_RGB32 own = mesh.colors.empty() ? VT_RGB32{0, 0, 0, 0} : mesh.colors[numbers[vertex]];
            const VT_RGB32 color = own.alpha == 0 ? base_color : own;
            surfaces.add_color(color);
            if (!finishes.empty()) {
                const std::uint32_t material = finishes[numbers[vertex]];
                surfaces.add_finish(material == no_material ? Finish{} : mesh.materials[material].finish, color);
            }
        };
        for (std::uint32_t vertex = 0; vertex < numbers.size(); ++vertex) {
            add_to(vertices_, vertex);
        }
        std::ranges::for_each(strip_vertices_, [&](std::uint32_t vertex) { add_to(faces_, vertex); });
    } else {
        vertices_.add_color(base_color);
        faces_.add_color(base_color);
    }
}

std::string Scene_Renderer::summary() const {
    return std::to_string(triangle_count()) + " triangles in " + std::to_string(strip_count()) + " strips";
}

void Scene_Renderer::lay_out(const Mesh& mesh, const Facing& facing, const Strips& strips, unsigned threads) {
    Long_List<std::uint32_t> old_numbers; // by vertex
    const auto number_vertices = [&] {
        Long_List<std::uint32_t> new_numbers(mesh.positions.size(), none);
        strip_vertices_.resize(strips.vertices.size());
        old_numbers.reserve(mesh.positions.size());
        for (std::size_t place = 0; place < strips.vertices.size(); ++place) {
            std::uint32_t& number = new_numbers[strips.vertices[place]];
            if (number == none) {
                number = static_cast<std::uint32_t>(old_numbers.size());
                old_numbers.push_back(strips.vertices[place]);
            }
            strip_vertices_[place] = number;
        }
    };
    faces_.resize(strips.triangle_order.size());
    const auto& face_normals = facing.normals();
    const auto set_faces = [&](std::size_t first, std::size_t end) {
        for (std::size_t place = first; place < end; ++place) {
            const std::uint32_t triangle = strips.triangle_order[place];
            if (triangle != no_triangle) {
                faces_.set(place, face_normals[triangle], mesh.positions[mesh.triangles[3 * std::size_t{triangle}]]);
            } else {
                faces_.set(place, {}, {});
            }
        }
    };
    // Vertices are numbered in the order of the strips by one thread, meanwhile others set the faces.
    const std::size_t parts = part_count(faces_.size(), threads, least_part);
    share_tasks(1 + parts, threads, [&](std::size_t task, std::size_t) {
        if (task == 0) {
            number_vertices();
        } else {
            set_faces(faces_.size() * (task - 1) / parts, faces_.size() * task / parts);
        }
    });
    positions_ = Vector_Columns(old_numbers.size());
    vertices_.resize(old_numbers.size());
    reserve_in_large_pages(points_, old_numbers.size());
    points_.resize(old_numbers.size());
    share_range(old_numbers.size(), threads, [&](std::size_t first, std::size_t end) {
        for (std::size_t v = first; v < end; ++v) {
            const VT_Vector& place = mesh.positions[old_numbers[v]];
            points_[v] = place;
            positions_.set(v, place);
            vertices_.set(v, mesh.normals[old_numbers[v]], place);
        }
    });
}

Scene_Renderer::Manner Scene_Renderer::manner_of(std::size_t place, bool front) const noexcept {
    if (!front && cull_backs_) {
        return Manner::hidden;
    }
    if (projection_.any_beyond) {
        const std::uint32_t* vertex = &strip_vertices_[place];
        const int a = projection_.planes[vertex[0]], b = projection_.planes[vertex[1]], c = projection_.planes[vertex[2]];
        if ((a & b & c) != 0) {
            return Manner::hidden;
        }
        if ((a | b | c) != 0) {
            return front ? Manner::clipped_front : Manner::clipped_back;
        }
    }
    return front ? Manner::front : Manner::back;
}

void Scene_Renderer::prepare(const Tile_Grid& grid, const Camera& camera, const Model_Look& settings) {
    camera_ = camera;
    viewport_ = Viewport(grid.frame);
    grid_ = grid.count() > 1 ? std::optional(grid) : std::nullopt;
    flat_ = settings.shading == Shading::flat;
    unlit_ = settings.shading == Shading::hidden_line;
    numbers_only_ = settings.tint == Tint::numbers;
    projection_.project(positions_, camera, grid.frame, threads_);
    cull_backs_ = settings.culling == Culling::back || (hides_backs_ && !projection_.any_before);
    const Surfaces& tinted = flat_ ? faces_ : vertices_;
    const bool has_tints = !unlit_ && !numbers_only_;
    if (has_tints) {
        tints_.resize(tinted, !cull_backs_);
    }
    // Tints and strips need the projection but not each other.
    const std::size_t tints = has_tints ? part_count(tinted.size(), threads_, least_part) : 0;
    parts_.resize(part_count(strip_vertices_.size(), threads_, least_part));
    share_tasks(parts_.size() + tints, threads_, [&](std::size_t task, std::size_t) {
        if (task < parts_.size()) {
            cut_blocks(first_block_of(task), first_block_of(task + 1), grid, parts_[task]);
        } else {
            const std::size_t part = task - parts_.size();
            tints_.set(tinted, tinted.size() * part / tints, tinted.size() * (part + 1) / tints, camera, settings);
        }
    });
}

// A block that begins with a strip: recordings of images of one tile have whole strips.
std::size_t Scene_Renderer::first_block_of(std::size_t part) const {
    std::size_t block = blocks_.count() * part / parts_.size();
    while (!std::ranges::binary_search(strip_starts_, blocks_.start(block))) {
        ++block;
    }
    return block;
}

// Into runs of triangles of one manner, those of faces seen from behind apart.
void Scene_Renderer::cut_blocks(std::size_t first_block, std::size_t end_block, const Tile_Grid& grid, Part& part) const {
    for (Layer* layer : {&part.backs, &part.fronts}) {
        layer->runs.clear();
        layer->groups.clear();
        layer->bins.start(grid);
    }
    const std::size_t start = blocks_.start(first_block), end = blocks_.start(end_block);
    part.facing.resize(end - start);
    faces_.face_viewer(start, end - start, camera_, part.facing.data());
    auto strip = std::ranges::lower_bound(strip_starts_, start);
    // The strips, or parts of them, whose places begin before one.
    const auto cut_before = [&](std::size_t first, std::size_t last) {
        while (first < last) {
            const std::size_t end_of_strip = *std::next(strip);
            cut_strip(first, std::min(end_of_strip - 2, last), part.facing.data() + (first - start), part);
            first = std::min(end_of_strip, last);
            strip += first == end_of_strip ? 1 : 0;
        }
    };
    if (!grid_) {
        cut_before(start, end);
        return;
    }
    part.extents.resize(end_block - first_block);
    blocks_.find_extents(first_block, camera_, grid.frame, part.extents);
    for (std::size_t block = first_block; block < end_block; ++block) {
        const auto first_runs = std::array{part.backs.runs.size(), part.fronts.runs.size()};
        cut_before(blocks_.start(block), blocks_.start(block + 1));
        for (std::size_t side = 0; side < first_runs.size(); ++side) {
            Layer& layer = side == 0 ? part.backs : part.fronts;
            if (layer.runs.size() > first_runs[side]) {
                const auto group = static_cast<std::uint32_t>(layer.groups.size());
                const bool lies_in_one_tile = layer.bins.add(group, part.extents[block - first_block]);
                layer.groups.push_back({static_cast<std::uint32_t>(first_runs[side]), lies_in_one_tile});
            }
        }
    }
    for (Layer* layer : {&part.backs, &part.fronts}) {
        layer->groups.push_back({static_cast<std::uint32_t>(layer->runs.size())});
        layer->bins.finish();
    }
}

// The triangles of a strip that begin at the places [first, end). facing: of the first and all that follow.
void Scene_Renderer::cut_strip(std::size_t first, std::size_t end, const std::uint8_t* facing, Part& part) const {
    const auto manner_at = [&, start = first](std::size_t place) { return manner_of(place, facing[place - start] != 0); };
    while (first < end) {
        const Manner manner = manner_at(first);
        std::size_t place = first + 1;
        while (place < end && manner_at(place) == manner) {
            ++place;
        }
        if (manner != Manner::hidden) {
            Layer& layer = is_back(manner) && order_ == Triangle_Order::strips ? part.backs : part.fronts;
            layer.runs.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(place - first), manner});
        }
        first = place;
    }
}

// What is inside the view volume of a triangle that crosses it.
Clip_Polygon Scene_Renderer::clipped(std::size_t place, const Painting& painting) const {
    const std::vector<VT_RGB32>& colors = faces_.face_viewer(place, camera_) ? painting.front : painting.back;
    std::array<Clip_Vertex, 3> triangle;
    std::uint8_t planes = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::uint32_t vertex = strip_vertices_[place + i];
        triangle[i] = {transformed(camera_.clip_from_model, points_[vertex]),
                       painting.unlit ? VT_RGB32{} : colors[painting.flat ? place : vertex], static_cast<int>(i)};
        planes |= projection_.planes[vertex];
    }
    return clip_triangle(triangle, planes);
}

// Corners that are kept must be where the neighbouring triangles have them.
VT_DCI_Point Scene_Renderer::device_point(const Clip_Vertex& vertex, std::size_t place) const {
    const Clip_Point& p = vertex.point;
    return vertex.corner >= 0 ? projection_.device_points[strip_vertices_[place + static_cast<std::size_t>(vertex.corner)]]
                              : viewport_.device_point(static_cast<float>(p.x / p.w), static_cast<float>(p.y / p.w),
                                                       static_cast<float>(p.z / p.w));
}

} // namespace vorna::drawing::model
