// Strips of triangles of all kinds in one struct, and the slots that draw them.
#pragma once

#include "vorna/draw.h"

namespace vorna {

enum class Strip_Kind { flat, colorized, gouraud, textured };

// The arguments of a polytriangle call; null where the kind has none.
template <class Point> struct Strip {
    Strip_Kind kind = Strip_Kind::flat;
    std::int32_t count = 0;
    const Point* points = nullptr;
    const VT_RGB32* colors = nullptr; // colorized: for each triangle; Gouraud and textured: for each point
    bool single_color = false;
    const VT_Parameter* parameters = nullptr;
    std::int32_t parameter_width = 0;
    const float* weights = nullptr;
    const VT_Vector* normals = nullptr;

    // The same strip with other points.
    template <class Other> Strip<Other> with(const Other* others) const {
        return {kind, count, others, colors, single_color, parameters, parameter_width, weights, normals};
    }

    // The strip of length points from point first on.
    Strip part(std::int32_t first, std::int32_t length) const {
        const auto from = [first](const auto* list) { return list ? list + first : list; };
        Strip result = *this;
        result.count = length;
        result.points = points + first;
        result.colors = single_color ? colors : from(colors);
        result.parameters = parameters ? parameters + std::int64_t{first} * parameter_width : nullptr;
        result.weights = from(weights);
        result.normals = from(normals);
        return result;
    }
};

// A coordinate form: its point type, and the call of its slot.
#define VT_STRIP_FORM(form, point)                                                                                               \
    struct Form_##form {                                                                                                         \
        using Point = point;                                                                                                     \
        static void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<point>& s) {                     \
            switch (s.kind) {                                                                                                    \
            case Strip_Kind::flat:                                                                                               \
                return VD_Draw_##form##_Polytriangle(renderer, rendition, s.count, s.points);                                    \
            case Strip_Kind::colorized:                                                                                          \
                return VD_Draw_##form##_Colorized_Polytriangle(renderer, rendition, s.count, s.points, s.colors,                 \
                                                               s.single_color);                                                  \
            case Strip_Kind::gouraud:                                                                                            \
                return VD_Draw_##form##_Gouraud_Polytriangle(renderer, rendition, s.count, s.points, s.colors);                  \
            case Strip_Kind::textured:                                                                                           \
                return VD_Draw_##form##_Textured_Polytriangle(renderer, rendition, s.count, s.points, s.colors, s.parameters,    \
                                                              s.parameter_width, s.weights, s.normals);                          \
            }                                                                                                                    \
        }                                                                                                                        \
    };
VT_STRIP_FORM(2D, VT_Point)
VT_STRIP_FORM(DC, VT_Point)
VT_STRIP_FORM(2DI, VT_DCI_Point)
VT_STRIP_FORM(DCI, VT_DCI_Point)
VT_STRIP_FORM(3D, VT_Point_D)
#undef VT_STRIP_FORM

} // namespace vorna
