// Textures made drawable. The first row in memory is the top one, as in renderers.
#include "vorna/standard/textures.h"

#include <bit>
#include <cstring>

#include "host/texture.h"

namespace vorna {

Padded_Texture padded_texture(const VT_Face_Attributes& face, const VT_Palette& palette) {
    const VT_Shared_Image* from = face.material ? face.material->texture.get() : nullptr;
    const bool has_indices = from && from->format() == Buffer_Format::index8;
    const bool has_colors =
        from && (from->format() == Buffer_Format::rgb32 || from->format() == Buffer_Format::presentation_rgb32);
    if (!(has_indices || has_colors) || !is_texture_side(from->width()) || !is_texture_side(from->height())) {
        return {};
    }
    const auto padded = [](std::int32_t side) {
        return static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(side)));
    };
    const std::int32_t width = padded(from->width());
    const std::int32_t height = padded(from->height());
    const VT_Reference<VT_Shared_Image> image(
        new VT_Shared_Image(width, height, Buffer_Format::rgb32, 4 * width, nullptr, false, from->bottom_up()));
    for (std::int32_t r = 0; r < from->height(); ++r) {
        const std::uint8_t* source = from->row(r);
        std::uint8_t* to = image->row(r + height - from->height());
        for (std::int32_t i = 0; i < from->width(); ++i) {
            const VT_RGB32 color = has_indices ? palette.color(source[i]) : VT_RGB32{};
            std::memcpy(to + 4 * i, has_indices ? reinterpret_cast<const std::uint8_t*>(&color) : source + 4 * i, 4);
        }
    }
    return {image, static_cast<float>(from->width()) / static_cast<float>(width),
            static_cast<float>(from->height()) / static_cast<float>(height)};
}

} // namespace vorna
