// Draws a model through a renderer.
#include "drawing/model/scene_renderer.h"

#include <algorithm>
#include <cmath>

#include "drawing/files/helpers.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
// Triangles of a run in pictures of several tiles: a tile draws whole runs.
constexpr std::size_t longest_run = 32;
// Places of a block, see Layer.
constexpr std::size_t block_places = 64;
// Vertices or triangles that threads prepare at a time.
constexpr std::size_t least_part = 8192;

} // namespace

Scene_Renderer::Scene_Renderer(const Mesh& mesh, const Facing& facing, VT_RGB32 base_color, bool own_colors, bool numbered,
                               unsigned threads)
    : triangle_count_(mesh.triangle_count()), threads_(threads) {
    const Strips strips = make_strips(mesh.triangles, static_cast<std::uint32_t>(mesh.positions.size()), threads,
                                      [&] { hides_backs_ = facing.hides_backs(); });
    strip_starts_ = strips.starts;
    lay_out(mesh, facing, strips, threads);
    make_boxes(threads);
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
    const auto strip_at = [&](std::size_t part) {
        const std::size_t place = strip_vertices_.size() * part / parts_.size();
        return static_cast<std::size_t>(std::ranges::lower_bound(strip_starts_, place) - strip_starts_.begin());
    };
    share_tasks(parts_.size() + tints, threads_, [&](std::size_t task, std::size_t) {
        if (task < parts_.size()) {
            cut_strips(strip_at(task), strip_at(task + 1), grid, parts_[task]);
        } else {
            const std::size_t part = task - parts_.size();
            tints_.set(tinted, tinted.size() * part / tints, tinted.size() * (part + 1) / tints, camera, settings);
        }
    });
}

void Scene_Renderer::make_boxes(unsigned threads) {
    boxes_.resize((strip_vertices_.size() + block_places - 1) / block_places);
    share_range(boxes_.size(), threads, [&](std::size_t first, std::size_t end) {
        for (std::size_t b = first; b < end; ++b) {
            const std::size_t last_place = std::min((b + 1) * block_places + longest_run + 1, strip_vertices_.size());
            Box box{points_[strip_vertices_[b * block_places]], points_[strip_vertices_[b * block_places]]};
            for (std::size_t place = b * block_places; place < last_place; ++place) {
                const VT_Vector& p = points_[strip_vertices_[place]];
                box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y), std::min(box.low.z, p.z)};
                box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y), std::max(box.high.z, p.z)};
            }
            boxes_[b] = box;
        }
    });
}

// Of a box inside the view volume, else empty. A pixel more to each side for rounding.
Extent Scene_Renderer::extent_of(const Box& box) const {
    const auto& m = camera_.clip_from_model.m;
    double parts[4][3][2]; // of each clip coordinate: by axis, at the low and the high end
    for (int r = 0; r < 4; ++r) {
        parts[r][0][0] = m[r][0] * box.low.x;
        parts[r][0][1] = m[r][0] * box.high.x;
        parts[r][1][0] = m[r][1] * box.low.y;
        parts[r][1][1] = m[r][1] * box.high.y;
        parts[r][2][0] = m[r][2] * box.low.z + m[r][3];
        parts[r][2][1] = m[r][2] * box.high.z + m[r][3];
    }
    double left = 1, right = -1, bottom = 1, top = -1;
    for (unsigned corner = 0; corner < 8; ++corner) {
        const auto clip = [&](int r) {
            return parts[r][0][corner & 1] + parts[r][1][corner >> 1 & 1] + parts[r][2][corner >> 2];
        };
        const double w = clip(3), x = clip(0) / w, y = clip(1) / w, z = clip(2) / w;
        if (!(w > 0 && x >= -1 && x <= 1 && y >= -1 && y <= 1 && z >= 0 && z <= 1)) {
            return {};
        }
        left = std::min(left, x);
        right = std::max(right, x);
        bottom = std::min(bottom, y);
        top = std::max(top, y);
    }
    const auto point = [&](double x, double y) {
        return viewport_.device_point(static_cast<float>(x), static_cast<float>(y), 0);
    };
    const VT_DCI_Point low = point(left, bottom), high = point(right, top);
    Extent extent;
    extent.box = {low.x - 1, high.x + 1, low.y - 1, high.y + 1};
    return extent;
}

