// The visible part of a map, on the projection's plane.
#include "drawing/map/map_choice.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/map/globe_cutter.h"

namespace vorna::drawing::map {
namespace {

bool same_name(const std::string& a, const std::string& b) {
    return std::ranges::equal(a, b, [](unsigned char c, unsigned char d) { return std::tolower(c) == std::tolower(d); });
}

} // namespace

std::optional<Extent> stated_extent(const Map& map, bool on_globe) {
    if (!map.extent) {
        return std::nullopt;
    }
    Extent extent = *map.extent;
    if (on_globe && extent.west > extent.east) {
        extent.east += full_circle;
    }
    return extent.west < extent.east && extent.south < extent.north ? std::optional(extent) : std::nullopt;
}

void check_extent(const Extent& extent, const std::string& whose, bool on_globe) {
    const double most_x = on_globe ? 3 * full_circle : 1e100, most_y = on_globe ? full_circle : 1e100;
    for (const auto& [value, most] :
         {std::pair(extent.west, most_x), {extent.east, most_x}, {extent.south, most_y}, {extent.north, most_y}}) {
        if (!(std::abs(value) <= most)) {
            std::array<char, 32> found;
            std::snprintf(found.data(), found.size(), "%.10g", value);
            throw Usage_Error(whose + ": expected " + (on_globe ? "degrees" : "coordinates up to 1e100") + ", found " +
                              found.data());
        }
    }
}

std::size_t chosen_shape(const Map& map, const std::string& file, const std::string& text) {
    for (const auto key : {&Shape::name, &Shape::id}) {
        const auto found = std::ranges::find_if(map.shapes, [&](const Shape& shape) { return same_name(shape.*key, text); });
        if (found != map.shapes.end()) {
            return static_cast<std::size_t>(found - map.shapes.begin());
        }
    }
    std::size_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || stop != text.data() + text.size() || number >= map.shapes.size()) {
        const std::size_t count = map.shapes.size();
        const std::string setting = name_of(Setting::clip_to);
        if (count == 0) {
            throw Usage_Error(setting + ": expected a file with shapes, found none in " + file);
        }
        throw Usage_Error(setting + ": expected a shape of " + file + " by its name, its id or its number" +
                          (count == 1 ? ", 0" : " from 0 to " + std::to_string(count - 1)) + ", found '" + text + "'");
    }
    return number;
}

void Longitudes::add(double east) {
    touched_[static_cast<std::size_t>(std::clamp(std::floor(std::remainder(east, full_circle)) + 180, 0.0, 359.0))] = true;
}

std::optional<Position> Longitudes::middle(std::size_t least_gap) const {
    if (!touched_.front() || !touched_.back()) {
        return std::nullopt;
    }
    std::size_t best_start = 0, best = 0, run = 0;
    for (std::size_t i = 0; i < touched_.size(); ++i) {
        run = touched_[i] ? 0 : run + 1;
        if (run > best) {
            best = run;
            best_start = i + 1 - run;
        }
    }
    const double gap_middle = static_cast<double>(best_start) + static_cast<double>(best) / 2 - 180;
    return best < least_gap ? std::nullopt : std::optional(Position{std::remainder(gap_middle + 180, full_circle), 0});
}

std::optional<Position> middle_of(const Shape& shape) {
    constexpr std::size_t least_gap = 10;
    Longitudes longitudes;
    for (const Face& face : shape.faces) {
        for (const Path& ring : face) {
            std::ranges::for_each(ring, [&](Position p) { longitudes.add(p.x); });
        }
    }
    return longitudes.middle(least_gap);
}

Bounds bounds_of(const Extent& extent, const Projection& projection) {
    constexpr int steps = 128;
    Bounds bounds = Bounds::nothing();
    for (int i = 0; i <= steps; ++i) {
        for (int j = 0; j <= steps; ++j) {
            Position p{extent.west + (extent.east - extent.west) * i / steps,
                       extent.south + (extent.north - extent.south) * j / steps};
            if (projection.domain()) {
                p.y = std::clamp(p.y, projection.domain()->south, projection.domain()->north);
            }
            if (const auto place = project_point(p, projection)) {
                bounds.add(*place);
            }
        }
    }
    return bounds;
}

Bounds bounds_of(const Face& face) {
    Bounds bounds = Bounds::nothing();
    for (const Path& ring : face) {
        std::ranges::for_each(ring, [&](Position p) { bounds.add(p); });
    }
    return bounds;
}

} // namespace vorna::drawing::map
