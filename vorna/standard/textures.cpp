// Textures of faces. Renderers take the first row in memory as the top one, so this does too.
#include "vorna/standard/textures.h"

#include <bit>
#include <cstring>

namespace vorna {

namespace {

constexpr std::int32_t largest_side = 16384;

bool is_power_of_two(std::int32_t side) noexcept {
    return side > 0 && (side & (side - 1)) == 0;
}

bool has_possible_sides(const VT_Shared_Image& image) noexcept {
    return image.width() > 0 && image.height() > 0 && image.width() <= largest_side && image.height() <= largest_side;
}

} // namespace

const VT_Shared_Image* plain_texture(const VT_Face_Attributes& face) noexcept {
    const VT_Shared_Image* image = face.material ? face.material->texture.get() : nullptr;
    const bool is_plain = image && image->format() == Buffer_Format::rgb32 && has_possible_sides(*image) &&
                          is_power_of_two(image->width()) && is_power_of_two(image->height()) &&
                          image->row_bytes() == 4 * image->width();
    return is_plain ? image : nullptr;
}

std::vector<VT_Parameter> texture_parameters(const VT_Face_Attributes& face, std::int32_t count, const VT_Parameter* parameters,
                                             std::int32_t parameter_width) {
    std::vector<VT_Parameter> pairs;
    pairs.reserve(2 * static_cast<std::size_t>(count));
    const bool is_transformed = face.material && face.material->has_texture_matrix;
    for (std::int32_t i = 0; i < count; ++i) {
        const VT_Parameter* of_point = parameters + std::int64_t{i} * parameter_width;
        float u = parameter_width > 0 ? of_point[0] : 0;
        float v = parameter_width > 1 ? of_point[1] : 0;
        if (is_transformed) {
            const auto& m = face.material->texture_matrix.m;
            const double in_u = u;
            const double in_v = v;
            u = static_cast<float>(m[0][0] * in_u + m[0][1] * in_v + m[0][3]);
            v = static_cast<float>(m[1][0] * in_u + m[1][1] * in_v + m[1][3]);
        }
        pairs.insert(pairs.end(), {u, v});
    }
    return pairs;
}

Padded_Texture padded_texture(const VT_Face_Attributes& face, const VT_Palette& palette) {
    const VT_Shared_Image* from = face.material ? face.material->texture.get() : nullptr;
    const bool has_indices = from && from->format() == Buffer_Format::index8;
    const bool has_colors =
        from && (from->format() == Buffer_Format::rgb32 || from->format() == Buffer_Format::presentation_rgb32);
    if (!(has_indices || has_colors) || !has_possible_sides(*from)) {
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
