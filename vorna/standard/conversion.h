// Conversion from one coordinate form to another.
#pragma once

#include <cstdint>

#include "host/polyline_clip.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
#include "host/rounding.h"
#include "host/scratch.h"
#include "vorna/standard/drawing_area.h"

namespace vorna {

// The largest whole coordinate that floats are rounded to: differences of two such coordinates fit 32 bits.
inline constexpr std::int32_t farthest_coordinate = 0x3FFFFFFF;

// Rounds a coordinate of a line or marker.
constexpr std::int32_t nearest_coordinate(double value) noexcept {
    return nearest_integer(value, -farthest_coordinate, farthest_coordinate);
}

// Almost all points are near, and are rounded without a branch. Coordinates are set one by one, and not as parts of a point that
// is then copied: a load of two coordinates that were just stored one by one waits for all earlier stores.
template <class Point> constexpr VT_DCI_Point nearest_point(const Point& point) noexcept {
    constexpr double farthest = farthest_coordinate;
    const auto is_near = [](double v) { return -farthest <= v && v <= farthest; };
    const auto near = [](double v) {
        const auto whole = static_cast<std::int32_t>(v + 0.5);
        return whole - (v + 0.5 < whole ? 1 : 0);
    };
    std::int32_t x, y, z;
    if (is_near(point.x) && is_near(point.y) && is_near(point.z)) {
        x = near(point.x);
        y = near(point.y);
        z = near(point.z);
    } else {
        x = nearest_coordinate(point.x);
        y = nearest_coordinate(point.y);
        z = nearest_coordinate(point.z);
    }
    return {x, y, z};
}

template <class Point> Scratch<VT_DCI_Point> rounded_points(std::int32_t count, const Point* points) {
    Scratch<VT_DCI_Point> whole(count);
    for (std::int32_t i = 0; i < count; ++i) {
        whole[i] = nearest_point(points[i]);
    }
    return whole;
}

// Rounds float points and draws them through the slot of the integer form.
template <class Slot, class... Arguments>
void draw_rounded(const Slot& slot, VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                  const VT_Point* points, Arguments... arguments) {
    slot(renderer, rendition, count, rounded_points(count, points).data(), arguments...);
}

// The same for device points, which are expected inside the window. If one lies outside, all are drawn through the slot that
// clips.
template <class Device_Slot, class Slot, class... Arguments>
void draw_rounded_inside(const Device_Slot& device_slot, const Slot& slot, VT_Renderer_Data& renderer,
                         const VT_Rendition& rendition, std::int32_t count, const VT_Point* points, Arguments... arguments) {
    Scratch<VT_DCI_Point> whole(count);
    const VT_Int_Rectangle window = window_rectangle(renderer.current_renderer_options());
    bool is_inside = true;
    for (std::int32_t i = 0; i < count; ++i) {
        whole[i] = nearest_point(points[i]);
        is_inside &= contains(window, whole[i].x, whole[i].y);
    }
    if (is_inside) {
        device_slot(renderer, rendition, count, whole.data(), arguments...);
    } else {
        slot(renderer, rendition, count, whole.data(), arguments...);
    }
}

// Cuts a polyline where whole coordinates end and calls draw(first segment, count of points, points, their colours) for each
// piece. colors: one for each point, or null.
template <class Draw> void cut_3d_polyline(std::int32_t count, const VT_Point_D* points, const VT_RGB32* colors, Draw draw) {
    constexpr VT_Int_Rectangle guard{-farthest_coordinate, farthest_coordinate, -farthest_coordinate, farthest_coordinate};
    Scratch<std::uint16_t> outcodes(count);
    Scratch<VT_DCI_Point> piece(count);
    Scratch<VT_RGB32> piece_colors(colors ? count : 0);
    struct To_Whole {
        VT_DCI_Point operator()(const VT_Point_D& point) const noexcept { return nearest_point(point); }
        VT_DCI_Point operator()(const VT_DCI_Point& point) const noexcept { return point; }
    };
    clip_polyline(guard, count, points, colors, {outcodes.data(), piece.data(), piece_colors.data()}, To_Whole{}, draw);
}

} // namespace vorna
