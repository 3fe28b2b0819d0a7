// What slots may be given. Renderers trust their callers in some slots and look at nothing there; an application's numbers are
// looked at here, on their way to the slot. What a slot may not get goes to the standard function, which cuts it.
//
//     draw_dci_polyline, …colorized…, …gouraud…     points at most 32767 columns and rows from the window
//     draw_dci_dot                                  a point in the window
//     draw_dci_ellipse, draw_dci_elliptical_arc     a shape in the window and in the hard clip; arcs without line types
//     draw_dci_index8_image, draw_dci_rgb32_image,
//     write_depth_rectangle                         a rectangle that leaves the window to the right only
//     read_color_image, read_depth_image,
//     clear_depth_rectangle                         a rectangle in the window
//     draw_2di_polyline                             no wide line with line types, whose corners join as a whole only
//     all others                                    anything
//
// Slots that something else than the renderer owns, such as a recorder, get every call and pass it on by the same way.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "host/actions.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna {

// Device coordinates of the window's lower left pixel.
inline VT_Int_Pair window_origin(const VT_Renderer_Options& options) noexcept {
    return options.local_coordinates() ? VT_Int_Pair{} : options.window_origin();
}

// The window in device coordinates. Empty where renderers draw nothing, which is farther away than differences of coordinates
// reach.
inline VT_Int_Rectangle window_rectangle(const VT_Renderer_Options& options) noexcept {
    constexpr std::int64_t farthest = 0x40000000;
    const VT_Int_Pair origin = window_origin(options);
    const VT_Int_Pair size = options.window_size();
    const auto is_near = [](std::int64_t first, std::int64_t length) { return first >= -farthest && first + length <= farthest; };
    if (!is_near(origin.x, size.x) || !is_near(origin.y, size.y)) {
        return {0, -1, 0, -1};
    }
    return {origin.x, origin.x + size.x - 1, origin.y, origin.y + size.y - 1};
}

constexpr bool contains(const VT_Int_Rectangle& rectangle, std::int64_t x, std::int64_t y) noexcept {
    return x >= rectangle.left && x <= rectangle.right && y >= rectangle.bottom && y <= rectangle.top;
}

// Lines that the first of their types draws in two passes, the lower one wider.
inline bool is_cased(const VT_Line_Attributes& line) noexcept {
    return line.line_types && !line.line_types->types.empty() && line.line_types->types.front() &&
           line.line_types->types.front()->kind == 7;
}

inline bool has_line_types(const VT_Line_Attributes& line) noexcept {
    return line.line_types && !(line.line_types == VT_Line_Type_Set::None);
}

// Each says by admits(renderer, rendition, arguments of the slot) whether the slot may get a call.
struct Any_Call {
    static constexpr bool admits(const auto&...) noexcept { return true; }
};

struct Points_Near_Window {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                       const auto&...) {
        constexpr std::int32_t farthest = 32767;
        const VT_Int_Rectangle window = window_rectangle(renderer.current_renderer_options());
        const auto low_x = static_cast<std::uint32_t>(window.left - farthest);
        const auto low_y = static_cast<std::uint32_t>(window.bottom - farthest);
        const std::uint32_t width = static_cast<std::uint32_t>(window.right + farthest) - low_x;
        const std::uint32_t height = static_cast<std::uint32_t>(window.top + farthest) - low_y;
        bool is_near = !is_empty(window);
        for (std::int32_t i = 0; i < count; ++i) {
            is_near &= static_cast<std::uint32_t>(points[i].x) - low_x <= width;
            is_near &= static_cast<std::uint32_t>(points[i].y) - low_y <= height;
        }
        return is_near;
    }
};

struct Point_In_Window {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition&, const VT_DCI_Point* point, const auto&...) {
        return contains(window_rectangle(renderer.current_renderer_options()), point->x, point->y);
    }
};

