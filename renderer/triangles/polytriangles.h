// The members of the polytriangle slots, one a case.
#pragma once

#include "renderer/core/member.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb {

// A textured slot with the rule for its texels. They blend by alpha; of palette indices there are members too that store what is
// not transparent, for configurations without alpha blending.
template <class Slot, Pixel_Rule rule> struct With_Texels : Slot { static constexpr Pixel_Rule texels = rule; };
template <class Slot> using Blended_Texels = With_Texels<Slot, Pixel_Rule::blend>;
template <class Slot> using Stored_Texels = With_Texels<Slot, Pixel_Rule::store>;

// Strips of integer device points in the rendition's face colour. Only the window bounds them, not the hard clip; but while a 3D
// member draws through them, both do.
KRB_MEMBERS(extern, slots::Draw_DCI_Polytriangle)
// One colour a triangle.
KRB_MEMBERS(extern, slots::Draw_DCI_Colorized_Polytriangle)
// One colour a point, interpolated.
KRB_MEMBERS(extern, slots::Draw_DCI_Gouraud_Polytriangle)
// Texels times one colour a point. Faces without a texture whose sides are powers of two are the host's.
KRB_MEMBERS(extern, Blended_Texels<slots::Draw_DCI_Textured_Polytriangle>)
extern template struct Member<Stored_Texels<slots::Draw_DCI_Textured_Polytriangle>, Case::index8>;
extern template struct Member<Stored_Texels<slots::Draw_DCI_Textured_Polytriangle>, Case::depth_index8>;

// The same with float device points, rounded to whole pixels.
KRB_MEMBERS(extern, slots::Draw_DC_Polytriangle)
KRB_MEMBERS(extern, slots::Draw_DC_Colorized_Polytriangle)
KRB_MEMBERS(extern, slots::Draw_DC_Gouraud_Polytriangle)
KRB_MEMBERS(extern, Blended_Texels<slots::Draw_DC_Textured_Polytriangle>)
extern template struct Member<Stored_Texels<slots::Draw_DC_Textured_Polytriangle>, Case::depth_index8>;

// Strips without bounds, cut to the hard clip. Depth is that of the points; the 2D forms round their points.
KRB_MEMBERS(extern, slots::Draw_2DI_Polytriangle)
KRB_MEMBERS(extern, slots::Draw_2DI_Colorized_Polytriangle)
KRB_MEMBERS(extern, slots::Draw_2DI_Gouraud_Polytriangle)
KRB_MEMBERS(extern, Blended_Texels<slots::Draw_2DI_Textured_Polytriangle>)
extern template struct Member<Stored_Texels<slots::Draw_2DI_Textured_Polytriangle>, Case::index8>;
extern template struct Member<Stored_Texels<slots::Draw_2DI_Textured_Polytriangle>, Case::depth_index8>;
KRB_MEMBERS(extern, slots::Draw_2D_Polytriangle)
KRB_MEMBERS(extern, slots::Draw_2D_Colorized_Polytriangle)
KRB_MEMBERS(extern, slots::Draw_2D_Gouraud_Polytriangle)
KRB_MEMBERS(extern, Blended_Texels<slots::Draw_2D_Textured_Polytriangle>)
extern template struct Member<Stored_Texels<slots::Draw_2D_Textured_Polytriangle>, Case::depth_index8>;

} // namespace krb
