// Coordinate systems that files state.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// The system that the text of a file names, in the form of Layer_Facts::system; empty for degrees of WGS 84. Codes may be written
// as EPSG:3857, urn:ogc:def:crs:EPSG::3857 or http://www.opengis.net/def/crs/EPSG/0/3857, PROJ strings with known parameters
// only: others could name files. None: another text.
std::optional<std::string> coordinate_system_of(std::string_view text);

// Replaces the positions of all shapes whose layer states a system by degrees of WGS 84. Throws Map_Error, which names the file,
// for a system that cannot be used and for positions outside its area; Load_Error.
void convert_to_degrees(const std::string& file, Map& map, Load_Limits& limits);

// The part that needs PROJ: positions of one system, in place. False where it is not defined for the position.
class Degree_Conversion {
public:
    virtual ~Degree_Conversion() = default;
    virtual bool convert(Position& position) const = 0;
};
// Null for a system that PROJ does not know. Throws std::runtime_error without PROJ.
std::unique_ptr<Degree_Conversion> make_degree_conversion(const std::string& system);

} // namespace vorna::drawing::map
