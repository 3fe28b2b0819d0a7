// Image files of any format that can be read, as samples.
#include "drawing/image/stored_image.h"

#include <algorithm>
#include <array>

#include "drawing/image/image.h"
#include "drawing/image/image_file.h"

namespace vorna::drawing {

Png_Image read_stored_image(const std::string& name, std::string_view bytes, Load_Limits& limits) {
    try {
        if (bytes.starts_with("\x89PNG")) {
            return read_png(name, bytes, limits);
        }
        constexpr std::uint64_t bytes_per_pixel = 8; // decoded, and as samples
        const Image decoded =
            decode_image(bytes, [&](std::uint64_t pixels) { limits.take_memory(name, bytes_per_pixel * pixels); });
        Png_Image image;
        image.width = decoded.width;
        image.height = decoded.height;
        image.samples.resize(4 * decoded.pixels.size());
        store_samples(reinterpret_cast<const std::uint8_t*>(decoded.pixels.data()),
                      static_cast<std::int32_t>(decoded.pixels.size()), Buffer_Format::rgb32, image.samples.data());
        return image;
    } catch (const Png_Error& error) {
        throw Usage_Error(name + ": " + error.what());
    } catch (const Image_Error& error) {
        throw Usage_Error(name + ": " + error.what());
    }
}

bool is_image_name(std::string_view name) {
    static constexpr std::array<std::string_view, 7> suffixes{"png", "jpg", "jpeg", "webp", "tga", "bmp", "dds"};
    const std::size_t dot = name.rfind('.');
    if (dot == name.npos) {
        return false;
    }
    std::string suffix(name.substr(dot + 1));
    std::ranges::transform(suffix, suffix.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::ranges::find(suffixes, suffix) != suffixes.end();
}

} // namespace vorna::drawing
