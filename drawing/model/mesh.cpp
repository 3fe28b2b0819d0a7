// Meshes made fit for drawing.
#include "drawing/model/mesh.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/model/bounds.h"
#include "drawing/model/normals.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

void drop_degenerate_triangles(Mesh& mesh) {
    std::vector<std::uint32_t>&triangles = mesh.triangles, &materials = mesh.triangle_materials;
    std::vector<std::uint32_t>& smoothing = mesh.smoothing;
    std::vector<std::uint8_t>& diagonals = mesh.diagonals;
    diagonals.resize(diagonals.empty() ? 0 : mesh.triangle_count());
    std::size_t kept = 0;
    for (std::size_t t = 0; t < mesh.triangle_count(); ++t) {
        const auto a = triangles[3 * t], b = triangles[3 * t + 1], c = triangles[3 * t + 2];
        if (a != b && b != c && c != a) {
            triangles[3 * kept] = a;
            triangles[3 * kept + 1] = b;
            triangles[3 * kept + 2] = c;
            if (!materials.empty()) {
                materials[kept] = materials[t];
            }
            if (!smoothing.empty()) {
                smoothing[kept] = smoothing[t];
            }
            if (!diagonals.empty()) {
                diagonals[kept] = diagonals[t];
            }
            ++kept;
        }
    }
    triangles.resize(3 * kept);
    materials.resize(materials.empty() ? 0 : kept);
    smoothing.resize(smoothing.empty() ? 0 : kept);
    diagonals.resize(diagonals.empty() ? 0 : kept);
}

void drop_degenerate_lines(Mesh& mesh) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 1 < mesh.lines.size(); i += 2) {
        if (mesh.lines[i] != mesh.lines[i + 1]) {
            mesh.lines[kept] = mesh.lines[i];
            mesh.lines[kept + 1] = mesh.lines[i + 1];
            kept += 2;
        }
    }
    mesh.lines.resize(kept);
}

// Of vertices in a list.
Bounds bounds_of(const Mesh& mesh, const std::vector<std::uint32_t>& list, unsigned threads) {
    constexpr std::size_t least = std::size_t{1} << 14;
    std::vector<Bounds> parts(part_count(list.size(), threads, least));
    share_tasks(parts.size(), threads, [&](std::size_t part, std::size_t) {
        Bounds bounds;
        const std::size_t end = list.size() * (part + 1) / parts.size();
        for (std::size_t i = list.size() * part / parts.size(); i < end; ++i) {
            bounds.add(widened(mesh.positions[list[i]]));
        }
        parts[part] = bounds;
    });
    for (std::size_t part = 1; part < parts.size(); ++part) {
        parts.front().add(parts[part]);
    }
    return parts.front();
}

// Only vertices that are drawn count: unused ones must not shrink the image of the model.
void move_into_unit_sphere(std::vector<Mesh>& meshes, const std::string& files, unsigned threads) {
    Bounds all;
    bool has_points = false;
    for (const Mesh& mesh : meshes) {
        has_points = has_points || !mesh.points.empty();
        for (const std::vector<std::uint32_t>* list : {&mesh.triangles, &mesh.lines, &mesh.points}) {
            if (!list->empty()) {
                all.add(bounds_of(mesh, *list, threads));
            }
        }
    }
    if (all.is_empty()) {
        return; // nothing is drawn
    }
    const VT_Vector_D center = all.center();
    double radius = all.radius();
    if (!(radius > 0)) {
        if (!has_points) {
            throw Model_Error(files + ": empty scene: expected triangles or lines with an extent, found one point");
        }
        radius = 1;
    }
    for (Mesh& mesh : meshes) {
        mesh.center = center;
        mesh.radius = radius;
        share_range(mesh.positions.size(), threads, [&](std::size_t first, std::size_t end) {
            for (std::size_t p = first; p < end; ++p) {
                mesh.positions[p] = place_in_unit_sphere(mesh.positions[p], center, radius);
            }
        });
    }
}

// Places in textures that are damage, not wrapping: they would cost whole numbers their range.
void drop_wild_coordinates(std::vector<Texture_Point>& coordinates) {
    constexpr float far = 1e6F;
    for (Texture_Point& place : coordinates) {
        if (!(std::abs(place.u) <= far && std::abs(place.v) <= far)) {
            place = {};
        }
    }
}

// Points have the normals of the file only: before other vertices get those of the faces around them.
void keep_point_normals(Mesh& mesh) {
    mesh.point_normals.clear();
    const auto has_normal = [&mesh](std::uint32_t vertex) { return unit(mesh.normals[vertex]).has_value(); };
    if (!mesh.normals.empty() && std::ranges::any_of(mesh.points, has_normal)) {
        mesh.point_normals.reserve(mesh.points.size());
        for (const std::uint32_t vertex : mesh.points) {
            mesh.point_normals.push_back(unit(mesh.normals[vertex]).value_or(VT_Vector{}));
        }
    }
}

