// A mesh with fewer triangles, for drawing while the camera moves.
#include "app/view/coarse_mesh.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "drawing/model/tuple_table.h"
#include "drawing/model/vectors.h"

namespace vorna::app::view {
namespace {

using namespace drawing::model;

double area_of(const drawing::model::Mesh& mesh) {
    double area = 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        const VT_Vector &a = mesh.positions[mesh.triangles[i]], &b = mesh.positions[mesh.triangles[i + 1]],
                        &c = mesh.positions[mesh.triangles[i + 2]];
        area += 0.5 * length(cross(b - a, c - a));
    }
    return area;
}

} // namespace

drawing::model::Mesh coarse_mesh(const drawing::model::Mesh& mesh, std::size_t triangles) {
    // A surface of area A meets about 1.5 A / cell^2 cells. Each becomes a vertex, and a mesh has two triangles for each vertex.
    const double cell = std::max(std::sqrt(3 * area_of(mesh) / static_cast<double>(triangles)), 1e-3);
    const auto number = [cell](float coordinate) { return static_cast<std::uint32_t>((coordinate + 2) / cell); };
    drawing::model::Triple_Table cells;
    std::vector<std::uint32_t> cell_of(mesh.positions.size());
    drawing::model::Mesh coarse;
    std::vector<float> counts;
    for (std::size_t v = 0; v < mesh.positions.size(); ++v) {
        const VT_Vector& p = mesh.positions[v];
        const std::uint32_t c = cell_of[v] = cells.index_of({number(p.x), number(p.y), number(p.z)});
        if (c == coarse.positions.size()) {
            coarse.positions.emplace_back();
            coarse.normals.emplace_back();
            counts.push_back(0);
            if (!mesh.colors.empty()) {
                coarse.colors.push_back(mesh.colors[v]);
            }
        }
        coarse.positions[c] = coarse.positions[c] + p;
        coarse.normals[c] = coarse.normals[c] + mesh.normals[v];
        ++counts[c];
    }
    for (std::size_t c = 0; c < coarse.positions.size(); ++c) {
        coarse.positions[c] = coarse.positions[c] * (1 / counts[c]);
        coarse.normals[c] = drawing::model::unit(coarse.normals[c]).value_or(VT_Vector{0, 0, 1});
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        const auto a = cell_of[mesh.triangles[i]], b = cell_of[mesh.triangles[i + 1]], c = cell_of[mesh.triangles[i + 2]];
        if (a != b && b != c && c != a) {
            coarse.triangles.insert(coarse.triangles.end(), {a, b, c});
        }
    }
    coarse.center = mesh.center;
    coarse.radius = mesh.radius;
    return coarse;
}

} // namespace vorna::app::view
