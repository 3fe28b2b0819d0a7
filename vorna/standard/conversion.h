// From one coordinate form to another, and what of a line can be seen.
#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"
#include "vorna/standard/drawing_area.h"

namespace vorna {

// The farthest whole coordinate that floats become: differences of two of them still fit 32 bits.
inline constexpr std::int32_t farthest_coordinate = 0x3FFFFFFF;

// To the nearest whole number, halves upwards; what is no number becomes 0.
inline std::int32_t nearest_coordinate(double value) noexcept {
    if (std::isnan(value)) {
        return 0;
    }
    return static_cast<std::int32_t>(
        std::floor(std::fmin(std::fmax(value, -double{farthest_coordinate}), double{farthest_coordinate}) + 0.5));
}

template <class Point> std::vector<VT_DCI_Point> rounded_points(std::int32_t count, const Point* points) {
    std::vector<VT_DCI_Point> whole;
    whole.reserve(static_cast<std::size_t>(count > 0 ? count : 0));
    for (std::int32_t i = 0; i < count; ++i) {
        whole.push_back({nearest_coordinate(points[i].x), nearest_coordinate(points[i].y), nearest_coordinate(points[i].z)});
    }
    return whole;
}

// The part of a segment that lies within margin of the rectangle's pixels, as parameters from 0 to 1 (Liang-Barsky). False when
// there is none.
bool part_near(const VT_Int_Rectangle& rectangle, double margin, const VT_Point_D& from, const VT_Point_D& to, double& first,
               double& last) noexcept;

// Draws float points through a slot of whole ones.
template <class Slot, class... Arguments>
void draw_rounded(const Slot& slot, VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                  const VT_Point* points, Arguments... arguments) {
    slot(renderer, rendition, count, rounded_points(count, points).data(), arguments...);
}

// Device points lie inside the window; should some not, they go to the slot that clips.
template <class Device_Slot, class Slot, class... Arguments>
void draw_rounded_inside(const Device_Slot& device_slot, const Slot& slot, VT_Renderer_Data& renderer,
                         const VT_Rendition& rendition, std::int32_t count, const VT_Point* points, Arguments... arguments) {
    const std::vector<VT_DCI_Point> whole = rounded_points(count, points);
    const VT_Int_Rectangle window = window_rectangle(renderer.current_renderer_options());
    bool is_inside = true;
    for (const VT_DCI_Point& point : whole) {
        is_inside = is_inside && contains(window, point.x, point.y);
    }
    if (is_inside) {
        device_slot(renderer, rendition, count, whole.data(), arguments...);
    } else {
        slot(renderer, rendition, count, whole.data(), arguments...);
    }
}

// Cuts a polyline where whole coordinates end, and calls draw(first segment, count of points, points, their colours) for what is
// left. colors: one a point, or null.
void cut_3d_polyline(std::int32_t count, const VT_Point_D* points, const VT_RGB32* colors,
                     const std::function<void(std::int32_t, std::int32_t, const VT_DCI_Point*, const VT_RGB32*)>& draw);

} // namespace vorna
