// Members of the 3D polyline slots: polylines are moved into the tile, cut where their points do not fit integers, and handed to
// the 2DI slots.
#include "renderer/lines/polylines_3d.h"

#include "host/polyline_clip.h"
#include "host/scratch.h"
#include "renderer/core/member.h"
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
    vorna::Scratch<std::uint16_t> outcodes(count);
    vorna::Scratch<VT_DCI_Point> piece(count);
    vorna::Scratch<VT_RGB32> piece_colors(colors ? count : 0);
    vorna::clip_polyline(
        tile.guard_band(), count, points, colors, {outcodes.data(), piece.data(), piece_colors.data()},
        [&tile](const auto& point) { return tile.to_tile(point); },
        [&](std::int32_t first, std::int32_t length, const VT_DCI_Point* whole, const VT_RGB32* of_points) {
            draw(tile.rendition(), first, length, whole, of_points);
        });
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
