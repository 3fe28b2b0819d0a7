// The host's clippers.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "host/export.h"
#include "host/geometry.h"

// Where a point lies outside a rectangle; corners are sums.
namespace vorna::outcode {
inline constexpr std::uint16_t left = 1;
inline constexpr std::uint16_t above = 2;
inline constexpr std::uint16_t right = 4;
inline constexpr std::uint16_t below = 8;
} // namespace vorna::outcode

// One outcode a point; the count when every point is inside, 0 when all outcodes share a side, -1 otherwise. Comparisons are made
// in the points' own type; a coordinate that is no number counts as inside.
VORNA_API std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_DCI_Point* points,
                               std::uint16_t* outcodes);
VORNA_API std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_Point* points,
                               std::uint16_t* outcodes);
VORNA_API std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_Point_D* points,
                               std::uint16_t* outcodes);

// The segment points[0] to points[1] crosses the rectangle's edge; the outcode is that of its outside end. Colours, one a
// point, are interpolated along; both colour pointers null = none. The clipped point is rounded to whole pixels.
// Head: points[0] is outside, where the segment enters. Tail: points[1] is outside, where it leaves.
VORNA_API void VD_Preclip_Head(std::uint16_t outcode, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                               VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_color);
VORNA_API void VD_Preclip_Tail(std::uint16_t outcode, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                               VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_color);
// Both ends outside: both clipped ends; false when the segment misses the rectangle.
VORNA_API bool VD_Preclip_Ends(const std::uint16_t* outcodes, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                               VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_colors);

// One triangle cut against the far edges of the rectangle's outermost pixels, x = right + 1 and y = top + 1, so that it fills
// them: up to 8 points in strip order, 0 when nothing is left. Colours as above, three in.
VORNA_API std::int32_t VD_Preclip_2D_Triangle(const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                                              const VT_RGB32* colors, VT_RGB32* clipped_colors);
