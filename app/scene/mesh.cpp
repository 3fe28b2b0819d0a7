// Meshes made fit for drawing.
#include "app/scene/mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "app/scene/vectors.h"

namespace app::scene {
namespace {

void drop_degenerate_triangles(std::vector<std::uint32_t>& triangles) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 3 <= triangles.size(); i += 3) {
        const auto a = triangles[i], b = triangles[i + 1], c = triangles[i + 2];
        if (a != b && b != c && c != a) {
            triangles[kept++] = a;
            triangles[kept++] = b;
            triangles[kept++] = c;
        }
    }
    triangles.resize(kept);
}

// Only vertices that a triangle uses count: stray points must not shrink the picture.
void move_into_unit_sphere(Mesh& mesh, const std::string& file) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    VT_Vector_D low{infinity, infinity, infinity}, high{-infinity, -infinity, -infinity};
    for (const std::uint32_t vertex : mesh.triangles) {
        const VT_Vector& p = mesh.positions[vertex];
        low = {std::min<double>(low.x, p.x), std::min<double>(low.y, p.y), std::min<double>(low.z, p.z)};
        high = {std::max<double>(high.x, p.x), std::max<double>(high.y, p.y), std::max<double>(high.z, p.z)};
    }
    const VT_Vector_D center = (low + high) * 0.5;
    const double radius = length(high - low) * 0.5;
    if (!(radius > 0)) {
        throw Model_Error(file + ": empty scene: expected triangles with an extent, found one point");
    }
    for (VT_Vector& p : mesh.positions) {
        p = narrowed((widened(p) - center) * (1 / radius));
    }
}

// The mean of the faces around a vertex, weighted by their areas.
void complete_normals(Mesh& mesh) {
    mesh.normals.resize(mesh.positions.size());
    std::vector<VT_Vector> sums(mesh.positions.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        const auto a = mesh.triangles[i], b = mesh.triangles[i + 1], c = mesh.triangles[i + 2];
        const VT_Vector twice_area = cross(mesh.positions[b] - mesh.positions[a], mesh.positions[c] - mesh.positions[a]);
        for (const auto vertex : {a, b, c}) {
            sums[vertex] = sums[vertex] + twice_area;
        }
    }
    for (std::size_t v = 0; v < mesh.normals.size(); ++v) {
        const bool given = unit(mesh.normals[v]).has_value();
        mesh.normals[v] = unit(given ? mesh.normals[v] : sums[v]).value_or(VT_Vector{0, 0, 1});
    }
}

} // namespace

void finish_mesh(Mesh& mesh, const std::string& file) {
    drop_degenerate_triangles(mesh.triangles);
    if (mesh.triangles.empty()) {
        throw Model_Error(file + ": empty scene: expected at least one triangle, found none");
    }
    if (mesh.triangles.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw Model_Error(file + ": expected fewer than 1431655765 triangles, found " + std::to_string(mesh.triangle_count()));
    }
    move_into_unit_sphere(mesh, file);
    complete_normals(mesh);
}

} // namespace app::scene
