// Polylines of transformed points, cut where whole coordinates end.
#pragma once

#include <cstdint>

#include "host/clip.h"
#include "host/color.h"
#include "host/geometry.h"

namespace vorna {

// Memory for clip_polyline, one element for each point of the polyline. colors is null when the polyline has no colours.
struct Polyline_Memory {
    std::uint16_t* outcodes;
    VT_DCI_Point* points;
    VT_RGB32* colors;
};

// Cuts a polyline of count points to a rectangle and calls draw(first segment, count of points, points, their colours) for each
// piece. colors: one for each point, interpolated at the cuts, or null; then the pieces have none either.
// whole(point) makes a whole point of a VT_Point_D that is not cut, and the final one of a VT_DCI_Point that the cut has rounded.
template <class Whole, class Draw>
void clip_polyline(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_Point_D* points, const VT_RGB32* colors,
                   const Polyline_Memory& memory, Whole whole, const Draw& draw) {
    if (count < 2) {
        return;
    }
    const std::uint16_t* const outcodes = memory.outcodes;
    VT_DCI_Point* const piece = memory.points;
    // Most polylines lie inside, which is found in less time than outcodes take. NaN counts as inside here too.
    std::int32_t first_outside = 0;
    while (first_outside < count && !(points[first_outside].x < rectangle.left) && !(points[first_outside].x > rectangle.right) &&
           !(points[first_outside].y < rectangle.bottom) && !(points[first_outside].y > rectangle.top)) {
        ++first_outside;
    }
    if (first_outside == count) {
        for (std::int32_t i = 0; i < count; ++i) {
            piece[i] = whole(points[i]);
        }
        draw(0, count, piece, colors);
        return;
    }
    if (VD_Clip(rectangle, count, points, memory.outcodes) == 0) {
        return;
    }
    const auto colors_from = [colors](std::int32_t i) { return colors ? colors + i : nullptr; };
    const auto color_of_piece = [&](std::int32_t i) { return colors ? memory.colors + i : nullptr; };
    for (std::int32_t i = 0; i < count;) {
        if (outcodes[i] != 0) {
            const bool may_cross = i + 1 < count && outcodes[i + 1] != 0 && (outcodes[i] & outcodes[i + 1]) == 0;
            if (may_cross && VD_Preclip_Ends(outcodes + i, rectangle, points + i, piece, colors_from(i), color_of_piece(0))) {
                piece[0] = whole(piece[0]);
                piece[1] = whole(piece[1]);
                draw(i, 2, piece, color_of_piece(0));
            }
            ++i;
            continue;
        }
        // Points inside, between the places where the polyline enters and leaves.
        std::int32_t first = i;
        std::int32_t length = 0;
        if (i > 0) {
            --first;
            VD_Preclip_Head(outcodes[first], rectangle, points + first, piece, colors_from(first), color_of_piece(0));
            piece[0] = whole(piece[0]);
            length = 1;
        }
        for (; i < count && outcodes[i] == 0; ++i, ++length) {
            piece[length] = whole(points[i]);
            if (colors) {
                memory.colors[length] = colors[i];
            }
        }
        if (i < count) {
            VD_Preclip_Tail(outcodes[i], rectangle, points + i - 1, piece + length, colors_from(i - 1), color_of_piece(length));
            piece[length] = whole(piece[length]);
            ++length;
        }
        draw(first, length, piece, color_of_piece(0));
    }
}

} // namespace vorna
