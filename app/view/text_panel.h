// A few lines of text as an image.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/frame_buffer.h"

namespace vorna::app::view {

// Light on dark, each dot of a letter scale pixels wide. Letters are small ones and F; what has no glyph is left blank.
VT_Reference<VT_Shared_Image> text_panel(const std::vector<std::string>& lines, std::int32_t scale);

} // namespace vorna::app::view
