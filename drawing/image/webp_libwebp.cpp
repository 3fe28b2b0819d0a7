// WebP images, read by libwebp.
#include <webp/decode.h>

#include "drawing/image/image_decoders.h"

namespace vorna::drawing {

Image decode_webp(std::string_view bytes, const Before_Pixels& before) {
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(data, bytes.size(), &features) != VP8_STATUS_OK) {
        throw Image_Error("expected a WebP image: its header is damaged");
    }
    if (features.has_animation != 0) {
        throw Image_Error("expected a WebP image, found an animation");
    }
    check_sides(static_cast<std::uint32_t>(features.width), static_cast<std::uint32_t>(features.height),
                [&](std::uint64_t pixels) {
                    if (before) {
                        before(2 * pixels); // libwebp may have a copy
                    }
                });
    Image image(features.width, features.height);
    static_assert(sizeof(VT_RGB32) == 4 && offsetof(VT_RGB32, blue) == 0 && offsetof(VT_RGB32, alpha) == 3);
    if (WebPDecodeBGRAInto(data, bytes.size(), reinterpret_cast<std::uint8_t*>(image.pixels.data()), 4 * image.pixels.size(),
                           4 * image.width) == nullptr) {
        throw Image_Error("expected a WebP image: its pixels are damaged or cut off");
    }
    return image;
}

} // namespace vorna::drawing
