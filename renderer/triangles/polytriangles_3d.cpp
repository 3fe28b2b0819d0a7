// Members of the 3D polytriangle slots: strips are moved into the tile, cut where their points do not fit integers, and handed to
// the DCI slots.
#include "renderer/triangles/polytriangles_3d.h"

#include "host/clip.h"
#include "host/scratch.h"
#include "host/strip.h"
#include "host/triangle_clipper.h"
#include "renderer/core/member.h"
#include "renderer/core/tile.h"

namespace krb {

namespace {

// A triangle whose points do not fit 32-bit integers, in tile coordinates.
struct Far_Triangle {
    VT_Point_D corners[3];
    const VT_Int_Rectangle& clip;

    Far_Triangle(const Tile& tile, const VT_Point_D* triangle)
        : corners{tile.moved(triangle[0]), tile.moved(triangle[1]), tile.moved(triangle[2])},
          clip(tile.rendition().clip.hard_clip) {}
};

// The part of it that the host's clipper leaves: a strip, with colours when there were any.
struct Cut_Triangle {
    VT_DCI_Point points[vorna::Clipped_Polygon::most_vertices];
    VT_RGB32 colors[vorna::Clipped_Polygon::most_vertices];
    std::int32_t count;

    // colors: of the three corners, or null.
    Cut_Triangle(const Far_Triangle& far, const VT_RGB32* corner_colors)
        : count(VD_Preclip_2D_Triangle(far.clip, far.corners, points, corner_colors, corner_colors ? colors : nullptr)) {}
};

// Hands over what can be drawn: run(rendition, first point, count of points, points) for stretches of triangles that integers can
// hold, piece(rendition, first point, triangle) for the others.
template <class Run, class Piece>
void draw_in_tile(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point_D* points, Run run,
                  Piece piece) {
    if (!renderer_of(data).color_buffer || count < 3) {
        return;
    }
    const Tile tile(renderer_of(data), rendition);
    vorna::Scratch<std::uint16_t, 66> outcodes(std::int64_t{count} + 2);
    const std::int32_t inside = VD_Clip(tile.guard_band(), count, points, outcodes.data());
    if (inside == 0) {
        return;
    }
    vorna::Scratch<VT_DCI_Point> moved(count);
    const auto draw_run = [&](std::int32_t first, std::int32_t length) {
        tile.to_tile(length, points + first, moved.data());
        run(tile.rendition(), first, length, moved.data());
    };
    if (inside == count) {
        draw_run(0, count);
        return;
    }
    vorna::walk_strip(count, vorna::placements_by(outcodes.data()), draw_run,
                      [&](std::int32_t k) { piece(tile.rendition(), k, Far_Triangle(tile, points + k)); });
}

} // namespace

void draw_3d_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point_D* points) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip) {
        draw_through(data.actions.draw_dci_polytriangle, &VD_Standard_Draw_DCI_Polytriangle, data, of_tile, length, strip);
    };
    draw_in_tile(
        data, rendition, count, points,
        [&](const VT_Rendition& of_tile, std::int32_t, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip);
        },
        [&](const VT_Rendition& of_tile, std::int32_t, const Far_Triangle& far) {
            if (const Cut_Triangle cut(far, nullptr); cut.count > 0) {
                draw(of_tile, cut.count, cut.points);
            }
        });
}

void draw_3d_colorized_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_Point_D* points, const VT_RGB32* colors, bool single_color) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip, std::int32_t first,
                          bool single) {
        draw_through(data.actions.draw_dci_colorized_polytriangle, &VD_Standard_Draw_DCI_Colorized_Polytriangle, data, of_tile,
                     length, strip, single_color ? colors : colors + first, single);
    };
    draw_in_tile(
        data, rendition, count, points,
        [&](const VT_Rendition& of_tile, std::int32_t first, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip, first, single_color);
        },
        [&](const VT_Rendition& of_tile, std::int32_t k, const Far_Triangle& far) {
            if (const Cut_Triangle cut(far, nullptr); cut.count > 0) {
                draw(of_tile, cut.count, cut.points, k, true);
            }
        });
}

void draw_3d_gouraud_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                  const VT_Point_D* points, const VT_RGB32* colors) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip, const VT_RGB32* of_strip) {
        draw_through(data.actions.draw_dci_gouraud_polytriangle, &VD_Standard_Draw_DCI_Gouraud_Polytriangle, data, of_tile,
                     length, strip, of_strip);
    };
    draw_in_tile(
        data, rendition, count, points,
        [&](const VT_Rendition& of_tile, std::int32_t first, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip, colors + first);
        },
        [&](const VT_Rendition& of_tile, std::int32_t k, const Far_Triangle& far) {
            if (const Cut_Triangle cut(far, colors + k); cut.count > 0) {
                draw(of_tile, cut.count, cut.points, cut.colors);
            }
        });
}

void draw_3d_textured_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_Point_D* points, const VT_RGB32* colors, const VT_Parameter* parameters,
                                   std::int32_t parameter_width, const float* weights, const VT_Vector* normals) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip, const VT_RGB32* of_strip,
                          const VT_Parameter* at, std::int32_t width, const float* weight, const VT_Vector* normal) {
        draw_through(data.actions.draw_dci_textured_polytriangle, &VD_Standard_Draw_DCI_Textured_Polytriangle, data, of_tile,
                     length, strip, of_strip, at, width, weight, normal);
    };
    const auto parameters_from = [&](std::int32_t k) { return parameters + std::int64_t{k} * parameter_width; };
    draw_in_tile(
        data, rendition, count, points,
        [&](const VT_Rendition& of_tile, std::int32_t first, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip, colors + first, parameters_from(first), parameter_width,
                 weights ? weights + first : nullptr, normals ? normals + first : nullptr);
        },
        [&](const VT_Rendition& of_tile, std::int32_t k, const Far_Triangle& far) {
            // The host's function knows no parameters; it cuts by this same one.
            const vorna::Clipped_Texture cut(far.clip, far.corners, colors + k, parameters_from(k), parameter_width);
            if (cut.polygon.count > 0) {
                draw(of_tile, cut.polygon.count, cut.polygon.points, cut.polygon.colors, cut.parameters, cut.width, nullptr,
                     nullptr);
            }
        });
}

} // namespace krb
