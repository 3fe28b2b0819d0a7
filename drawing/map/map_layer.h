// A map's shapes on a projection's plane, ready to be drawn into any window.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/borders.h"
#include "drawing/map/map_items.h"
#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Bounds {
    double left, right, bottom, top;

    static Bounds nothing();
    bool empty() const { return !(left <= right && bottom <= top); }
    void add(Position p);
};

// Colours and lines of shapes.
struct Layer_Style {
    std::vector<std::optional<VT_RGB32>> fills; // by shape
    std::vector<VT_RGB32> strokes;              // by shape
    std::vector<std::int32_t> widths;           // by shape; 0 = no line
    std::vector<Marker_Paint> markers;          // by shape
    std::vector<const Dashes*> dashes;          // by shape, in lengths of `dash_unit` pixels; null = those that follow
    double dash_unit = 0;
    std::optional<Dashes> borders, outlines; // between two shapes, and of one shape only; empty = not drawn
    std::optional<VT_RGB32> casing;
    std::int32_t casing_width = 2; // on each side

    // The same style in an image that is `times` as large. Dashes grow with the width.
    void enlarge(std::int32_t times);
};

class Map_Layer {
public:
    // Throws Map_Error, which names the file, for coordinates outside the globe, and Load_Error.
    Map_Layer(const std::string& file, const Map& map, const Projection& projection, Load_Limits& limits);

    const std::vector<std::vector<std::size_t>>& neighbours() const noexcept { return neighbours_; }
    const Bounds& bounds() const noexcept { return bounds_; }
    std::size_t shape_count() const noexcept { return faces_.size(); }
    std::size_t position_count() const noexcept { return position_count_; }
    const std::vector<std::pair<Position, std::size_t>>& points() const noexcept { return points_; } // with their shape
    bool has_faces(std::size_t shape) const noexcept { return !faces_[shape].empty(); }
    std::size_t line_count() const noexcept { return lines_.size(); }
    std::size_t shape_of_line(std::size_t line) const noexcept { return lines_[line].shape; }
    // A line that is no border of a face; null for others.
    const Path* own_line(std::size_t line) const noexcept {
        return lines_[line].kind == Line::Kind::line ? &lines_[line].path : nullptr;
    }
    // All faces of a shape as one.
    Face face_of(std::size_t shape) const;

    // How many places on the plane, of corners and points, a condition holds for.
    template <class Condition> std::size_t count_places(Condition holds) const {
        std::size_t count = 0;
        const auto add = [&](const Path& path) { count += static_cast<std::size_t>(std::ranges::count_if(path, holds)); };
        for (const std::vector<Face>& faces : faces_) {
            for (const Face& face : faces) {
                std::ranges::for_each(face, add);
            }
        }
        std::ranges::for_each(lines_, [&](const Line& line) { add(line.path); });
        return count + static_cast<std::size_t>(std::ranges::count_if(points_, [&](const auto& p) { return holds(p.first); }));
    }

    double longest_segment() const;     // of lines, on the plane
    std::size_t most_positions() const; // of a face or line
    std::size_t item_count() const;     // at most
    // The items in drawing order. Layer and style must outlive them.
    void add_items(const Layer_Style& style, Map_Items& items) const;

private:
    struct Line {
        Path path;
        std::size_t shape;
        enum class Kind { border, outline, line } kind;
    };

    void add_line(const Path& path, std::size_t shape, Line::Kind kind, const Projection& projection);

    std::vector<std::vector<Face>> faces_; // by shape
    std::vector<Line> lines_;
    std::vector<std::pair<Position, std::size_t>> points_; // with their shape
    std::vector<std::vector<std::size_t>> neighbours_;
    Bounds bounds_ = Bounds::nothing();
    std::size_t position_count_ = 0;
};

} // namespace vorna::drawing::map
