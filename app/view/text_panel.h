// Lines of text as an image.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/frame_buffer.h"

namespace vorna::app::view {

// Light text on dark ground; a dot of a letter is scale x scale pixels. There are glyphs for a to z, F, digits and the signs of
// the help; all other characters are blank.
VT_Reference<VT_Shared_Image> text_panel(const std::vector<std::string>& lines, std::int32_t scale);

} // namespace vorna::app::view
