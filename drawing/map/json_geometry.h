// Geometry objects of GeoJSON and TopoJSON, which differ in the form of paths.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

using Json = nlohmann::ordered_json;

// The place of a value in the document: a member or element of an outer value. Lives on the stack; made into text for messages.
struct Place {
    const Place* above = nullptr;
    std::string_view key; // empty = an element
    std::size_t index = 0;

    std::string text() const;
};

class Json_Geometry_Reader {
public:
    Json_Geometry_Reader(const std::string& file, Load_Limits& limits) : file_(file), limits_(limits) {}
    virtual ~Json_Geometry_Reader() = default;

    // Adds the geometry to the shape; null adds nothing.
    void read_geometry(const Json& geometry, const Place& place, Shape& shape) const { read_geometry(geometry, place, shape, 0); }
    // Name, identity, style and the query's values of a feature or of a geometry with properties.
    void read_properties(const Json& feature, const Place& place, const Map_Query& query, Layer_Facts& layer, Shape& shape) const;
    // The coordinate system that a document's member `crs` names.
    void read_system(const Json& document, Layer_Facts& layer) const;
    std::optional<Extent> read_extent(const Json& object, const Place& place) const;

    // Throw Map_Error for a missing value and for one of another type.
    const Json& member(const Json& object, const char* key, const Place& place) const;
    const Json& array(const Json& value, const Place& place, const char* expected = "an array") const;
    const std::string& string(const Json& value, const Place& place, const char* expected) const;
    double number(const Json& value, const Place& place) const;
    Position position(const Json& value, const Place& place) const;
    [[noreturn]] void fail(const Place& place, const std::string& expected, const Json& found) const;

protected:
    Json_Geometry_Reader(const Json_Geometry_Reader&) = default;
    const std::string& file() const noexcept { return file_; }
    // Draws memory for count positions, and the work of copying them.
    void take_positions(std::size_t count) const {
        limits_.take_memory(file_, count * sizeof(Position));
        limits_.take_work(file_, count);
    }

private:
    virtual const char* path_key() const = 0;
    virtual Path path(const Json& value, const Place& place) const = 0;
    virtual Position point(const Json& value, const Place& place) const = 0;
    // Reads a geometry in another way, or returns false.
    virtual bool read_otherwise(const Json&, Shape&) const { return false; }

    void read_geometry(const Json& geometry, const Place& place, Shape& shape, int depth) const;
    Face polygon(const Json& value, const Place& place) const;
    template <class Read> void for_each(const Json& value, const Place& place, Read read) const;

    const std::string& file_;
    Load_Limits& limits_;
};

} // namespace vorna::drawing::map
