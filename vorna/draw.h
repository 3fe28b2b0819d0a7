// The drawing functions. Each calls the renderer's slot when the slot is enabled and its contract (slot_contracts.h) admits the
// arguments, else the standard function.
//
// There are two ways to call a drawing function:
//
//     VD_Draw_DCI_Polyline(renderer, rendition, count, points);   // the slot's own arguments, see actions.h
//     VD_Draw_DCI_Polyline(canvas, points);                       // contiguous ranges, see canvas.h
//
// Ranges are arrays, vectors, spans and the like. When one of colours, parameters or pixels is too short, the function throws
// std::invalid_argument and draws nothing.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "host/actions.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
#include "vorna/slot_contracts.h"

namespace vorna {

// A type to draw on: it has a renderer and a rendition, as Canvas does.
template <class Target>
concept Drawing_Target = requires(Target& target) {
    { target.renderer() } -> std::same_as<VT_Renderer_Data&>;
    { target.rendition() } -> std::convertible_to<const VT_Rendition&>;
};

// What a drawing function draws, which decides how many colours belong to its points.
enum class Primitive { polyline, polytriangle, polygon, polymarker, other };

constexpr Primitive primitive_of(std::string_view function) noexcept {
    return function.ends_with("Polyline")       ? Primitive::polyline
           : function.ends_with("Polytriangle") ? Primitive::polytriangle
           : function.ends_with("Polygon")      ? Primitive::polygon
           : function.ends_with("Polymarker")   ? Primitive::polymarker
                                                : Primitive::other;
}

inline void require_values(const char* what, std::uint64_t needed, std::size_t given) {
    if (given < needed) {
        throw std::invalid_argument(std::to_string(needed) + " " + what + " are needed, not " + std::to_string(given));
    }
}

template <class Function, class Point, class... Arguments>
void draw_list(Drawing_Target auto& target, std::span<const Point> points, Arguments... arguments) {
    Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), arguments...);
}

// Colours, palette indices or depths in memory, row after row, the highest first.
template <class Pixel> struct Pixel_Rows {
    std::span<const Pixel> pixels;
    VT_Int_Pair size;        // width and height in pixels
    std::int32_t stride = 0; // pixels from the start of one row to the start of the next; 0 = the width
};

// Throws std::invalid_argument for a negative size, a stride less than the width, and when `given` pixels are too few.
inline void require_rows(VT_Int_Pair size, std::int64_t stride, std::size_t pixel_bytes, std::size_t given) {
    if (size.x < 0 || size.y < 0) {
        throw std::invalid_argument("an image has 0 or more columns and rows, not " + std::to_string(size.x) + " x " +
                                    std::to_string(size.y));
    }
    const std::int64_t longest = INT32_MAX / static_cast<std::int64_t>(pixel_bytes);
    if (stride < size.x || stride > longest) {
        throw std::invalid_argument("a stride of " + std::to_string(size.x) + " to " + std::to_string(longest) +
                                    " pixels was expected, not " + std::to_string(stride));
    }
    const bool has_pixels = size.x > 0 && size.y > 0;
    require_values("pixels", has_pixels ? static_cast<std::uint64_t>((size.y - 1) * stride + size.x) : 0, given);
}

// The part of an image, placed on device pixels, that lies in a rectangle.
template <class Pixel> struct Placed_Rows {
    // Throws as require_rows does.
    Placed_Rows(const VT_DCI_Point& top_left, const Pixel_Rows<Pixel>& rows, const VT_Int_Rectangle& drawable) {
        const VT_Int_Pair size = rows.size;
        const std::int64_t row = rows.stride == 0 ? size.x : rows.stride;
        require_rows(size, row, sizeof(Pixel), rows.pixels.size());
        if (size.x > 0 && size.y > 0) {
            const std::int64_t right = std::min<std::int64_t>(std::int64_t{top_left.x} + size.x - 1, INT32_MAX);
            const std::int64_t lowest = std::max<std::int64_t>(std::int64_t{top_left.y} - size.y + 1, INT32_MIN);
            part = common_part({top_left.x, static_cast<std::int32_t>(right), static_cast<std::int32_t>(lowest), top_left.y},
                               drawable);
        }
        if (!is_empty(part)) {
            first = rows.pixels.data() + (std::int64_t{top_left.y} - part.top) * row + (std::int64_t{part.left} - top_left.x);
        }
        row_bytes = static_cast<std::int32_t>(row * static_cast<std::int64_t>(sizeof(Pixel)));
    }

    VT_Int_Rectangle part{0, -1, 0, -1}; // device pixels
    const Pixel* first = nullptr;        // the top left pixel of the part
    std::int32_t row_bytes;
};

