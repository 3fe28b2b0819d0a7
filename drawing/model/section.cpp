// A model cut open by a plane.
#include "drawing/model/section.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include "drawing/model/model_reader.h"
#include "drawing/model/tuple_table.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;

class Section_Cutter {
public:
    Section_Cutter(Mesh& mesh, const Section& section, const std::string& file, Load_Limits& limits)
        : mesh_(mesh), file_(file), limits_(limits), heights_(mesh.positions.size()) {
        VT_Vector_D normal = section.normal;
        const double size = length(normal);
        normal = normal * (1 / size);
        const double offset = (section.offset / size - dot(normal, mesh.center)) / mesh.radius;
        for (std::size_t v = 0; v < heights_.size(); ++v) {
            heights_[v] = dot(normal, widened(mesh.positions[v])) - offset;
        }
    }

    void cut_triangles(std::vector<std::uint32_t>* origins) {
        Mesh cut;
        const bool has_diagonals = !mesh_.diagonals.empty(), has_materials = !mesh_.triangle_materials.empty();
        mesh_.diagonals.resize(has_diagonals ? mesh_.triangle_count() : 0);
        bool has_new_diagonals = false;
        for (std::size_t t = 0; t < mesh_.triangle_count(); ++t) {
            const std::size_t count = clip(&mesh_.triangles[3 * t], has_diagonals ? mesh_.diagonals[t] : 0);
            for (std::size_t i = 2; i < count; ++i) {
                cut.triangles.insert(cut.triangles.end(), {corners_[0].vertex, corners_[i - 1].vertex, corners_[i].vertex});
                // Sides of the triangle: the first and the last one may be those between the parts of a quadrangle.
                const bool starts = i == 2, ends = i + 1 == count;
                cut.diagonals.push_back(static_cast<std::uint8_t>((!starts || corners_[0].is_diagonal ? 1 : 0) |
                                                                  (corners_[i - 1].is_diagonal ? 2 : 0) |
                                                                  (!ends || corners_[i].is_diagonal ? 4 : 0)));
                has_new_diagonals = has_new_diagonals || cut.diagonals.back() != 0;
                if (origins) {
                    origins->push_back(static_cast<std::uint32_t>(t));
                }
                if (has_materials) {
                    cut.triangle_materials.push_back(mesh_.triangle_materials[t]);
                }
            }
        }
        mesh_.triangles = std::move(cut.triangles);
        mesh_.triangle_materials = std::move(cut.triangle_materials);
        mesh_.diagonals = has_new_diagonals ? std::move(cut.diagonals) : std::vector<std::uint8_t>();
    }

    void cut_lines() {
        std::vector<std::uint32_t> lines;
        for (std::size_t i = 0; i < mesh_.lines.size(); i += 2) {
            const std::uint32_t from = mesh_.lines[i], to = mesh_.lines[i + 1];
            if (is_kept(from) || is_kept(to)) {
                lines.push_back(is_kept(from) ? from : vertex_between(from, to));
                lines.push_back(is_kept(to) ? to : vertex_between(from, to));
            }
        }
        mesh_.lines = std::move(lines);
    }

    void cut_points() {
        std::size_t kept = 0;
        for (std::size_t p = 0; p < mesh_.points.size(); ++p) {
            if (is_kept(mesh_.points[p])) {
                mesh_.points[kept] = mesh_.points[p];
                if (!mesh_.point_normals.empty()) {
                    mesh_.point_normals[kept] = mesh_.point_normals[p];
                }
                ++kept;
            }
        }
        mesh_.points.resize(kept);
        mesh_.point_normals.resize(mesh_.point_normals.empty() ? 0 : kept);
    }

private:
    struct Corner {
        std::uint32_t vertex = none;
        bool is_diagonal = false; // the side to the next corner
    };

    bool is_kept(std::uint32_t vertex) const { return heights_[vertex] <= 0; }

