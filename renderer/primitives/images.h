// Members of the image slots.
#pragma once

#include "renderer/core/member.h"

namespace krb {

// Copy rows of palette indices into an 8-bit buffer, or of 32-bit pixels into a 32-bit one: from start.y downwards, start.x to
// end.x, cut at the window's right edge. Left, top and bottom must lie inside the window. A null source gives zeros. With a depth
// buffer the pixels are depth-tested along x; 32-bit images are blended when the drawing flags say that they are translucent.
extern template struct Member<slots::Draw_DCI_Index8_Image, Case::index8>;
extern template struct Member<slots::Draw_DCI_Index8_Image, Case::depth_index8>;
extern template struct Member<slots::Draw_DCI_RGB32_Image, Case::rgb32>;
extern template struct Member<slots::Draw_DCI_RGB32_Image, Case::depth_rgb32>;

// Copies an image made for presentation, of exactly the buffer's size, onto itself: the part of it that start and hard clip
// leave, both taken as columns and rows of the buffer. Images of other formats are the host's.
VT_Draw_Image draw_dci_image;

} // namespace krb
