// Members of the slot draw_dci_dot.
#include "renderer/primitives/dots.h"

#include "renderer/core/entry.h"
#include "renderer/primitives/single_pixels.h"

namespace krb {

template <Case c> struct Entry<slots::Draw_DCI_Dot, c> : Entry_Rules<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point* point,
                     const VT_RGB32* color) {
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
};

KRB_MEMBERS(, slots::Draw_DCI_Dot)

} // namespace krb