template <class Function, class Pixel, class... Arguments>
void draw_rows(Drawing_Target auto& target, const VT_DCI_Point& top_left, const Pixel_Rows<Pixel>& rows, Arguments... reserved) {
    const VT_Int_Rectangle drawable = common_part(window_rectangle(target.renderer().current_renderer_options()),
                                                  static_cast<const VT_Rendition&>(target.rendition()).clip.hard_clip);
    const Placed_Rows<Pixel> placed(top_left, rows, drawable);
    if (!is_empty(placed.part)) {
        const VT_DCI_Point start{placed.part.left, placed.part.top, top_left.z};
        const VT_DCI_Point end{placed.part.right, placed.part.bottom, top_left.z};
        Function{}(target.renderer(), target.rendition(), &start, &end, placed.row_bytes, placed.first, reserved...);
    }
}

// The calls on a canvas, by the signature of the slot.
template <class Function, class Signature, Primitive primitive> struct Canvas_Calls;

template <class Function, class Point, Primitive primitive> struct Canvas_Calls<Function, VT_Draw_Points<Point>, primitive> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points) const { draw_list<Function>(target, points); }
};

// colors: one for each segment, triangle or marker. color: one for all.
template <class Function, class Point, Primitive primitive> struct Canvas_Calls<Function, VT_Draw_Colorized<Point>, primitive> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points, std::span<const VT_RGB32> colors) const {
        constexpr std::size_t fewer = primitive == Primitive::polyline ? 1 : primitive == Primitive::polytriangle ? 2 : 0;
        require_values("colours", points.size() > fewer ? points.size() - fewer : 0, colors.size());
        draw_list<Function>(target, points, colors.data(), false);
    }
    void operator()(Drawing_Target auto& target, std::span<const Point> points, VT_RGB32 color) const {
        draw_list<Function>(target, points, &color, true);
    }
};

// colors: one for each point.
template <class Function, class Point, Primitive primitive> struct Canvas_Calls<Function, VT_Draw_Gouraud<Point>, primitive> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points, std::span<const VT_RGB32> colors) const {
        require_values("colours", points.size(), colors.size());
        draw_list<Function>(target, points, colors.data());
    }
};

// Without a color in the face colour of the rendition.
template <class Function, class Point> struct Canvas_Calls<Function, VT_Draw_Polygon<Point>, Primitive::polygon> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points) const {
        draw_list<Function>(target, points, nullptr);
    }
    void operator()(Drawing_Target auto& target, std::span<const Point> points, VT_RGB32 color) const {
        draw_list<Function>(target, points, &color);
    }
};

// colors: one for each point. parameters: u and v of each point.
template <class Function, class Point, Primitive primitive> struct Canvas_Calls<Function, VT_Draw_Textured<Point>, primitive> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points, std::span<const VT_RGB32> colors,
                    std::span<const VT_Parameter> parameters) const {
        require_values("colours", points.size(), colors.size());
        require_values("texture parameters", 2 * points.size(), parameters.size());
        draw_list<Function>(target, points, colors.data(), parameters.data(), 2, nullptr, nullptr);
    }
};

// Without a color in the line colour of the rendition.
template <class Function> struct Canvas_Calls<Function, VT_Draw_Dot, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& point) const {
        Function{}(target.renderer(), target.rendition(), &point, nullptr);
    }
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& point, VT_RGB32 color) const {
        Function{}(target.renderer(), target.rendition(), &point, &color);
    }
};

// The centre is a point in device coordinates, unlike that of the slot, which is a column and row of the buffer. Equal radii make
// a circle. Angles are in radians, counter-clockwise. Without a color in the line colour of the rendition.
template <class Function> struct Canvas_Calls<Function, VT_Draw_Ellipse, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& center, const VT_DCI_Point& radii, double start = 0,
                    double end = 2 * std::numbers::pi, double rotation = 0) const {
        draw(target, center, radii, start, end, rotation, nullptr);
    }
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& center, const VT_DCI_Point& radii, VT_RGB32 color,
                    double start = 0, double end = 2 * std::numbers::pi, double rotation = 0) const {
        draw(target, center, radii, start, end, rotation, &color);
    }

private:
    static void draw(Drawing_Target auto& target, const VT_DCI_Point& center, const VT_DCI_Point& radii, double start, double end,
                     double rotation, const VT_RGB32* color) {
        const VT_Int_Rectangle window = window_rectangle(target.renderer().current_renderer_options());
        const auto from = [](std::int32_t first, std::int32_t coordinate) {
            return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{coordinate} - first, INT32_MIN, INT32_MAX));
        };
        const VT_DCI_Point column_and_row{from(window.left, center.x), from(window.bottom, center.y), center.z};
        Function{}(target.renderer(), target.rendition(), &column_and_row, &radii, start, end, rotation, color);
    }
};

// Draw the part of an image of palette indices, colours or depths that lies in the hard clip. The highest row is at top_left.y;
// all pixels have the depth top_left.z. Throw as require_rows does.
template <class Function> struct Canvas_Calls<Function, VT_Draw_Index8_Image, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& top_left, const Pixel_Rows<std::uint8_t>& indices) const {
        draw_rows<Function>(target, top_left, indices);
    }
};

