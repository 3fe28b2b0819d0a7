// The shapes of maps and drawings, independent of the file format.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/usage_error.h"
#include "host/color.h"

namespace vorna::drawing::map {

// The message names the file, the place in it, and what was expected.
class Map_Error : public Usage_Error {
public:
    using Usage_Error::Usage_Error;
};

// Longitude and latitude in degrees, or a drawing's or projection's plane; y grows upwards.
struct Position {
    double x = 0, y = 0;

    friend bool operator==(const Position&, const Position&) = default;
    friend bool operator<(const Position& a, const Position& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }
};

using Path = std::vector<Position>;
// Rings without their closing point; even-odd.
using Face = std::vector<Path>;

struct Shape {
    std::string name, id; // empty = none
    std::optional<VT_RGB32> fill, stroke;
    bool outlined = true; // whether its faces have borders
    std::vector<Face> faces;
    std::vector<Path> lines;
    std::vector<Position> points;
};

template <class Visit> void for_each_path(const Shape& shape, Visit visit) {
    for (const Face& face : shape.faces) {
        for (const Path& ring : face) {
            visit(ring);
        }
    }
    for (const Path& line : shape.lines) {
        visit(line);
    }
    visit(shape.points);
}

struct Extent {
    double west, south, east, north; // east may lie beyond 180
};

struct Map {
    bool drawing = false;         // coordinates of a plane, and a colour for each shape
    std::optional<Extent> extent; // from the file
    std::vector<Shape> shapes;
    std::vector<std::string> warnings;
};

} // namespace vorna::drawing::map
