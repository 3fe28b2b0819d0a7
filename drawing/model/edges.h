// The edges of a model, joined into chains.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

inline constexpr std::uint32_t no_edge = 0xFFFFFFFF;

// Every edge once, however many faces share it, and no diagonals of polygons. An edge is named by the place in chains from which
// it leads to the next point; the last place of a chain has none.
struct Edges {
    std::vector<VT_Vector> points;        // places that triangles use, each once, though the mesh may part its vertices there
    std::vector<std::uint32_t> triangles; // three points each, as in the mesh
    std::vector<std::uint32_t> chains;    // points, chain after chain
    std::vector<std::uint32_t> starts;    // of each chain in chains, and the end of the last one
    std::vector<std::uint32_t> triangle_edges; // the edge from each corner of triangles to the next one, no_edge for diagonals
    std::size_t count = 0;
    bool closed = false; // every triangle's side lies at exactly one other
};

// mesh: a finished one.
// The result does not depend on the number of threads.
Edges make_edges(const Mesh& mesh, unsigned threads = 1);

} // namespace vorna::drawing::model
