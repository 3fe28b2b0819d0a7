// A model as triangles over shared vertices.
#pragma once

#include <cstdint>
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

// A place in a texture: u to the right, v upwards, 0 to 1 from border to border.
struct Texture_Point {
    float u = 0, v = 0;
};

inline constexpr std::uint32_t no_material = 0xFFFFFFFF;

struct Mesh {
    std::vector<VT_Vector> positions;
    std::vector<VT_Vector> normals;       // none, or one a position; a zero one is to be computed
    std::vector<VT_RGB32> colors;         // none, or one a position; alpha 0 = the vertex has no colour of its own
    std::vector<std::uint32_t> triangles; // three positions each
    // None, or by triangle: bit k is set when the side from corner k to the next one runs through the inside of a polygon.
    // Without for the last triangles, they have no such side.
    std::vector<std::uint8_t> diagonals;

    std::vector<Texture_Point> coordinates;        // none, or one a position
    std::vector<std::uint32_t> triangle_materials; // none, or one a triangle, no_material for plain ones
    std::vector<Material> materials;
    std::vector<Image_Source> images;
    std::vector<std::string> warnings; // what of the materials could not be read, a line each

    // Of a finished mesh: a position is at center + radius * position in the file.
    VT_Vector_D center;
    double radius = 1;

    std::size_t triangle_count() const noexcept { return triangles.size() / 3; }
};

// Whether its lists belong together, name nothing that is not there, and lie in finite places: of meshes that nobody here has
// made.
bool is_consistent(const Mesh& mesh);

// Makes a mesh fit for drawing: drops triangles that repeat a vertex, moves the rest into the unit sphere around the origin, so
// that floats serve models of any size and place, and gives every vertex a normal of length 1. file: for messages. Throws
// Model_Error when nothing is left to draw.
void finish_mesh(Mesh& mesh, const std::string& file);

// Several meshes as one that is finished, each where its file has it. Each keeps its colours, materials and normals. files: their
// names, for messages. empty: whether meshes without triangles are fine, and all of them together. Throws Model_Error.
Mesh joined_mesh(std::vector<Mesh> meshes, const std::vector<std::string>& files, bool empty);

// Of a finished mesh's triangle, length 1: where it is seen to be wound counter-clockwise.
VT_Vector winding_normal(const Mesh& mesh, std::size_t triangle);

// Of a finished mesh's triangle, length 1. Faces look where their vertices' normals do, even where the file winds them the other
// way.
VT_Vector face_normal(const Mesh& mesh, std::size_t triangle);

} // namespace vorna::drawing::model
