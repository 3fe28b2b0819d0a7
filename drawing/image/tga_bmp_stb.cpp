// TGA and BMP images, read by stb_image.
#include <algorithm>
#include <climits>
#include <memory>
#include <utility>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_TGA
#define STBI_ONLY_BMP
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS 16384
#include <stb/stb_image.h>

#include "drawing/image/image_decoders.h"

namespace vorna::drawing {

std::optional<Image> decode_tga_or_bmp(std::string_view bytes, const Before_Pixels& before) {
    constexpr int channels = 4;
    const auto* data = reinterpret_cast<const stbi_uc*>(bytes.data());
    const int size = static_cast<int>(std::min<std::size_t>(bytes.size(), INT_MAX));
    int width = 0, height = 0, found = 0;
    if (stbi_info_from_memory(data, size, &width, &height, &found) == 0) {
        return std::nullopt;
    }
    check_sides(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), [&](std::uint64_t pixels) {
        if (before) {
            before(2 * pixels); // stb_image has a copy
        }
    });
    const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> read(
        stbi_load_from_memory(data, size, &width, &height, &found, channels), &stbi_image_free);
    if (!read) {
        throw Image_Error(std::string("expected a TGA or BMP image: ") + stbi_failure_reason());
    }
    Image image(width, height);
    const stbi_uc* from = read.get();
    for (VT_RGB32& pixel : image.pixels) {
        pixel = {from[2], from[1], from[0], from[3]};
        from += channels;
    }
    return image;
}

} // namespace vorna::drawing