// Adds another mesh's elements. Lists that only one of both has are padded with defaults.
void append(Mesh& mesh, Mesh&& other) {
    const auto base = static_cast<std::uint32_t>(mesh.positions.size());
    const auto first_material = static_cast<std::uint32_t>(mesh.materials.size()),
               first_image = static_cast<std::uint32_t>(mesh.images.size());
    const auto join = [](auto& list, std::size_t count, const auto& more, std::size_t more_count, auto nothing) {
        if (!list.empty() || !more.empty()) {
            list.resize(count, nothing);
            list.insert(list.end(), more.begin(), more.end());
            list.resize(count + more_count, nothing);
        }
    };
    for (std::vector<std::uint32_t>* list : {&other.triangles, &other.lines, &other.points}) {
        for (std::uint32_t& vertex : *list) {
            vertex += base;
        }
    }
    for (std::uint32_t& material : other.triangle_materials) {
        material = material == no_material ? no_material : material + first_material;
    }
    for (Material& material : other.materials) {
        material.renumber_images([=](std::uint32_t image) { return image + first_image; });
    }
    const std::size_t vertices = other.positions.size(), triangles = other.triangle_count();
    join(mesh.colors, base, other.colors, vertices, VT_RGB32{0, 0, 0, 0});
    join(mesh.coordinates, base, other.coordinates, vertices, Texture_Point{});
    join(mesh.diagonals, mesh.triangle_count(), other.diagonals, triangles, std::uint8_t{0});
    join(mesh.triangle_materials, mesh.triangle_count(), other.triangle_materials, triangles, no_material);
    join(mesh.point_normals, mesh.points.size(), other.point_normals, other.points.size(), VT_Vector{});
    const auto move_to_end = [](auto& list, auto& more) { std::ranges::move(more, std::back_inserter(list)); };
    move_to_end(mesh.positions, other.positions);
    move_to_end(mesh.normals, other.normals);
    move_to_end(mesh.triangles, other.triangles);
    move_to_end(mesh.lines, other.lines);
    move_to_end(mesh.points, other.points);
    move_to_end(mesh.materials, other.materials);
    move_to_end(mesh.images, other.images);
    move_to_end(mesh.warnings, other.warnings);
    move_to_end(mesh.notes, other.notes);
}

} // namespace

std::vector<std::uint32_t> vertex_materials(const Mesh& mesh) {
    std::vector<std::uint32_t> materials(mesh.positions.size(), no_material);
    for (std::size_t corner = 0; corner < 3 * mesh.triangle_materials.size(); ++corner) {
        materials[mesh.triangles[corner]] = mesh.triangle_materials[corner / 3];
    }
    return materials;
}

bool has_finishes(const Mesh& mesh) {
    return std::ranges::any_of(mesh.materials, [](const Material& material) { return material.finish != Finish{}; });
}

bool is_consistent(const Mesh& mesh) {
    const auto are_finite = [](auto... numbers) { return (std::isfinite(numbers) && ...); };
    const auto is_finite = [&](const VT_Vector& v) { return are_finite(v.x, v.y, v.z); };
    const auto is_material = [&](const Material& m) {
        const auto is_known = [&](std::uint32_t image) { return image == no_image || image < mesh.images.size(); };
        return std::ranges::all_of(m.all_images(), is_known) && m.wrap_u >= Wrap::repeat && m.wrap_u <= Wrap::clamp &&
               m.wrap_v >= Wrap::repeat && m.wrap_v <= Wrap::clamp && m.transparency >= Transparency::none &&
               m.transparency <= Transparency::by_image && are_finite(m.opacity, m.cut_off) &&
               are_finite(m.metal, m.roughness, m.occlusion, m.emission[0], m.emission[1], m.emission[2]) &&
               are_finite(m.finish.mirror, m.finish.highlight, m.finish.sharpness) &&
               are_finite(m.finish.emission[0], m.finish.emission[1], m.finish.emission[2]);
    };
    const auto is_image = [](const Image_Source& i) {
        const bool has_size = i.width != 0 || i.height != 0;
        const bool fits =
            std::min(i.width, i.height) > 0 && std::max(i.width, i.height) <= largest_image_side &&
            i.bytes.size() == sizeof(VT_RGB32) * static_cast<std::size_t>(i.width) * static_cast<std::size_t>(i.height);
        return i.embedded ? !has_size || fits : !has_size && i.bytes.empty();
    };
    const std::size_t vertices = mesh.positions.size(), triangles = mesh.triangle_count(), materials = mesh.materials.size();
    const auto are_vertices = [vertices](const std::vector<std::uint32_t>& list) {
        return std::ranges::all_of(list, [vertices](std::uint32_t vertex) { return vertex < vertices; });
    };
    const auto is_none_or = [](std::size_t count, const auto& list) { return list.empty() || list.size() == count; };
    return is_none_or(vertices, mesh.normals) && is_none_or(vertices, mesh.colors) && is_none_or(vertices, mesh.coordinates) &&
           mesh.triangles.size() % 3 == 0 && mesh.lines.size() % 2 == 0 && is_none_or(triangles, mesh.triangle_materials) &&
           is_none_or(triangles, mesh.smoothing) && mesh.diagonals.size() <= triangles &&
           std::ranges::all_of(mesh.positions, is_finite) && std::ranges::all_of(mesh.normals, is_finite) &&
           are_vertices(mesh.triangles) && are_vertices(mesh.lines) && are_vertices(mesh.points) &&
           std::ranges::all_of(mesh.triangle_materials,
                               [&](std::uint32_t material) { return material == no_material || material < materials; }) &&
           std::ranges::all_of(mesh.materials, is_material) && std::ranges::all_of(mesh.images, is_image);
}

