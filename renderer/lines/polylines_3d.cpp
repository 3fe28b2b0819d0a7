// Members of the 3D polyline slots: polylines are moved into the tile, cut where their points do not fit integers, and handed to
// the 2DI slots.
#include "renderer/lines/polylines_3d.h"

#include <algorithm>

#include "host/clip.h"
#include "renderer/core/scratch.h"
#include "renderer/core/tile.h"

namespace krb {

namespace {

// Cuts the polyline and hands over what is left: draw(rendition, first segment, count of points, points, their colours). colors:
// one a point, or null; then there are none to hand over either.
template <class Draw>
void draw_in_tile(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point_D* points,
                  const VT_RGB32* colors, Draw draw) {
    if (count < 2) {
        return;
    }
    const Tile tile(renderer_of(data), rendition);
    const VT_Int_Rectangle& guard = tile.guard_band();
    Scratch<std::uint16_t, 66> outcodes(std::int64_t{count} + 2);
    const std::int32_t inside = VD_Clip(guard, count, points, outcodes.data());
    if (inside == 0) {
        return;
    }
    Scratch<VT_DCI_Point> piece(count);
    if (inside == count) {
        tile.to_tile(count, points, piece.data());
        draw(tile.rendition(), 0, count, piece.data(), colors);
        return;
    }
    Scratch<VT_RGB32> colors_of_piece(colors ? count : 0);
    VT_RGB32* const piece_colors = colors ? colors_of_piece.data() : nullptr;
    const auto colors_from = [colors](std::int32_t i) { return colors ? colors + i : nullptr; };
    const auto move_piece = [&](std::int32_t first, std::int32_t length) {
        for (std::int32_t k = first; k < first + length; ++k) {
            piece[k] = tile.to_tile(piece[k]);
        }
    };
    for (std::int32_t i = 0; i < count;) {
        if (outcodes[i] != 0) {
            const bool may_cross = i + 1 < count && outcodes[i + 1] != 0 && (outcodes[i] & outcodes[i + 1]) == 0;
            if (may_cross && VD_Preclip_Ends(&outcodes[i], guard, points + i, piece.data(), colors_from(i), piece_colors)) {
                move_piece(0, 2);
                draw(tile.rendition(), i, 2, piece.data(), piece_colors);
            }
            ++i;
            continue;
        }
        // A run of points inside, with the places where the polyline enters and leaves.
        std::int32_t first = i;
        std::int32_t length = 0;
        if (i > 0) {
            --first;
            VD_Preclip_Head(outcodes[first], guard, points + first, piece.data(), colors_from(first), piece_colors);
            move_piece(length++, 1);
        }
        for (; i < count && outcodes[i] == 0; ++i, ++length) {
            piece[length] = tile.to_tile(points[i]);
            if (colors) {
                piece_colors[length] = colors[i];
            }
        }
        if (i < count) {
            VD_Preclip_Tail(outcodes[i], guard, points + i - 1, &piece[length], colors_from(i - 1),
                            colors ? piece_colors + length : nullptr);
            move_piece(length++, 1);
        }
        draw(tile.rendition(), first, length, piece.data(), piece_colors);
    }
}

} // namespace

void draw_3d_polyline(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point_D* points) {
    draw_in_tile(data, rendition, count, points, nullptr,
                 [&](const VT_Rendition& of_tile, std::int32_t, std::int32_t length, const VT_DCI_Point* piece, const VT_RGB32*) {
                     draw_through(data.actions.draw_2di_polyline, &VD_Standard_Draw_2DI_Polyline, data, of_tile, length, piece);
                 });
}

void draw_3d_colorized_polyline(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                const VT_Point_D* points, const VT_RGB32* colors, bool single_color) {
    draw_in_tile(
        data, rendition, count, points, nullptr,
        [&](const VT_Rendition& of_tile, std::int32_t first, std::int32_t length, const VT_DCI_Point* piece, const VT_RGB32*) {
            const VT_RGB32* const of_piece = colors && !single_color ? colors + first : colors;
            draw_through(data.actions.draw_2di_colorized_polyline, &VD_Standard_Draw_2DI_Colorized_Polyline, data, of_tile,
                         length, piece, of_piece, single_color);
        });
}

void draw_3d_gouraud_polyline(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point_D* points,
                              const VT_RGB32* colors) {
    draw_in_tile(data, rendition, count, points, colors,
                 [&](const VT_Rendition& of_tile, std::int32_t, std::int32_t length, const VT_DCI_Point* piece,
                     const VT_RGB32* piece_colors) {
                     draw_through(data.actions.draw_2di_gouraud_polyline, &VD_Standard_Draw_2DI_Gouraud_Polyline, data, of_tile,
                                  length, piece, piece_colors);
                 });
}

} // namespace krb
