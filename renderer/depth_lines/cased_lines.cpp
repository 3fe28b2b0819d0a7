// Cased lines.
#include "renderer/depth_lines/cased_lines.h"

#include <algorithm>

namespace krb {

namespace {

constexpr std::uint32_t first_pass_flag = 8;
constexpr std::uint32_t second_pass_flags = 0x7F7;

// Faces of a wide line are filled with it.
const VT_Reference<const VT_Basic_Material>& plain_material() {
    static const VT_Reference<const VT_Basic_Material> material(new VT_Basic_Material);
    return material;
}

// Wide enough for every window, and far below the integer limit.
std::int32_t casing_weight(double width, std::int32_t weight) noexcept {
    constexpr std::int32_t most = 1 << 30;
    if (weight >= 2) {
        return std::min(weight, most) + 5;
    }
    return width > 0 ? static_cast<std::int32_t>(std::min<double>(2 * width, most)) + 2 : 2;
}

} // namespace

void draw_in_two_passes(const VT_Rendition& rendition, const std::function<void(const VT_Rendition& pass)>& draw) {
    // Copies, since the host may change the caller's rendition while it draws the casing.
    const VT_Reference<const VT_Line_Type> type = rendition.line.line_types->types.front();
    const VT_Line_Attributes line = rendition.line;
    const VT_Reference<VT_Rendition> pass(static_cast<VT_Rendition*>(rendition.clone()));
    pass->line.line_types = VT_Line_Type_Set::None;
    pass->face.material = plain_material();
    pass->line.weight = casing_weight(type->width, line.weight);
    pass->line.color = type->color;
    if (type->color.alpha < 255) {
        pass->drawing_flags |= first_pass_flag;
    }
    draw(*pass);

    pass->line.weight = line.weight;
    pass->line.color = line.color;
    pass->drawing_flags &= second_pass_flags;
    if (line.weight > 1) {
        pass->set_contrast_color(type->color);
    }
    draw(*pass);
}

} // namespace krb
