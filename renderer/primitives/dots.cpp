// Members of the slot draw_dci_dot.
#include "renderer/primitives/dots.h"

#include "renderer/primitives/single_pixels.h"

namespace krb {

template <Case c>
void draw_dci_dot(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point* point, const VT_RGB32* color) {
    if constexpr (has_depth(c)) {
        if (!renderer_of(data).draws_with_depth(rendition)) {
            draw_dci_dot<without_depth(c)>(data, rendition, point, color);
            return;
        }
    }
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer) {
        return;
    }
    const std::int32_t column = point->x - renderer.window_origin.x;
    const std::int32_t row = point->y - renderer.window_origin.y;
    const bool merges = renderer.merges(rendition.line.mode);
    const bool masked = is_masked(renderer, rendition);
    if constexpr (facts_of(c).stores_words) {
        Single_Pixels<c>(renderer, masked, merges).draw(row, column, point->z, color ? *color : rendition.line.color);
    } else if (color) {
        Single_Pixels<c>(renderer, masked, false).draw(row, column, point->z, *color); // explicit colours never merge
    } else {
        Single_Pixels<c>(renderer, masked, merges).draw(row, column, point->z, rendition.line.index);
    }
}

#define KRB_FOR_CASE(c) template VT_Draw_Dot draw_dci_dot<c>;
KRB_FOR_EACH_CASE
#undef KRB_FOR_CASE

} // namespace krb
