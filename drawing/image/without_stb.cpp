// TGA and BMP images where stb_image is not available: they are not told apart from other files.
#include "drawing/image/image_decoders.h"

namespace vorna::drawing {

std::optional<Image> decode_tga_or_bmp(std::string_view, const Before_Pixels&) {
    return std::nullopt;
}

} // namespace vorna::drawing
