// Calls without their alpha.
#include "drawing/recording/opaque.h"

#include <algorithm>
#include <cstddef>

namespace vorna::drawing::recording {

namespace {

// Calls visit(alpha) for each texel of an image of 32-bit colours.
template <class Any_Image, class Visit> void for_each_texel_alpha(Any_Image& image, Visit visit) {
    const auto row_bytes = static_cast<std::size_t>(image.width()) * sizeof(VT_RGB32);
    for (std::int32_t r = 0; r < image.height(); ++r) {
        auto* const row = image.row(r);
        for (std::size_t i = offsetof(VT_RGB32, alpha); i < row_bytes; i += sizeof(VT_RGB32)) {
            visit(row[i]);
        }
    }
}

bool is_opaque(const VT_Shared_Image& image) {
    bool is_opaque = true;
    for_each_texel_alpha(image, [&is_opaque](std::uint8_t alpha) { is_opaque &= alpha == opaque_alpha; });
    return is_opaque;
}

} // namespace

VT_Reference<const VT_Line_Type_Set> opaque(const VT_Line_Type_Set& set) {
    const auto is_clear = [](const VT_Reference<const VT_Line_Type>& type) { return type && type->color.alpha != opaque_alpha; };
    if (std::ranges::none_of(set.types, is_clear)) {
        return nullptr;
    }
    const VT_Reference<VT_Line_Type_Set> made(new VT_Line_Type_Set(set));
    for (VT_Reference<const VT_Line_Type>& type : made->types) {
        if (is_clear(type)) {
            const VT_Reference<VT_Line_Type> changed(new VT_Line_Type(*type));
            changed->color.alpha = opaque_alpha;
            type = changed;
        }
    }
    return made;
}

VT_Reference<const VT_Basic_Material> opaque(const VT_Basic_Material& material) {
    const bool has_texels = material.texture && material.texture->format() == Buffer_Format::rgb32;
    const bool has_clear_texels = has_texels && !is_opaque(*material.texture);
    if (material.color.alpha == opaque_alpha && !has_clear_texels) {
        return nullptr;
    }
    const VT_Reference<VT_Basic_Material> made(new VT_Basic_Material(material));
    made->color.alpha = opaque_alpha;
    if (has_clear_texels) {
        const VT_Reference<VT_Shared_Image> texels(new VT_Shared_Image(*material.texture));
        for_each_texel_alpha(*texels, [](std::uint8_t& alpha) { alpha = opaque_alpha; });
        made->texture = texels;
    }
    return made;
}

} // namespace vorna::drawing::recording
