// Which arguments the slots accept. Some slots of a renderer do not check their arguments; the drawing functions check them by
// these contracts. What a slot does not accept goes to the standard function, which clips it.
//
//     draw_dci_polyline, …colorized…, …gouraud…     points at most 32767 columns and rows from the window
//     draw_dci_dot                                  a point in the window
//     draw_dci_ellipse, draw_dci_elliptical_arc     a shape in the window and in the hard clip; arcs without line types
//     draw_dci_index8_image, draw_dci_rgb32_image,
//     write_depth_rectangle                         a rectangle that leaves the window to the right only
//     read_color_image, read_depth_image,
//     clear_depth_rectangle                         a rectangle in the window
//     draw_2di_polyline                             no wide line with line types, because joins need the whole line
//     all others                                    anything
//
// A slot whose owner is not the renderer, such as a recorder's, gets every call and passes it on through the drawing function.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "host/actions.h"
#include "host/attributes.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
#include "host/window.h"

namespace vorna {

// The contracts. admits(renderer, rendition, arguments of the slot): whether the slot accepts the call.
struct Any_Call {
    static constexpr bool admits(const auto&...) noexcept { return true; }
};

struct Points_Near_Window {
    static bool admits(VT_Renderer_Data& renderer, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                       const auto&...) {
        constexpr std::int32_t farthest = most_window_pixels;
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

// The centre is a column and row of the buffer, not a device point.
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
            // Rotations by a right angle may have been rounded to single precision.
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

// Renderers clip the right side themselves.
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
