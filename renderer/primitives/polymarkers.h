// Members of the polymarker slots.
#pragma once

#include "renderer/core/member.h"

namespace krb {

// One pixel a point in the rendition's marker colour, cut to the hard clip; other symbols are the host's. Members with a depth
// buffer test each point's own depth and know neither mask nor merging. There is none for 8-bit buffers with depth.
extern template struct Member<slots::Draw_2DI_Polymarker, Case::index8>;
extern template struct Member<slots::Draw_2DI_Polymarker, Case::rgb32>;
extern template struct Member<slots::Draw_2DI_Polymarker, Case::rgb32_alpha>;
extern template struct Member<slots::Draw_2DI_Polymarker, Case::depth_rgb32>;
extern template struct Member<slots::Draw_2DI_Polymarker, Case::depth_rgb32_alpha>;

// One colour a point, for 32-bit buffers with alpha and without depth. Markers wider than a pixel are the host's as well; without
// colours this is the plain polymarker.
extern template struct Member<slots::Draw_2DI_Colorized_Polymarker, Case::rgb32_alpha>;

} // namespace krb
