// Drawing as an application does it: through the renderer's slot when it is enabled, else through the standard function.
//
// Each drawing function is called in two ways:
//
//     VD_Draw_DCI_Polyline(renderer, rendition, count, points);   // the slot's own arguments, see actions.h
//     VD_Draw_DCI_Polyline(canvas, points);                       // lists that know their length, see canvas.h
//
// Lists are arrays, vectors, spans and the like. Should one of colours be too short, std::invalid_argument is thrown and nothing
// drawn.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "renderer/host/actions.h"
#include "renderer/host/renderer_data.h"
#include "renderer/host/rendition.h"

namespace vorna {

// What can be drawn on besides a renderer: whatever has one, and a rendition to draw with.
template <class Target>
concept Drawing_Target = requires(Target& target) {
    { target.renderer() } -> std::same_as<VT_Renderer_Data&>;
    { target.rendition() } -> std::convertible_to<const VT_Rendition&>;
};

// What a drawing function draws, for what its signature does not tell: how many colours go with its points.
enum class Primitive { polyline, polytriangle, polygon, polymarker, other };

constexpr Primitive primitive_of(std::string_view function) noexcept {
    return function.ends_with("Polyline")       ? Primitive::polyline
           : function.ends_with("Polytriangle") ? Primitive::polytriangle
           : function.ends_with("Polygon")      ? Primitive::polygon
           : function.ends_with("Polymarker")   ? Primitive::polymarker
                                                : Primitive::other;
}

inline void require_values(const char* what, std::size_t needed, std::size_t given) {
    if (given < needed) {
        throw std::invalid_argument(std::to_string(needed) + " " + what + " are needed, not " + std::to_string(given));
    }
}

template <class Function, class Point, class... Arguments>
void draw_list(Drawing_Target auto& target, std::span<const Point> points, Arguments... arguments) {
    Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), arguments...);
}

// How a function is called on a canvas, by its signature. Those whose signature has no list take the slot's own arguments.
template <class Function, class Signature, Primitive primitive> struct Canvas_Calls {
    template <class... Arguments> void operator()(Drawing_Target auto& target, Arguments&&... arguments) const {
        Function{}(target.renderer(), target.rendition(), std::forward<Arguments>(arguments)...);
    }
};

template <class Function, class Point, Primitive primitive> struct Canvas_Calls<Function, VT_Draw_Points<Point>, primitive> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points) const { draw_list<Function>(target, points); }
};

// One colour a segment, triangle or marker, or one for all.
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

// One colour a point.
template <class Function, class Point, Primitive primitive> struct Canvas_Calls<Function, VT_Draw_Gouraud<Point>, primitive> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points, std::span<const VT_RGB32> colors) const {
        require_values("colours", points.size(), colors.size());
        draw_list<Function>(target, points, colors.data());
    }
};

// In the rendition's colour, or in another one.
template <class Function, class Point> struct Canvas_Calls<Function, VT_Draw_Polygon<Point>, Primitive::polygon> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points) const {
        draw_list<Function>(target, points, nullptr);
    }
    void operator()(Drawing_Target auto& target, std::span<const Point> points, VT_RGB32 color) const {
        draw_list<Function>(target, points, &color);
    }
};

// One colour and a pair of texture coordinates a point.
template <class Function, class Point, Primitive primitive> struct Canvas_Calls<Function, VT_Draw_Textured<Point>, primitive> {
    void operator()(Drawing_Target auto& target, std::span<const Point> points, std::span<const VT_RGB32> colors,
                    std::span<const VT_Parameter> parameters) const {
        require_values("colours", points.size(), colors.size());
        require_values("texture parameters", 2 * points.size(), parameters.size());
        draw_list<Function>(target, points, colors.data(), parameters.data(), 2, nullptr, nullptr);
    }
};

// In the rendition's line colour, or in another one.
template <class Function> struct Canvas_Calls<Function, VT_Draw_Dot, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& point) const {
        Function{}(target.renderer(), target.rendition(), &point, nullptr);
    }
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& point, VT_RGB32 color) const {
        Function{}(target.renderer(), target.rendition(), &point, &color);
    }
};

// In the rendition's line colour. Angles in radians, counter-clockwise.
template <class Function> struct Canvas_Calls<Function, VT_Draw_Ellipse, Primitive::other> {
    void operator()(Drawing_Target auto& target, const VT_DCI_Point& center, const VT_DCI_Point& radii, double start = 0,
                    double end = 2 * std::numbers::pi, double rotation = 0) const {
        Function{}(target.renderer(), target.rendition(), &center, &radii, start, end, rotation, nullptr);
    }
};

} // namespace vorna

// A drawing function. It has no state of its own.
template <auto Slot, auto Standard, vorna::Primitive primitive> struct VT_Dispatch;

template <class Signature, Action_Slot<Signature> VT_Action_Table::*Slot, auto Standard, vorna::Primitive primitive>
struct VT_Dispatch<Slot, Standard, primitive>
    : vorna::Canvas_Calls<VT_Dispatch<Slot, Standard, primitive>, Signature, primitive> {
    using vorna::Canvas_Calls<VT_Dispatch, Signature, primitive>::operator();

    template <class... Arguments>
    void operator()(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Arguments&&... arguments) const {
        const auto& slot = renderer.actions.*Slot;
        if (slot.enabled) {
            slot.function(*slot.owner, rendition, std::forward<Arguments>(arguments)...);
        } else {
            Standard(renderer, rendition, std::forward<Arguments>(arguments)...);
        }
    }
};

#define VT_ACTION(slot, name, ...)                                                                                               \
    inline constexpr VT_Dispatch<&VT_Action_Table::slot, &VD_Standard_##name, vorna::primitive_of(#name)> VD_##name{};
#include "renderer/host/action_list.inc"
#undef VT_ACTION
