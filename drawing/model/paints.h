// Materials ready for drawing.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/model/mesh.h"
#include "drawing/model/texture.h"

namespace vorna::drawing::model {

struct Paint {
    Texture* texture = nullptr;
    std::uint8_t alpha = 255;
    bool translucent = false;
};

using Textures = std::vector<std::unique_ptr<Texture>>;

// The mesh's materials, and last a plain one, with the textures that they refer to. Surfaces of textures that cannot be read are
// plain, and one line in warnings names these textures.
std::pair<Textures, std::vector<Paint>> load_paints(const Mesh& mesh, std::vector<std::string>& warnings, Load_Limits& limits);

} // namespace vorna::drawing::model
