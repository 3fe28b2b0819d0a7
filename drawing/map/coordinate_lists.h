// The coordinates of a GeoJSON text, read apart from the rest of the document: as values of the JSON library they would take
// several times the memory and time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/json_scanner.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// Bytes that the coordinates in a text take at most: "[[[1,2]]]," becomes a position, a path and a polygon, in lists with as much
// room again.
constexpr std::uint64_t coordinate_memory(std::string_view text) noexcept {
    constexpr std::uint64_t memory_per_byte = 12;
    return memory_per_byte * text.size();
}

class Coordinate_Lists {
public:
    // Splits a text. None when a member "coordinates" is a list of any other form, when a key has an escape sequence, and where
    // the text cannot be JSON: then the library reads the whole text and names the mistake. Throws Load_Error.
    static std::optional<Coordinate_Lists> split(const std::string& file, std::string_view text, Load_Limits& limits);

    // The text with [N] for the value N of each member "coordinates" that is a list.
    const std::string& rest() const noexcept { return rest_; }

    // Reads the list at the scanner's place as the next value. Returns whether it is a position, a path, a polygon or a list of
    // polygons.
    bool read(Json_Scanner& scanner);
    void clear() noexcept;

    // Adds a value to the shape; false when it is not one of this type of geometry.
    bool add_to(Shape& shape, std::string_view type, std::size_t number) const;
    // Of values that are not a single position.
    std::size_t position_count(std::size_t number) const noexcept { return values_[number].position_count; }

private:
    struct Range {
        std::size_t first = 0, end = 0;
    };
    struct Value {
        int depth = 0; // of lists: 1 to 4
        Range parts;   // the position, the path, the paths of the polygon, or the polygons
        std::size_t position_count = 0;
    };

    bool read_lists(Json_Scanner& scanner, int depth);
    bool read_position(Json_Scanner& scanner);
    std::size_t count_at(int depth) const;
    Path path(std::size_t number) const;
    void add_rings(const Range& paths, Face& face) const;

    std::string rest_;
    std::vector<Value> values_;
    std::vector<Position> positions_;
    std::vector<Range> paths_, polygons_; // of positions, of paths
    Load_Limits::Loan memory_;
};

} // namespace vorna::drawing::map
