// Meshes made fit for drawing.
#include "drawing/model/mesh.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

#include "drawing/model/tuple_table.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

void drop_degenerate_triangles(Mesh& mesh) {
    std::vector<std::uint32_t>&triangles = mesh.triangles, &materials = mesh.triangle_materials;
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
            if (!diagonals.empty()) {
                diagonals[kept] = diagonals[t];
            }
            ++kept;
        }
    }
    triangles.resize(3 * kept);
    materials.resize(materials.empty() ? 0 : kept);
    diagonals.resize(diagonals.empty() ? 0 : kept);
}

// Only vertices that a triangle uses count: stray points must not shrink the picture.
void move_into_unit_sphere(std::vector<Mesh>& meshes, const std::string& files) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    VT_Vector_D low{infinity, infinity, infinity}, high{-infinity, -infinity, -infinity};
    for (const Mesh& mesh : meshes) {
        for (const std::uint32_t vertex : mesh.triangles) {
            const VT_Vector& p = mesh.positions[vertex];
            low = {std::min<double>(low.x, p.x), std::min<double>(low.y, p.y), std::min<double>(low.z, p.z)};
            high = {std::max<double>(high.x, p.x), std::max<double>(high.y, p.y), std::max<double>(high.z, p.z)};
        }
    }
    if (low.x > high.x) {
        return; // no triangles at all
    }
    const VT_Vector_D center = (low + high) * 0.5;
    const double radius = length(high - low) * 0.5;
    if (!(radius > 0)) {
        throw Model_Error(files + ": empty scene: expected triangles with an extent, found one point");
    }
    for (Mesh& mesh : meshes) {
        mesh.center = center;
        mesh.radius = radius;
        for (VT_Vector& p : mesh.positions) {
            p = narrowed((widened(p) - center) * (1 / radius));
        }
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

// By vertex, a number that vertices of one place share. Textures part vertices along their seams, where no edge is meant to show.
std::vector<std::uint32_t> places_of(const Mesh& mesh) {
    std::vector<std::uint32_t> places(mesh.positions.size());
    if (mesh.coordinates.empty()) {
        std::iota(places.begin(), places.end(), 0U);
        return places;
    }
    Triple_Table table;
    std::ranges::transform(mesh.positions, places.begin(), [&](const VT_Vector& p) { return table.index_of(words_of(p)); });
    return places;
}

// The mean of the faces around a vertex, weighted by their areas.
void complete_normals(Mesh& mesh) {
    mesh.normals.resize(mesh.positions.size());
    const std::vector<std::uint32_t> places = places_of(mesh);
    std::vector<VT_Vector> sums(mesh.positions.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        const auto a = mesh.triangles[i], b = mesh.triangles[i + 1], c = mesh.triangles[i + 2];
        const VT_Vector twice_area = cross(mesh.positions[b] - mesh.positions[a], mesh.positions[c] - mesh.positions[a]);
        for (const auto vertex : {a, b, c}) {
            sums[places[vertex]] = sums[places[vertex]] + twice_area;
        }
    }
    for (std::size_t v = 0; v < mesh.normals.size(); ++v) {
        const bool given = unit(mesh.normals[v]).has_value();
        mesh.normals[v] = unit(given ? mesh.normals[v] : sums[places[v]]).value_or(VT_Vector{0, 0, 1});
    }
}

// Adds another mesh's elements. What only one of both has gets what stands for nothing said in the other.
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
    for (std::uint32_t& vertex : other.triangles) {
        vertex += base;
    }
    for (std::uint32_t& material : other.triangle_materials) {
        material = material == no_material ? no_material : material + first_material;
    }
    for (Material& material : other.materials) {
        material.image = material.image == no_image ? no_image : material.image + first_image;
    }
    const std::size_t vertices = other.positions.size(), triangles = other.triangle_count();
    join(mesh.colors, base, other.colors, vertices, VT_RGB32{0, 0, 0, 0});
    join(mesh.coordinates, base, other.coordinates, vertices, Texture_Point{});
    join(mesh.diagonals, mesh.triangle_count(), other.diagonals, triangles, std::uint8_t{0});
    join(mesh.triangle_materials, mesh.triangle_count(), other.triangle_materials, triangles, no_material);
    const auto move_to_end = [](auto& list, auto& more) { std::ranges::move(more, std::back_inserter(list)); };
    move_to_end(mesh.positions, other.positions);
    move_to_end(mesh.normals, other.normals);
    move_to_end(mesh.triangles, other.triangles);
    move_to_end(mesh.materials, other.materials);
    move_to_end(mesh.images, other.images);
    move_to_end(mesh.warnings, other.warnings);
}

} // namespace

