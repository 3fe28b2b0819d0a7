// Image files of any format that can be read, as samples.
#pragma once

#include <string>
#include <string_view>

#include "drawing/files/load_limits.h"
#include "drawing/image/png_reader.h"

namespace vorna::drawing {

// PNG files as they are stored; of other formats the colours, as RGBA of 8 bits. name: what messages call the file. Throws
// Usage_Error that names it.
Png_Image read_stored_image(const std::string& name, std::string_view bytes, Load_Limits& limits);

// Whether a file's name ends as those of images do that can be read.
bool is_image_name(std::string_view name);

} // namespace vorna::drawing
