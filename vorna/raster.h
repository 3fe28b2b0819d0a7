// Buffers of any size.
#pragma once

#include <cstdint>

#include "host/frame_buffer.h"

namespace vorna {

// Like make_frame_buffer, but without its limit on the size: buffers that an application makes, and hence the masks of its
// windows, may be larger. Sides of at least 1. Throws std::bad_alloc.
VT_Reference<Frame_Buffer> make_raster(std::int32_t width, std::int32_t height, Buffer_Format format);

} // namespace vorna
