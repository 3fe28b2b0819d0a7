// Clipping of points, segments and triangles to a rectangle of pixels.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "host/export.h"
#include "host/geometry.h"

// The sides of a rectangle beyond which a point lies; an outcode is the sum of up to two.
namespace vorna::outcode {
inline constexpr std::uint16_t left = 1;
inline constexpr std::uint16_t above = 2;
inline constexpr std::uint16_t right = 4;
inline constexpr std::uint16_t below = 8;
} // namespace vorna::outcode

// Writes one outcode for each point. Returns count when every point is inside, 0 when all outcodes share a side, -1 otherwise.
// Comparisons use the type of the points; NaN counts as inside.
VORNA_API std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_DCI_Point* points,
                               std::uint16_t* outcodes);
VORNA_API std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_Point* points,
                               std::uint16_t* outcodes);
VORNA_API std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_Point_D* points,
                               std::uint16_t* outcodes);

// Cut one end of the segment points[0] to points[1] at the centres of the rectangle's outermost pixels, and round it to whole
// pixels. outcode: that of the end outside. colors: one for each point, interpolated to clipped_color; both null = none.
// Head: points[0] is outside. Tail: points[1] is outside.
VORNA_API void VD_Preclip_Head(std::uint16_t outcode, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                               VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_color);
VORNA_API void VD_Preclip_Tail(std::uint16_t outcode, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                               VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_color);
// Both ends are outside and both are cut. Returns false when the segment misses the rectangle.
VORNA_API bool VD_Preclip_Ends(const std::uint16_t* outcodes, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                               VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_colors);

// Cuts one triangle at the outer edges of the rectangle's outermost pixels, x = right + 1 and y = top + 1, so that it fills these
// pixels. Writes up to 8 points in strip order and returns their count, 0 when no part is inside. colors: three, or null.
VORNA_API std::int32_t VD_Preclip_2D_Triangle(const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                                              const VT_RGB32* colors, VT_RGB32* clipped_colors);
