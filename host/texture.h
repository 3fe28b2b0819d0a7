// Textures of faces: which of them renderers draw, and where the points of a face lie in them.
#pragma once

#include <cstdint>

#include "host/frame_buffer.h"
#include "host/geometry.h"
#include "host/rendition.h"
#include "host/rounding.h"

namespace vorna {

inline constexpr std::int32_t largest_texture_side = 16384;

constexpr bool is_texture_side(std::int32_t side) noexcept {
    return side > 0 && side <= largest_texture_side;
}

// The texture of a face when renderers draw it: texels of 32 bits, no gaps between rows, sides that are powers of two. Null
// otherwise.
inline const VT_Shared_Image* drawable_texture(const VT_Face_Attributes& face) noexcept {
    const VT_Shared_Image* const image = face.material ? face.material->texture.get() : nullptr;
    const auto fits = [](std::int32_t side) { return is_texture_side(side) && (side & (side - 1)) == 0; };
    return image && image->format() == Buffer_Format::rgb32 && fits(image->width()) && fits(image->height()) &&
                   image->row_bytes() == 4 * image->width()
               ? image
               : nullptr;
}

// Writes the texture parameters of count points to pairs, u and v for each point: the first two of its parameters, 0 where it has
// fewer, transformed by the texture matrix of the material if there is one.
inline void set_texture_parameters(const VT_Face_Attributes& face, std::int32_t count, const VT_Parameter* parameters,
                                   std::int32_t parameter_width, VT_Parameter* pairs) noexcept {
    const VT_Matrix* const matrix = face.material && face.material->has_texture_matrix ? &face.material->texture_matrix : nullptr;
    for (std::int32_t i = 0; i < count; ++i) {
        const VT_Parameter* const given = parameters + std::int64_t{i} * parameter_width;
        VT_Parameter* const pair = pairs + std::int64_t{2} * i;
        pair[0] = parameter_width > 0 ? given[0] : 0;
        pair[1] = parameter_width > 1 ? given[1] : 0;
        if (matrix) {
            const auto& m = matrix->m;
            const double u = pair[0];
            const double v = pair[1];
            pair[0] = static_cast<float>(m[0][0] * u + m[0][1] * v + m[0][3]);
            pair[1] = static_cast<float>(m[1][0] * u + m[1][1] * v + m[1][3]);
        }
    }
}

// A parameter along a side of that many texels, in texels: 16.16 fixed point, truncated.
constexpr std::int32_t texel_coordinate(float parameter, std::int32_t side) noexcept {
    return truncated(double{parameter} * side * 65536.0);
}

} // namespace vorna