bool is_consistent(const Mesh& mesh) {
    const auto are_finite = [](auto... numbers) { return (std::isfinite(numbers) && ...); };
    const auto is_finite = [&](const VT_Vector& v) { return are_finite(v.x, v.y, v.z); };
    const auto is_material = [&](const Material& m) {
        return (m.image == no_image || m.image < mesh.images.size()) && m.wrap_u >= Wrap::repeat && m.wrap_u <= Wrap::clamp &&
               m.wrap_v >= Wrap::repeat && m.wrap_v <= Wrap::clamp && m.transparency >= Transparency::none &&
               m.transparency <= Transparency::by_image && are_finite(m.opacity, m.cut_off);
    };
    const auto is_image = [](const Image_Source& i) {
        const bool has_size = i.width != 0 || i.height != 0;
        const bool fits =
            std::min(i.width, i.height) > 0 && std::max(i.width, i.height) <= largest_image_side &&
            i.bytes.size() == sizeof(VT_RGB32) * static_cast<std::size_t>(i.width) * static_cast<std::size_t>(i.height);
        return i.embedded ? !has_size || fits : !has_size && i.bytes.empty();
    };
    const std::size_t vertices = mesh.positions.size(), triangles = mesh.triangle_count(), materials = mesh.materials.size();
    const auto is_none_or = [](std::size_t count, const auto& list) { return list.empty() || list.size() == count; };
    return is_none_or(vertices, mesh.normals) && is_none_or(vertices, mesh.colors) && is_none_or(vertices, mesh.coordinates) &&
           mesh.triangles.size() % 3 == 0 && is_none_or(triangles, mesh.triangle_materials) &&
           mesh.diagonals.size() <= triangles && std::ranges::all_of(mesh.positions, is_finite) &&
           std::ranges::all_of(mesh.normals, is_finite) &&
           std::ranges::all_of(mesh.triangles, [&](std::uint32_t vertex) { return vertex < vertices; }) &&
           std::ranges::all_of(mesh.triangle_materials,
                               [&](std::uint32_t material) { return material == no_material || material < materials; }) &&
           std::ranges::all_of(mesh.materials, is_material) && std::ranges::all_of(mesh.images, is_image);
}

// Normals come before joining: corners of different files do not smooth each other.
Mesh joined_mesh(std::vector<Mesh> meshes, const std::vector<std::string>& files, bool empty) {
    std::size_t corners = 0;
    for (std::size_t m = 0; m < meshes.size(); ++m) {
        drop_degenerate_triangles(meshes[m]);
        if (meshes[m].triangles.empty() && !empty) {
            throw Model_Error(files[m] + ": empty scene: expected at least one triangle, found none");
        }
        corners += meshes[m].triangles.size();
    }
    std::string all_files;
    for (const std::string& file : files) {
        all_files += (all_files.empty() ? "" : ", ") + file;
    }
    if (corners >= std::numeric_limits<std::uint32_t>::max()) {
        throw Model_Error(all_files + ": expected fewer than 1431655765 triangles, found " + std::to_string(corners / 3));
    }
    move_into_unit_sphere(meshes, all_files);
    for (Mesh& mesh : meshes) {
        drop_wild_coordinates(mesh.coordinates);
        complete_normals(mesh);
    }
    Mesh mesh = std::move(meshes.front());
    for (std::size_t m = 1; m < meshes.size(); ++m) {
        append(mesh, std::move(meshes[m]));
    }
    return mesh;
}

void finish_mesh(Mesh& mesh, const std::string& file) {
    std::vector<Mesh> one;
    one.push_back(std::move(mesh));
    mesh = joined_mesh(std::move(one), {file}, false);
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
