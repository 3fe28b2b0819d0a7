// The colours in which the surfaces of a model are drawn.
#include "drawing/model/surface_tints.h"

#include <algorithm>
#include <cmath>

#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

void set_own_colors(const Surfaces& surfaces, std::size_t first, std::size_t end, std::vector<VT_RGB32>& colors) {
    const auto channel = [](float intensity) {
        return static_cast<std::uint8_t>(std::sqrt(std::clamp(intensity, 0.0F, 1.0F)) * 255.0F + 0.5F);
    };
    for (std::size_t i = first; i < end; ++i) {
        const std::size_t c = surfaces.has_one_color() ? 0 : i;
        colors[i] = {channel(surfaces.blue[c]), channel(surfaces.green[c]), channel(surfaces.red[c]), 255};
    }
}

// side: 1 for fronts, -1 for backs.
void set_normals(const Surfaces& surfaces, std::size_t first, std::size_t end, const Camera& camera, float side,
                 std::vector<VT_RGB32>& colors) {
    const VT_Vector right = narrowed(camera.right * side), up = narrowed(camera.up * side),
                    toward = narrowed(camera.toward * side);
    const auto channel = [](float cosine) {
        const float scaled = std::clamp(cosine, -1.0F, 1.0F) * normal_color_scale;
        return static_cast<std::uint8_t>(normal_color_zero + static_cast<int>(std::floor(scaled + 0.5F)));
    };
    for (std::size_t i = first; i < end; ++i) {
        const VT_Vector n = surfaces.normals[i];
        colors[i] = {channel(dot(toward, n)), channel(dot(up, n)), channel(dot(right, n)), 255};
    }
}

} // namespace

void Surface_Tints::resize(const Surfaces& surfaces, bool has_backs) {
    front.resize(surfaces.size());
    back.resize(has_backs ? surfaces.size() : 0);
}

void Surface_Tints::set(const Surfaces& surfaces, std::size_t first, std::size_t end, const Camera& camera,
                        const Model_Look& look) {
    const bool has_backs = !back.empty();
    switch (look.tint) {
    case Tint::lit: {
        const Lighting lighting(camera, look.light, look.specular);
        lighting.shade_fronts(surfaces, first, end, front);
        if (has_backs) {
            lighting.shade_backs(surfaces, first, end, back);
        }
        break;
    }
    case Tint::numbers: // drawn without tints
    case Tint::own:
        set_own_colors(surfaces, first, end, front);
        if (has_backs) {
            set_own_colors(surfaces, first, end, back);
        }
        break;
    case Tint::normals:
        set_normals(surfaces, first, end, camera, 1, front);
        if (has_backs) {
            set_normals(surfaces, first, end, camera, -1, back);
        }
        break;
    }
}

} // namespace vorna::drawing::model
