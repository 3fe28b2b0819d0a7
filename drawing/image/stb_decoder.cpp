// PNG images decoded by stb_image, where libpng and libjpeg are not at hand. What it would decode to other pixels than they is
// refused.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS 16384
#include <stb/stb_image.h>

#include "drawing/image/image_decoders.h"

namespace vorna::drawing {
namespace {

std::uint32_t number_at(std::string_view bytes, std::size_t place) {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(place, 4)) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

// Whether the file states another gamma than that of sRGB. Libpng takes differences below a twentieth for none.
bool has_own_gamma(std::string_view file) {
    constexpr std::uint32_t of_srgb = 45455;
    bool own = false;
    for (std::size_t chunk = 8; file.size() - chunk >= 12;) {
        const std::size_t size = number_at(file, chunk);
        const std::string_view type = file.substr(chunk + 4, 4);
        if (type == "sRGB" || type == "IDAT") {
            return own && type == "IDAT";
        }
        if (type == "gAMA" && size == 4) {
            const std::uint32_t gamma = number_at(file, chunk + 8);
            own = gamma < of_srgb - of_srgb / 20 || gamma > of_srgb + of_srgb / 20;
        }
        if (size > file.size() - chunk - 12) {
            break;
        }
        chunk += size + 12;
    }
    return own;
}

} // namespace

Image decode_png(std::string_view bytes, const Before_Pixels& before) {
    const auto* file = reinterpret_cast<const stbi_uc*>(bytes.data());
    const int size = static_cast<int>(bytes.size());
    const auto fail = [](const std::string& reason) { throw Image_Error("expected a PNG image: " + reason); };
    if (bytes.size() < 8 || bytes.size() > 0x7FFFFFFF) {
        fail("its size is out of range");
    }
    int width = 0, height = 0, channels = 0;
    if (!stbi_info_from_memory(file, size, &width, &height, &channels)) {
        fail(stbi_failure_reason());
    }
    check_sides(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), before);
    if (stbi_is_16_bit_from_memory(file, size) || has_own_gamma(bytes)) {
        throw Image_Error("expected a PNG image of 8 bits a channel without a gamma of its own: this build decodes no others");
    }
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(stbi_load_from_memory(file, size, &width, &height, &channels, 4),
                                                           stbi_image_free);
    if (!pixels) {
        fail(stbi_failure_reason());
    }
    Image image(width, height);
    const stbi_uc* at = pixels.get();
    for (VT_RGB32& pixel : image.pixels) {
        pixel = {at[2], at[1], at[0], at[3]};
        at += 4;
    }
    return image;
}

Image decode_jpeg(std::string_view, const Before_Pixels&) {
    throw Image_Error("expected a PNG image: this build decodes no JPEG images");
}

} // namespace vorna::drawing
