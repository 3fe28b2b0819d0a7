// Materials ready for drawing.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/model/area_means.h"
#include "drawing/model/mesh.h"
#include "drawing/model/texture.h"

namespace vorna::drawing::model {

struct Paint {
    Texture* texture = nullptr;
    std::uint8_t alpha = 255;
    bool translucent = false;
    // Highlights are drawn over the texture, which would darken them, and are not part of the colours that it is multiplied with.
    // Not of textures with holes: a highlight would fill them.
    bool highlights_apart = false;
    Texture* emission = nullptr;           // drawn over the texture
    VT_RGB32 emission_color{0, 0, 0, 0};   // that it is multiplied with
    const Area_Means* lightness = nullptr; // of the texture
    const Area_Means *metal = nullptr, *roughness = nullptr;
};

struct Paints {
    std::vector<std::unique_ptr<Texture>> textures;
    std::vector<std::unique_ptr<Area_Means>> means;
    std::vector<Paint> by_material; // and last a plain one
    Texture* white = nullptr;       // a single texel, where a paint has highlights apart
};

// The mesh's materials with the textures that they refer to. Textures that cannot be read are left out, and one line in warnings
// names them.
Paints load_paints(const Mesh& mesh, std::vector<std::string>& warnings, Load_Limits& limits);

// The finish of a vertex as the images of its material say, by the area that is seen around it.
Finish finish_at(const Material& material, const Paint& paint, const Texture_Area& area);

} // namespace vorna::drawing::model
