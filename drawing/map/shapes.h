// The shapes of maps and drawings, independent of the file format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
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

// Rings of files end where they begin.
inline Path without_closing_point(Path ring) {
    if (ring.size() > 1 && ring.front() == ring.back()) {
        ring.pop_back();
    }
    return ring;
}

// A field's value: none, a number or a text.
using Value = std::variant<std::monostate, double, std::string>;

// Lines of drawings, whose sizes are those on the plane or on paper.
struct Pen {
    double width = 0;         // on the plane; 0 = of the weight
    float weight = 0;         // millimetres; 0 = the usual one
    std::uint32_t dashes = 0; // number of Map::dashes from 1; 0 = none
    bool contrasts = false;   // whether fills and markers contrast with the background
};

struct Shape {
    std::string name, id; // empty = none
    // Its own style; none = the map's.
    std::optional<VT_RGB32> fill, stroke, marker_color;
    std::optional<std::int32_t> stroke_width, marker_size, marker_symbol;
    Pen pen;
    bool outlined = true;      // whether its faces have borders
    std::uint32_t layer = 0;   // index in Map::layers
    std::vector<Value> values; // of the fields that the query names, in their order
    std::vector<Face> faces;
    std::vector<Path> lines;
    std::vector<Position> points;
};

// Any_Shape: Shape or const Shape.
template <class Any_Shape, class Visit> void for_each_path(Any_Shape& shape, Visit visit) {
    for (auto& face : shape.faces) {
        for (auto& ring : face) {
            visit(ring);
        }
    }
    for (auto& line : shape.lines) {
        visit(line);
    }
    visit(shape.points);
}

struct Extent {
    double west, south, east, north; // east may lie beyond 180
};

// What a reader is asked for.
struct Map_Query {
    // One layer of a file that has several, or some between commas; empty = TopoJSON's first one, all of other formats.
    std::string layer;
    std::vector<std::string> fields; // those whose values are kept
    bool lists_fields = false;       // all layers, with Layer_Facts::fields
    std::string layout;              // of a drawing; empty = model space
    std::string font;                // file, of a drawing's texts; empty = the default font
};

struct Field_Facts {
    std::string name, type; // number or text
};

// A layer of a file. Formats without layers have one without a name.
struct Layer_Facts {
    std::string name;
    // The coordinate system: a code as EPSG:3035 or a PROJ string of parameters that cannot name files. Empty: degrees of
    // WGS 84, or not known.
    std::string system;
    // Why the coordinate system cannot be used; empty = it can be used.
    std::string refusal;
    std::vector<Field_Facts> fields;
};

struct Map {
    bool drawing = false;         // coordinates of a plane, and a colour for each shape
    std::optional<Extent> extent; // from the file
    std::vector<Layer_Facts> layers;
    std::vector<Shape> shapes;
    std::vector<std::vector<double>> dashes; // of pens: dashes and gaps by turns, on the plane
    double paper_unit = 0;                   // millimetres, of a sheet of paper, which is the extent; 0 = no sheet
    std::vector<std::string> warnings;
};

} // namespace vorna::drawing::map
