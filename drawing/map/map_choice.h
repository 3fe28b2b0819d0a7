// Which part of a map is shown, and where it lies on the projection's plane.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "drawing/map/map_layer.h"
#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

inline constexpr double full_circle = 360;

// The extent that the file states; its east may lie across the antimeridian. Nothing for one without an inside.
std::optional<Extent> stated_extent(const Map& map, bool on_globe);

// Throws Usage_Error for an extent so far away that nothing can be drawn there. whose: the file or the option, for the message.
void check_extent(const Extent& extent, const std::string& whose, bool on_globe);

// The number of a shape by its name, else by its id, else by its number in the text. Throws Usage_Error that names the file.
std::size_t chosen_shape(const Map& map, const std::string& file, const std::string& text);

// The meridian around which a shape that lies across the antimeridian is in one piece; nothing for all others.
std::optional<Position> middle_of(const Shape& shape);

Bounds bounds_of(const Extent& extent, const Projection& projection);
Bounds bounds_of(const Face& face);

} // namespace vorna::drawing::map