// Normals come before joining: corners of different files do not smooth each other.
Mesh joined_mesh(std::vector<Mesh> meshes, const std::vector<std::string>& files, bool empty, std::optional<double> crease,
                 unsigned threads) {
    std::size_t corners = 0, vertices = 0;
    for (std::size_t m = 0; m < meshes.size(); ++m) {
        drop_degenerate_triangles(meshes[m]);
        drop_degenerate_lines(meshes[m]);
        if (meshes[m].is_empty() && !empty) {
            throw Model_Error(files[m] + ": empty scene: expected triangles, lines or points, found none");
        }
        corners += meshes[m].triangles.size();
        vertices += meshes[m].positions.size();
    }
    std::string all_files;
    for (const std::string& file : files) {
        all_files += (all_files.empty() ? "" : ", ") + file;
    }
    if (corners >= std::numeric_limits<std::uint32_t>::max()) {
        throw Model_Error(all_files + ": expected fewer than 1431655765 triangles, found " + std::to_string(corners / 3));
    }
    if (vertices >= std::numeric_limits<std::uint32_t>::max()) {
        throw Model_Error(all_files + ": expected fewer than 4294967295 vertices, found " + std::to_string(vertices));
    }
    move_into_unit_sphere(meshes, all_files, threads);
    for (Mesh& mesh : meshes) {
        keep_point_normals(mesh);
        drop_wild_coordinates(mesh.coordinates);
        complete_normals(mesh, crease, threads);
    }
    Mesh mesh = std::move(meshes.front());
    for (std::size_t m = 1; m < meshes.size(); ++m) {
        append(mesh, std::move(meshes[m]));
    }
    return mesh;
}

std::vector<VT_Vector> drawn_positions(const Mesh& mesh) {
    std::vector<bool> is_listed(mesh.positions.size());
    std::vector<VT_Vector> positions;
    for_each_drawn_vertex(mesh, [&](std::uint32_t vertex) {
        if (!is_listed[vertex]) {
            is_listed[vertex] = true;
            positions.push_back(mesh.positions[vertex]);
        }
    });
    return positions;
}

void finish_mesh(Mesh& mesh, const std::string& file, std::optional<double> crease, unsigned threads) {
    std::vector<Mesh> one;
    one.push_back(std::move(mesh));
    mesh = joined_mesh(std::move(one), {file}, false, crease, threads);
}

VT_Vector winding_normal(const Mesh& mesh, std::size_t triangle) {
    const std::uint32_t* corners = &mesh.triangles[3 * triangle];
    const VT_Vector &a = mesh.positions[corners[0]], &b = mesh.positions[corners[1]], &c = mesh.positions[corners[2]];
    return unit(cross(b - a, c - a)).value_or(VT_Vector{0, 0, 1});
}

VT_Vector face_normal(const Mesh& mesh, std::size_t triangle) {
    const std::uint32_t* corners = &mesh.triangles[3 * triangle];
    const VT_Vector normal = winding_normal(mesh, triangle);
    const VT_Vector around = mesh.normals[corners[0]] + mesh.normals[corners[1]] + mesh.normals[corners[2]];
    return dot(normal, around) < 0.0F ? normal * -1.0F : normal;
}

} // namespace vorna::drawing::model
