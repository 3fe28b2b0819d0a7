// Textures that renderers do not draw, converted to drawable ones.
#pragma once

#include "host/color.h"
#include "host/rendition.h"

namespace vorna {

// A texture of another size, or of palette indices, made drawable: padded on the right and at the top with transparent texels.
struct Padded_Texture {
    VT_Reference<const VT_Shared_Image> image; // null when the face has no texture that can be converted
    float u_scale = 1, v_scale = 1;            // factors from parameters of the texture to those of the image
};
Padded_Texture padded_texture(const VT_Face_Attributes& face, const VT_Palette& palette);

} // namespace vorna
