// Pictures from JSON documents.
#pragma once

#include <string_view>

#include "drawing/recording/picture.h"

namespace vorna::drawing::recording {

// Reads and checks everything that can be checked without a renderer. Throws Picture_Error with the path of the key and the
// expected form.
Picture read_picture(std::string_view text);

} // namespace vorna::drawing::recording
