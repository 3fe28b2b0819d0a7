// The texture of a face, and where its points lie in it.
#pragma once

#include <cstdint>

#include "host/rendition.h"
#include "renderer/core/scratch.h"
#include "renderer/triangles/triangle_kernels.h"

namespace krb {

using Texture_Parameters = Scratch<float, 128>;

// Texture parameters of count points, two floats each: u grows with the columns, v upwards. A point without parameters lies at 0,
// and a material's texture matrix is applied.
Texture_Parameters texture_parameters(const VT_Face_Attributes& face, std::int32_t count, const VT_Parameter* parameters,
                                      std::int32_t parameter_width);

// A face's image when the renderer can draw it: 32-bit texels, sides that are powers of two. Null otherwise.
const VT_Shared_Image* drawable_texture(const VT_Face_Attributes& face) noexcept;

// Parameters to texel coordinates in 16.16, cut off towards zero.
Texel_Coordinates texel_coordinates(const VT_Shared_Image& texture, float u, float v) noexcept;

void set_texture(Triangle_Target& target, const VT_Shared_Image& texture) noexcept;

} // namespace krb
