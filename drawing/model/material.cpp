// Surfaces as drawn, from what model files say of them.
#include "drawing/model/material.h"

#include <algorithm>
#include <cmath>

namespace vorna::drawing::model {
namespace {

// Highlights narrower than faces would flicker: light is computed by vertex.
constexpr float least_sharpness = 4, most_sharpness = 60;

float within_unit(float value) {
    return value > 0 ? std::min(value, 1.0F) : 0.0F; // NaN too is 0
}

float largest(const std::array<float, 3>& color) {
    return within_unit(std::max({color[0], color[1], color[2]}));
}

} // namespace

Finish finish_of_metal(float metal, float roughness) {
    metal = within_unit(metal);
    roughness = within_unit(roughness);
    // At this roughness the highlight is that of models without materials.
    constexpr float plain_roughness = 0.53F;
    const float squared = std::max(roughness * roughness, 0.1F);
    Finish finish;
    finish.mirror = metal * (1 - roughness);
    finish.highlight = (1 - roughness) / (1 - plain_roughness);
    finish.sharpness = std::clamp(2 / (squared * squared) - 2, least_sharpness, most_sharpness);
    return finish;
}

Finish finish_of(Phong& phong) {
    constexpr float usual_specular = 0.5F;
    Finish finish;
    if (phong.exponent && *phong.exponent > 0) {
        finish.sharpness = std::clamp(*phong.exponent, least_sharpness, most_sharpness);
    }
    if (phong.specular) {
        const float specular = largest(*phong.specular), diffuse = largest(phong.diffuse);
        if (specular > diffuse) {
            // The roughness whose highlight falls off like the power.
            const float metal = (specular - diffuse) / (specular + diffuse);
            const float roughness = std::sqrt(std::sqrt(2 / (finish.sharpness + 2)));
            finish = finish_of_metal(metal, roughness);
            for (std::size_t i = 0; i < 3; ++i) {
                phong.diffuse[i] = within_unit(phong.diffuse[i] + metal * (*phong.specular)[i]);
            }
        } else {
            finish.highlight = std::min(specular / usual_specular, 1.0F);
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        const float level = within_unit(phong.emission[i]);
        finish.emission[i] = level * level;
    }
    return finish;
}

} // namespace vorna::drawing::model