void Scene_Renderer::add(Layer& layer, const Run& run) const {
    const std::size_t block = run.first / block_places;
    if (block != layer.open_block) {
        close_group(layer);
        layer.groups.push_back({static_cast<std::uint32_t>(layer.runs.size())});
        layer.open_block = block;
    }
    layer.runs.push_back(run);
}

// Runs whose box is large or reaches out of the view volume become groups of their own.
void Scene_Renderer::close_group(Layer& layer) const {
    if (layer.open_block == Layer::no_block) {
        return;
    }
    const auto sort_group = [&layer](const Extent& extent) {
        layer.groups.back().lies_in_one_tile = layer.bins.add(static_cast<std::uint32_t>(layer.groups.size() - 1), extent);
    };
    const std::uint32_t first = layer.groups.back().first;
    const Extent extent = extent_of(boxes_[layer.open_block]);
    layer.open_block = Layer::no_block;
    const std::int32_t widest = std::min(grid_->tile_size.x, grid_->tile_size.y) / 4;
    if (!extent.is_empty() && std::max(extent.width(), extent.height()) <= widest) {
        sort_group(extent);
        return;
    }
    layer.groups.pop_back();
    for (std::uint32_t run = first; run < layer.runs.size(); ++run) {
        Extent own;
        include(own, layer.runs[run]);
        layer.groups.push_back({run});
        sort_group(own);
    }
}

// Into runs of triangles of one manner, those of faces seen from behind apart.
void Scene_Renderer::cut_strips(std::size_t first_strip, std::size_t end_strip, const Tile_Grid& grid, Part& part) const {
    for (Layer* layer : {&part.backs, &part.fronts}) {
        layer->runs.clear();
        layer->groups.clear();
        layer->bins.start(grid);
    }
    std::vector<std::uint8_t> fronts(strip_starts_[end_strip] - strip_starts_[first_strip]);
    const std::size_t start = strip_starts_[first_strip];
    faces_.face_viewer(start, fronts.size(), camera_, fronts.data());
    const auto manner_at = [&](std::size_t place) { return manner_of(place, fronts[place - start] != 0); };
    for (std::size_t s = first_strip; s < end_strip; ++s) {
        const std::size_t end = strip_starts_[s + 1] - 2;
        std::size_t first = strip_starts_[s];
        Manner manner = manner_at(first);
        const auto finish = [&](std::size_t place) {
            Layer& layer = is_back(manner) ? part.backs : part.fronts;
            const std::size_t longest = !grid_ ? place - first : is_clipped(manner) ? 1 : longest_run;
            for (; first < place && manner != Manner::hidden; first += longest) {
                const Run run{static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(std::min(longest, place - first)),
                              manner};
                if (grid_) {
                    add(layer, run);
                } else {
                    layer.runs.push_back(run);
                }
            }
            first = place;
        };
        for (std::size_t place = first + 1; place < end; ++place) {
            const Manner next = manner_at(place);
            if (next != manner) {
                finish(place);
                manner = next;
            }
        }
        finish(end);
    }
    for (Layer* layer : {&part.backs, &part.fronts}) {
        close_group(*layer);
        layer->groups.push_back({static_cast<std::uint32_t>(layer->runs.size())});
        layer->bins.finish();
    }
}

void Scene_Renderer::include(Extent& extent, const Run& run) const {
    if (!is_clipped(run.manner)) {
        const std::uint32_t* vertices = &strip_vertices_[run.first];
        for (std::size_t i = 0; i < std::size_t{run.triangles} + 2; ++i) {
            extent.include(projection_.device_points[vertices[i]]);
        }
        return;
    }
    const Painting without_colors{false, true, numbers_, numbers_}; // which may not be there yet
    for (std::size_t place = run.first; place < run.first + run.triangles; ++place) {
        const Clip_Polygon polygon = clipped(place, without_colors);
        for (std::size_t i = 0; i < polygon.count; ++i) {
            extent.include(device_point(polygon.vertices[i], place));
        }
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
