// Members of the image slots.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/host/actions.h"

namespace krb {

// Copy rows of palette indices into an 8-bit buffer, or of 32-bit pixels into a 32-bit one: from start.y downwards, start.x to
// end.x, cut at the window's right edge. Left, top and bottom must lie inside the window. A null source gives zeros. With a depth
// buffer the pixels are depth-tested along x.
template <Case c>
void draw_dci_index8_image(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_DCI_Point* end,
                           std::int32_t stride, const std::uint8_t* pixels);
template <Case c>
void draw_dci_rgb32_image(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_DCI_Point* end,
                          std::int32_t stride, const VT_RGB32* pixels, std::int32_t reserved, const VT_Packing* packing);

} // namespace krb