template <class Function> struct Canvas_Calls<Function, VT_Draw_RGB32_Image, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& top_left, const Pixel_Rows<VT_RGB32>& colors) const {
        draw_rows<Function>(target, top_left, colors, 0, nullptr);
    }
};

template <class Function> struct Canvas_Calls<Function, VT_Write_Depth, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& top_left, const Pixel_Rows<std::uint16_t>& depths) const {
        if (target.renderer().current_renderer_options().buffer_depth() >= 1) {
            draw_rows<Function>(target, top_left, depths);
        }
    }
};

// Throws std::invalid_argument for an image whose rows overlap.
template <class Function> struct Canvas_Calls<Function, VT_Draw_Image, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& top_left, const VT_Shared_Image& image) const {
        const std::int64_t row_bytes = std::int64_t{image.width()} * bytes_per_pixel(image.format());
        if (image.width() < 1 || image.height() < 1 || image.row_bytes() < row_bytes) {
            throw std::invalid_argument("an image of " + std::to_string(image.width()) + " x " + std::to_string(image.height()) +
                                        " pixels needs rows of " + std::to_string(row_bytes) + " bytes, not " +
                                        std::to_string(image.row_bytes()));
        }
        Function{}(target.renderer(), target.rendition(), &top_left, &image);
    }
};

// Act on the part of the rendition's window rectangle that lies in the window.
template <class Function> struct Canvas_Calls<Function, VT_Window_Action, Primitive::other> {
    void operator()(Drawing_Target auto& target) const {
        const VT_Reference<VT_Rendition> inside(new VT_Rendition(target.rendition()));
        inside->window.rectangle =
            common_part(inside->window.rectangle, window_rectangle(target.renderer().current_renderer_options()));
        if (!is_empty(inside->window.rectangle)) {
            Function{}(target.renderer(), *inside);
        }
    }
};

// Returns a copy of the area, in device pixels, the top row first; null when there is no such buffer. Throws
// std::invalid_argument for an area that is not inside the window.
template <class Function> struct Canvas_Calls<Function, VT_Read_Image, Primitive::other> {
    VT_Reference<VT_Shared_Image> operator()(Drawing_Target auto& target, const VT_Int_Rectangle& area) const {
        const VT_Int_Rectangle window = window_rectangle(target.renderer().current_renderer_options());
        if (is_empty(area) || common_part(area, window) != area) {
            const auto text = [](const VT_Int_Rectangle& r) {
                return "(" + std::to_string(r.left) + ", " + std::to_string(r.bottom) + ") to (" + std::to_string(r.right) +
                       ", " + std::to_string(r.top) + ")";
            };
            throw std::invalid_argument("an area inside the window, " + text(window) + ", was expected, not " + text(area));
        }
        const VT_DCI_Point top_left{area.left, area.top, 0};
        const VT_DCI_Point bottom_right{area.right, area.bottom, 0};
        constexpr Buffer_Format format = Buffer_Format::whatever_is_there;
        VT_Reference<VT_Shared_Image> image;
        Function{}(target.renderer(), target.rendition(), &top_left, &bottom_right, &format, image);
        return image;
    }
};

} // namespace vorna

// The type of a drawing function; has no state.
template <auto Slot, auto Standard, vorna::Primitive primitive> struct VT_Dispatch;

template <class Signature, Action_Slot<Signature> VT_Action_Table::*Slot, auto Standard, vorna::Primitive primitive>
struct VT_Dispatch<Slot, Standard, primitive>
    : vorna::Canvas_Calls<VT_Dispatch<Slot, Standard, primitive>, Signature, primitive> {
    using vorna::Canvas_Calls<VT_Dispatch, Signature, primitive>::operator();

    template <class... Arguments>
    void operator()(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Arguments&&... arguments) const {
        const auto& slot = renderer.actions.*Slot;
        if (slot.enabled && (slot.owner != &renderer || vorna::Slot_Contract<Slot>::admits(renderer, rendition, arguments...))) {
            slot.function(*slot.owner, rendition, std::forward<Arguments>(arguments)...);
        } else {
            Standard(renderer, rendition, std::forward<Arguments>(arguments)...);
        }
    }

    // For arguments that the slot's contract is known to admit.
    template <class... Arguments>
    void draw_admitted(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Arguments&... arguments) const {
        const auto& slot = renderer.actions.*Slot;
        if (slot.enabled) {
            slot.function(*slot.owner, rendition, arguments...);
        } else {
            Standard(renderer, rendition, arguments...);
        }
    }
};

#define VT_ACTION(slot, name, ...)                                                                                               \
    inline constexpr VT_Dispatch<&VT_Action_Table::slot, &VD_Standard_##name, vorna::primitive_of(#name)> VD_##name{};
#include "host/action_list.inc"
#undef VT_ACTION
