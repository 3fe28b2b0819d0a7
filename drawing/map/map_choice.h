// The visible part of a map, on the projection's plane.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "drawing/map/map_layer.h"
#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

inline constexpr double full_circle = 360;

// The extent in the file; its east may lie beyond the antimeridian. Empty for an extent without area.
std::optional<Extent> stated_extent(const Map& map, bool on_globe);

// Throws Usage_Error for an extent outside the range in which coordinates can be drawn. whose: the file or option, for the
// message.
void check_extent(const Extent& extent, const std::string& whose, bool on_globe);

// The index of the shape with this name, else with this id, else of this number. Throws Usage_Error, which names the file.
std::size_t chosen_shape(const Map& map, const std::string& file, const std::string& text);

// Whole degrees of longitude with positions.
class Longitudes {
public:
    void add(double east);
    // With positions beside the antimeridian, on both sides, and a gap of so many degrees or more: the meridian opposite to the
    // middle of the widest gap. Empty otherwise.
    std::optional<Position> middle(std::size_t least_gap) const;

private:
    std::array<bool, 360> touched_{};
};

// For a shape across the antimeridian the centre meridian of a map that shows it in one piece; empty for other shapes.
std::optional<Position> middle_of(const Shape& shape);

Bounds bounds_of(const Extent& extent, const Projection& projection);
Bounds bounds_of(const Face& face);

} // namespace vorna::drawing::map
