// WebP images where libwebp is not available.
#include "drawing/image/image_decoders.h"

namespace vorna::drawing {

Image decode_webp(std::string_view, const Before_Pixels&) {
    throw Image_Error("expected another image than WebP, which this build does not read");
}

} // namespace vorna::drawing
