// Lines of text as an image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/color.h"
#include "host/frame_buffer.h"
#include "host/geometry.h"

namespace vorna::app::view {

inline constexpr VT_RGB32 panel_background{48, 40, 32, 255};

// Light text on dark ground; a dot of a letter is scale x scale pixels. There are glyphs for a to z, F, digits and signs of
// texts in windows; all other characters are blank.
// highlighted: the number of a line in another colour; beyond the last line = none.
VT_Reference<VT_Shared_Image> text_panel(const std::vector<std::string>& lines, std::int32_t scale,
                                         std::size_t highlighted = SIZE_MAX);
// The size of a panel in pixels, and how many letters a line of a panel of that width has.
VT_Int_Pair panel_size(std::size_t letters, std::size_t lines, std::int32_t scale);
std::size_t letters_in(std::int32_t panel_width, std::int32_t scale);

} // namespace vorna::app::view
