// Names of the frames of a turntable.
#pragma once

#include <cstdint>
#include <string>

namespace vorna::drawing {

// The template's name with the frame's number in the place of %d, %03d or {}; {} has as many digits as the last frame's number.
// Throws Usage_Error for a template without such a place, or with several.
std::string frame_name(const std::string& pattern, std::int32_t frame, std::int32_t count);

} // namespace vorna::drawing
