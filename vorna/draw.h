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

// What can be drawn on besides a renderer: whatever has one, and a rendition to draw with.
template <class Target>
concept VT_Drawing_Target = requires(Target& target) {
    { target.renderer() } -> std::same_as<VT_Renderer_Data&>;
    { target.rendition() } -> std::convertible_to<const VT_Rendition&>;
};

// What a drawing function draws, for what its signature does not tell: how many colours go with its points.
enum class VT_Primitive { polyline, polytriangle, polygon, polymarker, other };

constexpr VT_Primitive VT_primitive_of(std::string_view function) noexcept {
    return function.ends_with("Polyline")       ? VT_Primitive::polyline
           : function.ends_with("Polytriangle") ? VT_Primitive::polytriangle
           : function.ends_with("Polygon")      ? VT_Primitive::polygon
           : function.ends_with("Polymarker")   ? VT_Primitive::polymarker
                                                : VT_Primitive::other;
}

inline void VT_require_values(const char* what, std::size_t needed, std::size_t given) {
    if (given < needed) {
        throw std::invalid_argument(std::to_string(needed) + " " + what + " are needed, not " + std::to_string(given));
    }
}

// The calls on a canvas, by signature. Those of slots without lists, or with ones of two dimensions, take the slot's arguments.
template <class Function, class Signature, VT_Primitive Primitive> struct VT_Canvas_Calls {
    template <VT_Drawing_Target Target, class... Arguments> void operator()(Target& target, Arguments&&... arguments) const {
        Function{}(target.renderer(), target.rendition(), std::forward<Arguments>(arguments)...);
    }
};

template <class Function, class Point, VT_Primitive Primitive>
struct VT_Canvas_Calls<Function, VT_Draw_Points<Point>, Primitive> {
    template <VT_Drawing_Target Target> void operator()(Target& target, std::span<const Point> points) const {
        Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data());
    }
};

template <class Function, class Point, VT_Primitive Primitive>
struct VT_Canvas_Calls<Function, VT_Draw_Colorized<Point>, Primitive> {
    // One colour a segment, triangle or marker.
    template <VT_Drawing_Target Target>
    void operator()(Target& target, std::span<const Point> points, std::span<const VT_RGB32> colors) const {
        constexpr std::size_t fewer = Primitive == VT_Primitive::polyline ? 1 : Primitive == VT_Primitive::polytriangle ? 2 : 0;
        VT_require_values("colours", points.size() > fewer ? points.size() - fewer : 0, colors.size());
        Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), colors.data(),
                   false);
    }
    // One colour for all.
    template <VT_Drawing_Target Target> void operator()(Target& target, std::span<const Point> points, VT_RGB32 color) const {
        Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), &color, true);
    }
};

// One colour a point.
template <class Function, class Point, VT_Primitive Primitive>
struct VT_Canvas_Calls<Function, VT_Draw_Gouraud<Point>, Primitive> {
    template <VT_Drawing_Target Target>
    void operator()(Target& target, std::span<const Point> points, std::span<const VT_RGB32> colors) const {
        VT_require_values("colours", points.size(), colors.size());
        Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), colors.data());
    }
};

// The rendition's colour, or the given one.
template <class Function, class Point> struct VT_Canvas_Calls<Function, VT_Draw_Polygon<Point>, VT_Primitive::polygon> {
    template <VT_Drawing_Target Target> void operator()(Target& target, std::span<const Point> points) const {
        Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), nullptr);
    }
    template <VT_Drawing_Target Target> void operator()(Target& target, std::span<const Point> points, VT_RGB32 color) const {
        Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), &color);
    }
};

// One colour and a pair of texture coordinates a point.
template <class Function, class Point, VT_Primitive Primitive>
struct VT_Canvas_Calls<Function, VT_Draw_Textured<Point>, Primitive> {
    template <VT_Drawing_Target Target>
    void operator()(Target& target, std::span<const Point> points, std::span<const VT_RGB32> colors,
                    std::span<const VT_Parameter> parameters) const {
        VT_require_values("colours", points.size(), colors.size());
        VT_require_values("texture parameters", 2 * points.size(), parameters.size());
        Function{}(target.renderer(), target.rendition(), static_cast<std::int32_t>(points.size()), points.data(), colors.data(),
                   parameters.data(), 2, nullptr, nullptr);
    }
};

template <class Function> struct VT_Canvas_Calls<Function, VT_Draw_Dot, VT_Primitive::other> {
    template <VT_Drawing_Target Target> void operator()(Target& target, const VT_DCI_Point& point) const {
        Function{}(target.renderer(), target.rendition(), &point, nullptr);
    }
    template <VT_Drawing_Target Target> void operator()(Target& target, const VT_DCI_Point& point, VT_RGB32 color) const {
        Function{}(target.renderer(), target.rendition(), &point, &color);
    }
};

// In the rendition's colour. Angles in radians, counter-clockwise.
template <class Function> struct VT_Canvas_Calls<Function, VT_Draw_Ellipse, VT_Primitive::other> {
    template <VT_Drawing_Target Target>
    void operator()(Target& target, const VT_DCI_Point& center, const VT_DCI_Point& radii, double start = 0,
                    double end = 2 * std::numbers::pi, double rotation = 0) const {
        Function{}(target.renderer(), target.rendition(), &center, &radii, start, end, rotation, nullptr);
    }
};

// A drawing function. It has no state of its own.
template <auto Slot, auto Standard, VT_Primitive Primitive> struct VT_Dispatch;

template <class Signature, Action_Slot<Signature> Action_Table::*Slot, auto Standard, VT_Primitive Primitive>
struct VT_Dispatch<Slot, Standard, Primitive> : VT_Canvas_Calls<VT_Dispatch<Slot, Standard, Primitive>, Signature, Primitive> {
    using VT_Canvas_Calls<VT_Dispatch, Signature, Primitive>::operator();

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
    inline constexpr VT_Dispatch<&Action_Table::slot, &VD_Standard_##name, VT_primitive_of(#name)> VD_##name{};
#include "renderer/host/action_list.inc"
#undef VT_ACTION