// The centre is a column and row of the buffer.
struct Shape_In_Clip {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* center,
                       const VT_DCI_Point* radii, double, double, double rotation, const auto&...) {
        const VT_Renderer_Options& options = renderer.current_renderer_options();
        const VT_Int_Rectangle window = window_rectangle(options);
        const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
        const VT_Int_Pair origin = window_origin(options);
        double a = std::abs(double(radii->x));
        double b = std::abs(double(radii->y));
        if (rotation != 0) {
            // Angles that went through single precision still turn axes into axes.
            constexpr double tolerance = 1e-3;
            const double cosine = std::cos(rotation);
            const double sine = std::sin(rotation);
            const double width = std::ceil(std::hypot(a * cosine, b * sine) - tolerance);
            b = std::ceil(std::hypot(a * sine, b * cosine) - tolerance);
            a = width;
        }
        const double x = double(center->x) + origin.x;
        const double y = double(center->y) + origin.y;
        return x - a >= std::max(window.left, clip.left) && x + a <= std::min(window.right, clip.right) &&
               y - b >= std::max(window.bottom, clip.bottom) && y + b <= std::min(window.top, clip.top);
    }
};

struct Plain_Arc_In_Clip {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const auto&... arguments) {
        return !has_line_types(rendition.line) && Shape_In_Clip::admits(renderer, rendition, arguments...);
    }
};

// Renderers cut the right side themselves.
struct Rectangle_In_Window_But_For_Its_Right {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition&, const VT_DCI_Point* top_left,
                       const VT_DCI_Point* bottom_right, const auto&...) {
        const VT_Int_Rectangle window = window_rectangle(renderer.current_renderer_options());
        return !is_empty(window) && top_left->x >= window.left && top_left->y <= window.top && bottom_right->y >= window.bottom;
    }
};

struct Rectangle_In_Window {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* top_left,
                       const VT_DCI_Point* bottom_right, const auto&...) {
        return Rectangle_In_Window_But_For_Its_Right::admits(renderer, rendition, top_left, bottom_right) &&
               bottom_right->x <= window_rectangle(renderer.current_renderer_options()).right;
    }
};

struct Cleared_Rectangle_In_Window {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
        const VT_Int_Rectangle& cleared = rendition.window.rectangle;
        const VT_DCI_Point top_left{cleared.left, cleared.top, 0};
        const VT_DCI_Point bottom_right{cleared.right, cleared.bottom, 0};
        return Rectangle_In_Window::admits(renderer, rendition, &top_left, &bottom_right);
    }
};

struct Thin_Or_Untyped_Line {
    static bool admits(VT_Renderer_Data&, const VT_Rendition& rendition, const auto&...) noexcept {
        return rendition.line.weight <= 1 || !has_line_types(rendition.line) || is_cased(rendition.line);
    }
};

template <auto Slot> struct Slot_Contract : Any_Call {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_polyline> : Points_Near_Window {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_colorized_polyline> : Points_Near_Window {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_gouraud_polyline> : Points_Near_Window {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_dot> : Point_In_Window {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_ellipse> : Shape_In_Clip {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_elliptical_arc> : Plain_Arc_In_Clip {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_index8_image> : Rectangle_In_Window_But_For_Its_Right {};
template <> struct Slot_Contract<&VT_Action_Table::draw_dci_rgb32_image> : Rectangle_In_Window_But_For_Its_Right {};
template <> struct Slot_Contract<&VT_Action_Table::write_depth_rectangle> : Rectangle_In_Window_But_For_Its_Right {};
template <> struct Slot_Contract<&VT_Action_Table::read_color_image> : Rectangle_In_Window {};
template <> struct Slot_Contract<&VT_Action_Table::read_depth_image> : Rectangle_In_Window {};
template <> struct Slot_Contract<&VT_Action_Table::clear_depth_rectangle> : Cleared_Rectangle_In_Window {};
template <> struct Slot_Contract<&VT_Action_Table::draw_2di_polyline> : Thin_Or_Untyped_Line {};

} // namespace vorna
