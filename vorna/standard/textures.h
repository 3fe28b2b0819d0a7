// Textures of faces, and the parameters that place them.
#pragma once

#include <vector>

#include "host/color.h"
#include "host/rendition.h"

namespace vorna {

// The texture as renderers draw it: texels of 32 bits without gaps between rows, sides that are powers of two. Null when the face
// has none like that.
const VT_Shared_Image* plain_texture(const VT_Face_Attributes& face) noexcept;

// Texture parameters of count points, u and v each, with the material's texture matrix applied.
std::vector<VT_Parameter> texture_parameters(const VT_Face_Attributes& face, std::int32_t count, const VT_Parameter* parameters,
                                             std::int32_t parameter_width);

// A texture of any size or of palette indices made plain: padded at its right and upper sides with texels that draw nothing.
struct Padded_Texture {
    VT_Reference<const VT_Shared_Image> image; // null when there is nothing to make it of
    float u_scale = 1, v_scale = 1;            // from parameters of the texture to those of the image
};
Padded_Texture padded_texture(const VT_Face_Attributes& face, const VT_Palette& palette);

} // namespace vorna
