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

// Whether adding a half and truncating rounds the coordinate, which is so for almost all. False for NaN.
constexpr bool is_plain(double v) noexcept {
    return v >= 0 && v <= farthest_coordinate;
}

template <class Point> constexpr bool has_plain_coordinates(const Point& point) noexcept {
    return is_plain(point.x) && is_plain(point.y) && is_plain(point.z);
}

// Of a point with plain coordinates. Coordinates are stored one by one, and not as parts of a point that is then copied: a load
// of two coordinates that were just stored one by one waits for all earlier stores.
template <class Point> constexpr void round_plain_point(const Point& point, VT_DCI_Point& whole) noexcept {
    whole.x = static_cast<std::int32_t>(point.x + 0.5);
    whole.y = static_cast<std::int32_t>(point.y + 0.5);
    whole.z = static_cast<std::int32_t>(point.z + 0.5);
}

template <class Point> constexpr void round_point(const Point& point, VT_DCI_Point& whole) noexcept {
    if (has_plain_coordinates(point)) {
        round_plain_point(point, whole);
    } else {
        whole.x = nearest_coordinate(point.x);
        whole.y = nearest_coordinate(point.y);
        whole.z = nearest_coordinate(point.z);
    }
}

template <class Point> constexpr VT_DCI_Point nearest_point(const Point& point) noexcept {
    VT_DCI_Point whole{};
    round_point(point, whole);
    return whole;
}

// Rounds the points if all of them have plain coordinates; false when one has not.
template <class Point> bool round_plain_points(std::int32_t count, const Point* points, VT_DCI_Point* whole) noexcept {
    for (std::int32_t i = 0; i < count; ++i) {
        if (!has_plain_coordinates(points[i])) {
            return false;
        }
        round_plain_point(points[i], whole[i]);
    }
    return true;
}

template <class Point> Scratch<VT_DCI_Point> rounded_points(std::int32_t count, const Point* points) {
    Scratch<VT_DCI_Point> rounded(count);
    VT_DCI_Point* const whole = rounded.data();
    for (std::int32_t i = 0; i < count; ++i) {
        round_point(points[i], whole[i]);
    }
    return rounded;
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
    Scratch<VT_DCI_Point> rounded(count);
    VT_DCI_Point* const whole = rounded.data();
    const VT_Int_Rectangle window = window_rectangle(renderer.current_renderer_options());
    bool is_inside = true;
    for (std::int32_t i = 0; i < count; ++i) {
        round_point(points[i], whole[i]);
        is_inside &= contains(window, whole[i].x, whole[i].y);
    }
    if (is_inside) {
        device_slot.draw_admitted(renderer, rendition, count, whole, arguments...);
    } else {
        slot(renderer, rendition, count, whole, arguments...);
    }
}

// Cuts a polyline where whole coordinates end and calls draw(first segment, count of points, points, their colours) for each
// piece. colors: one for each point, or null. draw is not copied: the load of two of its pointers that were just stored one by
// one waits for all earlier stores.
template <class Draw>
void cut_3d_polyline(std::int32_t count, const VT_Point_D* points, const VT_RGB32* colors, const Draw& draw) {
    constexpr VT_Int_Rectangle guard{-farthest_coordinate, farthest_coordinate, -farthest_coordinate, farthest_coordinate};
    if (count < 2) {
        return;
    }
    Scratch<VT_DCI_Point> piece(count);
    if (round_plain_points(count, points, piece.data())) {
        draw(0, count, piece.data(), colors);
        return;
    }
    Scratch<std::uint16_t> outcodes(count);
    Scratch<VT_RGB32> piece_colors(colors ? count : 0);
    struct To_Whole {
        VT_DCI_Point operator()(const VT_Point_D& point) const noexcept { return nearest_point(point); }
        VT_DCI_Point operator()(const VT_DCI_Point& point) const noexcept { return point; }
    };
    clip_polyline(guard, count, points, colors, {outcodes.data(), piece.data(), piece_colors.data()}, To_Whole{}, draw);
}

} // namespace vorna
