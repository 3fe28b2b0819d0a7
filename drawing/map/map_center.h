// What the positions of maps tell about their coordinates.
#pragma once

#include <optional>
#include <span>

#include "drawing/map/map_sheet.h"

namespace vorna::drawing::map {

enum class Coordinate_Kind {
    degrees,
    plane,   // most positions are not degrees
    picture, // likewise, and all lie within 10000 of the origin: y grows downwards, as in pictures
};

// Of maps that state no coordinate system; drawings are always planes.
Coordinate_Kind coordinate_kind(std::span<const Map_Sheet> sheets);

// The middle of maps in degrees within a hemisphere: where a map centred on it shows them in one piece. Empty for others.
// azimuthal: the middle of a cap, else a meridian, and only for maps over the antimeridian.
std::optional<Position> automatic_center(std::span<const Map_Sheet> sheets, bool azimuthal);

} // namespace vorna::drawing::map
