// The buffer-level actions: painting the window, clearing, writing and reading back.
#pragma once

#include <cstdint>

#include "host/actions.h"

namespace krb {

// Paints the rendition's window rectangle, cut to the window. Fills other than the plain one are the host's.
VT_Window_Action draw_window_index8;
VT_Window_Action draw_window_rgb32;

// Sets the rendition's window rectangle to the far value 0xFFFF. The rectangle must lie inside the window.
VT_Window_Action clear_depth_rectangle;
// For configurations without a depth buffer: does nothing.
VT_Window_Action clear_no_depth;

// Copies depths into a rectangle, top row first, or zeros without a source. Only the right edge is cut to the window.
VT_Write_Depth write_depth_rectangle;

// Copy a rectangle into an image, top row first. It must lie inside the window.
VT_Read_Image read_depth_image;
VT_Read_Image read_color_image_index8;
VT_Read_Image read_color_image_rgb32;

} // namespace krb
