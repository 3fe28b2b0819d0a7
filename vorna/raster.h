// Rasters of any size.
#pragma once

#include <cstdint>

#include "host/frame_buffer.h"

namespace vorna {

// As make_frame_buffer, but as large as memory allows: an application's own buffers, and so the masks of its windows, may be
// larger than those that the host makes. Sides of 1 and more. Throws std::bad_alloc.
VT_Reference<Frame_Buffer> make_raster(std::int32_t width, std::int32_t height, Buffer_Format format);

} // namespace vorna
