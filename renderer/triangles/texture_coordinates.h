// Where the points of a face lie in its texture.
#pragma once

#include <cstdint>

#include "host/rendition.h"
#include "host/scratch.h"
#include "host/texture.h"
#include "renderer/triangles/triangle_kernels.h"

namespace krb {

using Texture_Parameters = vorna::Scratch<float, 128>;

// Texture parameters of count points, u and v for each: u grows with the columns, v upwards.
Texture_Parameters texture_parameters(const VT_Face_Attributes& face, std::int32_t count, const VT_Parameter* parameters,
                                      std::int32_t parameter_width);

// Texel coordinates of a pair of parameters.
Texel_Coordinates texel_coordinates(const VT_Shared_Image& texture, float u, float v) noexcept;

void set_texture(Triangle_Target& target, const VT_Shared_Image& texture) noexcept;

} // namespace krb
