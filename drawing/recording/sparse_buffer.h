// Buffers of which few rows are drawn.
#pragma once

#include "host/frame_buffer.h"
#include "host/renderer_data.h"

namespace vorna::drawing::recording {

// Makes buffers of zeros whose memory the system gives when a row is first touched, so that a large window in which a few rows
// are drawn costs little time and memory.
VT_Buffer_Creation sparse_buffer_creation() noexcept;

} // namespace vorna::drawing::recording
