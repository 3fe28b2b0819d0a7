// The lines of a piece of an OBJ file: vertices and faces as most programs write them, and where the others are.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// Of a face. Places in the file's lists, from 0; none where the file has nothing.
struct Obj_Corner {
    std::uint32_t position, coordinate, normal;
};

// How many of each list there are.
struct Obj_Counts {
    std::uint32_t positions = 0, normals = 0, coordinates = 0, faces = 0, corners = 0;
};

// Read without knowing what comes before the piece, so that threads can read pieces side by side.
struct Obj_Lines {
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    // Bytes of memory that a byte of the text takes at most, with the room that growing lists have.
    static constexpr std::uint64_t memory_ratio = 24;

    struct Other {
        const char* start;
        std::uint32_t line; // from 0 in the piece
        Obj_Counts before;
    };

    std::vector<VT_Vector> positions, normals;
    std::vector<Texture_Point> coordinates;
    std::vector<Obj_Corner> corners;
    std::vector<std::uint32_t> face_sizes; // of each face in corners
    std::vector<Other> others;
    std::uint32_t lines = 0;
    // By list: how many elements must come before the piece so that faces name nothing that comes after them.
    std::int64_t needed_positions = 0, needed_normals = 0, needed_coordinates = 0;
    // False for pieces with continued lines or very many other lines: the lists are of no use.
    bool is_plain = false;

    // Reads a piece instead of the one before.
    void read(std::string_view piece);
    Obj_Counts counts() const noexcept;

private:
    bool read_face(const char* place, const char* end, const char*& stop);
    bool read_vertex(const char* place, const char* end, const char*& stop);
};

} // namespace vorna::drawing::model
