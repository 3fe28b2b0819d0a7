// Long strips and polylines in runs, so that a band of rows draws those of its rows only.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <tuple>
#include <type_traits>

#include "host/attributes.h"
#include "host/rendition.h"
#include "host/window.h"
#include "vorna/draw.h"
#include "vorna/standard/merging.h"

namespace vorna {

// What tells whether the vertices of a polyline may be drawn twice.
struct Line_Surface {
    VT_Int_Rectangle window;
    bool blends;                // translucent lines
    bool has_usual_depth_rules; // what is as near as before is drawn, and its depth written
};

// Triangles or segments of a run.
inline constexpr std::int32_t steps_of_run = 32;

// The part of a call with so many points from one on, of arguments that begin with count and points.
template <class Point> auto run_of(const std::tuple<std::int32_t, const Point*>& call, std::int32_t first, std::int32_t length) {
    return std::tuple(length, std::get<1>(call) + first);
}
template <class Point>
auto run_of(const std::tuple<std::int32_t, const Point*, const VT_RGB32*, bool>& call, std::int32_t first, std::int32_t length) {
    const auto& [count, points, colors, single] = call;
    return std::tuple(length, points + first, single || !colors ? colors : colors + first, single);
}
template <class Point>
auto run_of(const std::tuple<std::int32_t, const Point*, const VT_RGB32*>& call, std::int32_t first, std::int32_t length) {
    const auto& [count, points, colors] = call;
    return std::tuple(length, points + first, colors ? colors + first : colors);
}
template <class Point>
auto run_of(const std::tuple<std::int32_t, const Point*, const VT_RGB32*, const VT_Parameter*, std::int32_t, const float*,
                             const VT_Vector*>& call,
            std::int32_t first, std::int32_t length) {
    const auto& [count, points, colors, parameters, width, weights, normals] = call;
    return std::tuple(length, points + first, colors ? colors + first : colors,
                      parameters ? parameters + std::ptrdiff_t{first} * width : parameters, width,
                      weights ? weights + first : weights, normals ? normals + first : normals);
}

// Whether a vertex of such a polyline may be drawn by two runs, first as the last pixel of one and then as the first of the next:
// neither blends with what is there, and the second is at the first one's depth.
inline bool may_repeat_vertices(const VT_Rendition& rendition, const Line_Surface& surface) noexcept {
    const VT_Line_Attributes& line = rendition.line;
    return drawn_by_renderer(line) && !has_line_types(line) && !(line.flags & line_flag::smoothed) && line.mode == 0 &&
           rendition.drawing_flags == 0 && !rendition.clip.complex_clip && !surface.blends &&
           (surface.has_usual_depth_rules || !rendition.clip.depth_test);
}

// Whether all points lie near the window, where device lines of any length are drawn by the same rules, and have depths of the
// buffer.
template <class Point> bool are_usual(const Point* points, std::int32_t count, const VT_Int_Rectangle& window) noexcept {
    using Number = decltype(Point::y);
    constexpr std::int32_t farthest = most_window_pixels / 4;
    // Such windows fit all number types.
    if (std::max({std::abs(std::int64_t{window.left}), std::abs(std::int64_t{window.right}),
                  std::abs(std::int64_t{window.bottom}), std::abs(std::int64_t{window.top})}) > 1 << 20) {
        return false;
    }
    const auto left = static_cast<Number>(window.left - farthest), right = static_cast<Number>(window.right + farthest),
               bottom = static_cast<Number>(window.bottom - farthest), top = static_cast<Number>(window.top + farthest);
    bool fits = true;
    for (std::int32_t i = 0; i < count; ++i) {
        const Point& p = points[i];
        fits &= p.x >= left && p.x <= right && p.y >= bottom && p.y <= top && p.z >= 0 && p.z <= farthest_depth;
    }
    return fits;
}

// Inside after rounding too, which moves points by less than two pixels.
template <class Point> bool is_surely_inside(const Point& p, const VT_Int_Rectangle& inside) noexcept {
    const double x = p.x, y = p.y;
    return x >= inside.left + 2 && x <= inside.right - 2 && y >= inside.bottom + 2 && y <= inside.top - 2;
}

// Whether all of a polyline's runs are cut as the whole is. The renderer draws the last vertex before all others where the last
// segment is cut. Device polylines of floats keep to the hard clip only where one of their points lies outside of the window.
template <class Point>
bool are_cut_alike(const Point* points, std::int32_t count, const VT_Int_Rectangle& window,
                   const VT_Int_Rectangle& inside) noexcept {
    return is_surely_inside(points[count - 2], inside) && (!std::is_same_v<decltype(Point::y), float> || inside == window);
}

// Whether a run may end at the vertex: the segments on both sides of it lie inside, and the second one has pixels of its own, of
// which the first is at the vertex.
template <class Point> bool may_end_run(const Point* vertex, const VT_Int_Rectangle& inside) noexcept {
    const auto are_apart = [](auto a, auto b) { return a - b >= 2 || b - a >= 2; };
    return is_surely_inside(vertex[-1], inside) && is_surely_inside(vertex[0], inside) && is_surely_inside(vertex[1], inside) &&
           (are_apart(vertex[0].x, vertex[1].x) || are_apart(vertex[0].y, vertex[1].y));
}

// Calls visit(arguments) for the runs of a call in order, or once for the whole of a call that is not cut.
// surface_of() is the surface of lines.
template <Primitive primitive, class... Kept, class Surface_Of, class Visit>
void for_each_run(const VT_Rendition& rendition, const std::tuple<Kept...>& call, Surface_Of surface_of, Visit visit) {
    if constexpr (primitive == Primitive::polytriangle || primitive == Primitive::polyline) {
        constexpr bool is_line = primitive == Primitive::polyline;
        constexpr std::int32_t shared_points = is_line ? 1 : 2; // of neighbouring runs
        const std::int32_t count = std::get<0>(call);
        const auto* const points = std::get<1>(call);
        const auto may_be_cut = [&](const Line_Surface& surface, const VT_Int_Rectangle& inside) {
            if constexpr (is_line) {
                return may_repeat_vertices(rendition, surface) && are_usual(points, count, surface.window) &&
                       are_cut_alike(points, count, surface.window, inside);
            } else {
                return drawn_by_renderer(rendition.face);
            }
        };
        constexpr std::int32_t most_whole = 2 * steps_of_run + shared_points;
        const Line_Surface surface = count > most_whole ? surface_of() : Line_Surface{};
        const VT_Int_Rectangle inside = common_part(surface.window, rendition.clip.hard_clip);
        if (count > most_whole && may_be_cut(surface, inside)) {
            const std::int32_t steps = count - shared_points;
            for (std::int32_t first = 0, end = 0; first < steps; first = end) {
                end = std::min(first + steps_of_run, steps);
                while (is_line && end < steps && !may_end_run(points + end, inside)) {
                    ++end;
                }
                visit(run_of(call, first, end - first + shared_points));
            }
            return;
        }
    }
    visit(call);
}

// Shorter strips are not worth parts.
inline constexpr std::int32_t least_points_of_parts = 6;

// Calls visit(arguments) for the parts of a strip whose triangles touch the same bands, in order. bands_of(arguments) compares
// them. Parts begin at even places, where a strip may be cut without another order of corners.
template <class Run, class Bands_Of, class Visit> void for_each_part(const Run& strip, Bands_Of bands_of, Visit visit) {
    const std::int32_t triangles = std::get<0>(strip) - 2;
    const auto bands_at = [&](std::int32_t place) { return bands_of(run_of(strip, place, std::min(triangles - place, 2) + 2)); };
    std::int32_t first = 0;
    for (auto bands = bands_at(0); first < triangles;) {
        std::int32_t end = first + 2;
        auto next = bands;
        while (end < triangles && (next = bands_at(end)) == bands) {
            end += 2;
        }
        end = std::min(end, triangles);
        visit(run_of(strip, first, end - first + 2));
        first = end;
        bands = next;
    }
}

} // namespace vorna
