// Members of the image slots.
#pragma once

#include "host/actions.h"
#include "renderer/core/cases.h"

namespace krb {

// Copy rows of palette indices into an 8-bit buffer, or of 32-bit pixels into a 32-bit one: from start.y downwards, start.x to
// end.x, cut at the window's right edge. Left, top and bottom must lie inside the window. A null source gives zeros. With a depth
// buffer the pixels are depth-tested along x; 32-bit images are blended when the drawing flags say that they are translucent.
template <Case c> VT_Draw_Index8_Image draw_dci_index8_image;
template <Case c> VT_Draw_RGB32_Image draw_dci_rgb32_image;

// Copies an image made for presentation, of exactly the buffer's size, onto itself: the part of it that start and hard clip
// leave, both taken as columns and rows of the buffer. Images of other formats are the host's.
VT_Draw_Image draw_dci_image;

} // namespace krb