    // Leaves in corners_ what is kept of a triangle, and returns the number of its corners, 0, 3 or 4.
    std::size_t clip(const std::uint32_t* triangle, unsigned diagonals) {
        std::size_t count = 0;
        for (unsigned k = 0; k < 3; ++k) {
            const std::uint32_t from = triangle[k], to = triangle[(k + 1) % 3];
            const bool is_diagonal = (diagonals >> k & 1) != 0;
            if (is_kept(from)) {
                corners_[count++] = {from, is_diagonal};
            }
            if (is_kept(from) != is_kept(to)) {
                // Where the boundary leaves the kept side, its next side lies on the cut.
                corners_[count++] = {vertex_between(from, to), is_diagonal && !is_kept(from)};
            }
        }
        return count;
    }

    // The vertex where an edge meets the plane.
    std::uint32_t vertex_between(std::uint32_t a, std::uint32_t b) {
        // From the end that comes first by its place, whichever way the edge runs and whatever its vertices' numbers are.
        const auto place = [this](std::uint32_t v) {
            const VT_Vector& p = mesh_.positions[v];
            return std::tuple(p.x, p.y, p.z, v);
        };
        const std::uint32_t from = place(a) < place(b) ? a : b, to = from == a ? b : a;
        const std::uint32_t number = cut_vertices_.index_of({from, to});
        const auto vertex = static_cast<std::uint32_t>(heights_.size());
        if (number < new_vertices_.size()) {
            return new_vertices_[number];
        }
        limits_.take_memory(file_, vertex_memory);
        const double part = heights_[from] / (heights_[from] - heights_[to]);
        const VT_Vector_D start = widened(mesh_.positions[from]), way = widened(mesh_.positions[to]) - start;
        mesh_.positions.push_back(narrowed(start + way * part));
        heights_.push_back(0);
        new_vertices_.push_back(vertex);
        const auto between = [part](double x, double y) { return x + (y - x) * part; };
        if (!mesh_.normals.empty()) {
            const VT_Vector_D one = widened(mesh_.normals[from]), other = widened(mesh_.normals[to]);
            mesh_.normals.push_back(unit(narrowed(one + (other - one) * part)).value_or(mesh_.normals[from]));
        }
        if (!mesh_.coordinates.empty()) {
            const Texture_Point one = mesh_.coordinates[from], other = mesh_.coordinates[to];
            mesh_.coordinates.push_back(
                {static_cast<float>(between(one.u, other.u)), static_cast<float>(between(one.v, other.v))});
        }
        if (!mesh_.colors.empty()) {
            const VT_RGB32 one = mesh_.colors[from], other = mesh_.colors[to];
            const auto channel = [&](std::uint8_t x, std::uint8_t y) { return static_cast<std::uint8_t>(between(x, y) + 0.5); };
            mesh_.colors.push_back({channel(one.blue, other.blue), channel(one.green, other.green), channel(one.red, other.red),
                                    std::min(one.alpha, other.alpha)});
        }
        return vertex;
    }

    Mesh& mesh_;
    const std::string& file_;
    Load_Limits& limits_;
    std::vector<double> heights_;             // of vertices above the plane
    Tuple_Table<2> cut_vertices_;             // the ends of edges that are cut
    std::vector<std::uint32_t> new_vertices_; // by number in the table
    std::array<Corner, 4> corners_;
};

} // namespace

void cut_open(Mesh& mesh, const Section& section, const std::string& file, Load_Limits& limits,
              std::vector<std::uint32_t>* origins) {
    // Heights above the plane, and the elements that are made beside those that are cut.
    const std::uint64_t origin_memory = origins ? 2 * sizeof(std::uint32_t) : 0; // a triangle becomes two at most
    limits.take_memory(file, sizeof(double) * mesh.positions.size() + (triangle_memory + origin_memory) * mesh.triangle_count() +
                                 sizeof(std::uint32_t) * mesh.lines.size());
    Section_Cutter cutter(mesh, section, file, limits);
    cutter.cut_triangles(origins);
    cutter.cut_lines();
    cutter.cut_points();
    if (mesh.is_empty()) {
        throw Model_Error(file + ": expected a section that leaves a part of the model, found all of it removed");
    }
}

} // namespace vorna::drawing::model
