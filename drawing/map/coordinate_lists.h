// The coordinates of a GeoJSON text, read apart from the rest of the document: as values of the JSON library they would take
// several times the memory and time.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

class Coordinate_Lists {
public:
    struct Range {
        std::size_t first = 0, end = 0;
    };
    // A value of a member "coordinates": a position, a path, a polygon or a list of polygons.
    struct Value {
        int depth = 0; // of lists: 1 to 4
        Range parts;   // the position, the path, the paths of the polygon, or the polygons
    };

    // Splits a text. None when a member "coordinates" is a list of any other form, when a key has an escape sequence, and where
    // the text cannot be JSON: then the whole text is for the library, which says what is wrong. Throws Load_Error.
    static std::optional<Coordinate_Lists> split(const std::string& file, std::string_view text, Load_Limits& limits);

    // The text with [N] for the value N of each member "coordinates" that is a list.
    const std::string& rest() const noexcept { return rest_; }
    std::size_t size() const noexcept { return values_.size(); }
    const Value& value(std::size_t number) const { return values_[number]; }

    const Position& position(std::size_t number) const { return positions_[number]; }
    Path path(std::size_t number) const;
    // The paths of a polygon.
    const Range& polygon(std::size_t number) const { return polygons_[number]; }

private:
    class Scanner;

    std::string rest_;
    std::vector<Value> values_;
    std::vector<Position> positions_;
    std::vector<Range> paths_, polygons_; // of positions, of paths
    Load_Limits::Loan memory_;
};

} // namespace vorna::drawing::map
