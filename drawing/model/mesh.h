// A model as triangles, lines and points over shared vertices.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/usage_error.h"
#include "drawing/model/material.h"
#include "host/color.h"
#include "host/geometry.h"

namespace vorna::drawing::model {

// What is wrong with a model file: one line that names the file, the place and what was expected.
struct Model_Error : Usage_Error {
    using Usage_Error::Usage_Error;
};

// A file ends before what it announces.
struct Cut_Off_Error : Model_Error {
    using Model_Error::Model_Error;
};

// A place in a texture: u to the right, v upwards, 0 to 1 from border to border.
struct Texture_Point {
    float u = 0, v = 0;
};

inline constexpr std::uint32_t no_material = 0xFFFFFFFF;

// Smoothing groups of triangles that have none: where no normals are given, the crease angle decides, or every face is flat.
inline constexpr std::uint32_t by_angle = 0, not_smooth = 0xFFFFFFFF;

// A plane that cuts a model open: all that lies beyond it, where normal . place > offset, is removed. Places are those of the
// file.
struct Section {
    VT_Vector_D normal;
    double offset = 0;
};

struct Mesh {
    std::vector<VT_Vector> positions;
    std::vector<VT_Vector> normals;       // none, or one a position; a zero one is to be computed
    std::vector<VT_RGB32> colors;         // none, or one a position; alpha 0 = the vertex has no colour of its own
    std::vector<std::uint32_t> triangles; // three positions each
    std::vector<std::uint32_t> lines;     // two positions each
    std::vector<std::uint32_t> points;    // positions that are drawn as points
    // None, or by triangle: bit k is set when the side from corner k to the next one runs through the inside of a polygon.
    // Without for the last triangles, they have no such side.
    std::vector<std::uint8_t> diagonals;
    std::vector<std::uint32_t> smoothing; // none, or one a triangle: a group of the file, by_angle or not_smooth

    std::vector<Texture_Point> coordinates;        // none, or one a position
    std::vector<std::uint32_t> triangle_materials; // none, or one a triangle, no_material for plain ones
    std::vector<Material> materials;
    std::vector<Image_Source> images;
    std::vector<std::string> warnings; // what of the materials could not be read, a line each
    std::vector<std::string> notes;    // how the file is read, where that is unusual, a line each

    // Of a finished mesh: a position is at center + radius * position in the file.
    VT_Vector_D center;
    double radius = 1;
    std::vector<VT_Vector> point_normals; // of a finished mesh: none, or one a point as the file has it, zero where it has none

    std::size_t triangle_count() const noexcept { return triangles.size() / 3; }
    std::size_t line_count() const noexcept { return lines.size() / 2; }
    bool is_empty() const noexcept { return triangles.empty() && lines.empty() && points.empty(); }
};

// Calls visit(vertex) for the vertices of triangles, lines and points, some of them several times.
template <class Visit> void for_each_drawn_vertex(const Mesh& mesh, Visit visit) {
    for (const std::vector<std::uint32_t>* list : {&mesh.triangles, &mesh.lines, &mesh.points}) {
        for (const std::uint32_t vertex : *list) {
            visit(vertex);
        }
    }
}

// The positions of those vertices, each once.
std::vector<VT_Vector> drawn_positions(const Mesh& mesh);

// By vertex the material of a triangle that uses it, no_material for a plain one.
std::vector<std::uint32_t> vertex_materials(const Mesh& mesh);
// Whether the materials' finishes make a difference.
bool has_finishes(const Mesh& mesh);

// Whether its lists belong together, name nothing that is not there, and lie in finite places: of meshes that nobody here has
// made.
bool is_consistent(const Mesh& mesh);

// Makes a mesh fit for drawing: drops triangles and lines that repeat a vertex, moves the rest into the unit sphere around the
// origin, so that floats serve models of any size and place, and gives every vertex a normal of length 1. file: for messages.
// crease: see complete_normals. The result does not depend on the number of threads. Throws Model_Error when nothing is left to
// draw.
void finish_mesh(Mesh& mesh, const std::string& file, std::optional<double> crease = {}, unsigned threads = 1);

// Several meshes as one that is finished, each where its file has it. Each keeps its colours, materials and normals. files: their
// names, for messages. empty: whether empty meshes are accepted. Throws Model_Error.
Mesh joined_mesh(std::vector<Mesh> meshes, const std::vector<std::string>& files, bool empty, std::optional<double> crease = {},
                 unsigned threads = 1);

// Of a finished mesh's triangle, length 1: where it is seen to be wound counter-clockwise.
VT_Vector winding_normal(const Mesh& mesh, std::size_t triangle);

// Of a finished mesh's triangle, length 1. Faces look where their vertices' normals do, even where the file winds them the other
// way.
VT_Vector face_normal(const Mesh& mesh, std::size_t triangle);

} // namespace vorna::drawing::model
