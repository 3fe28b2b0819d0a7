// Calls without their alpha.
#pragma once

#include <cstddef>
#include <cstdint>
#include <variant>

#include "drawing/recording/recording.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

inline constexpr std::uint8_t opaque_alpha = 255;

// Calls visit(alpha) for each colour of the arguments; with `const Arguments` the alphas are constant.
template <class Any_Arguments, class Visit> void for_each_alpha(Any_Arguments& arguments, Visit visit) {
    const auto visit_all = [&](auto& colors) {
        for (auto& color : colors) {
            visit(color.alpha);
        }
    };
    std::visit(
        [&](auto& a) {
            if constexpr (requires { a.colors->size(); }) {
                if (a.colors) {
                    visit_all(*a.colors);
                }
            } else if constexpr (requires { a.colors.size(); }) {
                visit_all(a.colors);
            } else if constexpr (
                requires { a.color->alpha; } && !requires { a.fill; }) {
                if (a.color) {
                    visit(a.color->alpha);
                }
            } else if constexpr (requires { a.pixels.pixels[0].alpha; }) {
                visit_all(a.pixels.pixels);
            } else if constexpr (requires { a.image->bytes; }) {
                if (a.image && vorna::bytes_per_pixel(a.image->format) == sizeof(VT_RGB32)) {
                    for (std::size_t i = offsetof(VT_RGB32, alpha); i < a.image->bytes.size(); i += sizeof(VT_RGB32)) {
                        visit(a.image->bytes[i]);
                    }
                }
            }
        },
        arguments);
}

// Of what the rendition has itself, not of its objects.
template <class Any_Rendition, class Visit> void for_each_own_alpha(Any_Rendition& rendition, Visit visit) {
    for (auto* color : {&rendition.face.color, &rendition.face.contrast_color, &rendition.line.color,
                        &rendition.line.contrast_color, &rendition.marker.color}) {
        visit(color->alpha);
    }
}

// Null where the set is opaque already.
VT_Reference<const VT_Line_Type_Set> opaque(const VT_Line_Type_Set& set);
// Null where colour and texels are opaque already.
VT_Reference<const VT_Basic_Material> opaque(const VT_Basic_Material& material);

} // namespace vorna::drawing::recording
