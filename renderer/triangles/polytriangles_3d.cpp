// Members of the 3D polytriangle slots: shifted into the tile, cut where integers end, handed to the DCI slots.
#include "renderer/triangles/polytriangles_3d.h"

#include "renderer/core/scratch.h"
#include "renderer/core/tile.h"
#include "renderer/host/clip.h"
#include "renderer/host/triangle_plane.h"
#include "renderer/triangles/strip_walk.h"

namespace krb {

namespace {

// What the host leaves of one triangle: a strip in tile coordinates, with colours when there were any.
struct Cut_Triangle {
    static constexpr std::int32_t most_points = 8;

    VT_Point_D corners[3]; // of the whole triangle, in tile coordinates
    VT_DCI_Point points[most_points];
    VT_RGB32 colors[most_points];
    std::int32_t count;

    // colors: of the three corners, or null.
    Cut_Triangle(const Tile& tile, const VT_Point_D* triangle, const VT_RGB32* corner_colors)
        : corners{tile.moved(triangle[0]), tile.moved(triangle[1]), tile.moved(triangle[2])},
          count(VD_Preclip_2D_Triangle(tile.rendition().clip.hard_clip, corners, points, corner_colors,
                                       corner_colors ? colors : nullptr)) {}
};

// Hands over what can be drawn: run(rendition, first point, count of points, points) for stretches of triangles that integers can
// hold, piece(rendition, first point, cut triangle) for what is left of the others. corner_colors: one a point, or null.
template <class Run, class Piece>
void draw_in_tile(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point_D* points,
                  const VT_RGB32* corner_colors, Run run, Piece piece) {
    if (count < 3) {
        return;
    }
    const Tile tile(renderer_of(data), rendition);
    Scratch<std::uint16_t, 66> outcodes(std::int64_t{count} + 2);
    const std::int32_t inside = VD_Clip(tile.guard_band(), count, points, outcodes.data());
    if (inside == 0) {
        return;
    }
    Scratch<VT_DCI_Point> moved(count);
    const auto draw_run = [&](std::int32_t first, std::int32_t length) {
        tile.to_tile(length, points + first, moved.data());
        run(tile.rendition(), first, length, moved.data());
    };
    if (inside == count) {
        draw_run(0, count);
        return;
    }
    walk_strip(
        count, [&](std::int32_t k) { return placement_of(&outcodes[k]); }, draw_run,
        [&](std::int32_t k) {
            const Cut_Triangle cut(tile, points + k, corner_colors ? corner_colors + k : nullptr);
            if (cut.count > 0) {
                piece(tile.rendition(), k, cut);
            }
        });
}

} // namespace

void draw_3d_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point_D* points) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip) {
        draw_through(data.actions.draw_dci_polytriangle, &VD_Standard_Draw_DCI_Polytriangle, data, of_tile, length, strip);
    };
    draw_in_tile(
        data, rendition, count, points, nullptr,
        [&](const VT_Rendition& of_tile, std::int32_t, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip);
        },
        [&](const VT_Rendition& of_tile, std::int32_t, const Cut_Triangle& cut) { draw(of_tile, cut.count, cut.points); });
}

void draw_3d_colorized_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_Point_D* points, const VT_RGB32* colors, bool single_color) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip, std::int32_t first,
                          bool single) {
        draw_through(data.actions.draw_dci_colorized_polytriangle, &VD_Standard_Draw_DCI_Colorized_Polytriangle, data, of_tile,
                     length, strip, single_color ? colors : colors + first, single);
    };
    draw_in_tile(
        data, rendition, count, points, nullptr,
        [&](const VT_Rendition& of_tile, std::int32_t first, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip, first, single_color);
        },
        [&](const VT_Rendition& of_tile, std::int32_t k, const Cut_Triangle& cut) {
            draw(of_tile, cut.count, cut.points, k, true);
        });
}

void draw_3d_gouraud_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                  const VT_Point_D* points, const VT_RGB32* colors) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip, const VT_RGB32* of_strip) {
        draw_through(data.actions.draw_dci_gouraud_polytriangle, &VD_Standard_Draw_DCI_Gouraud_Polytriangle, data, of_tile,
                     length, strip, of_strip);
    };
    draw_in_tile(
        data, rendition, count, points, colors,
        [&](const VT_Rendition& of_tile, std::int32_t first, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip, colors + first);
        },
        [&](const VT_Rendition& of_tile, std::int32_t, const Cut_Triangle& cut) {
            draw(of_tile, cut.count, cut.points, cut.colors);
        });
}

void draw_3d_textured_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_Point_D* points, const VT_RGB32* colors, const VT_Parameter* parameters,
                                   std::int32_t parameter_width, const float* weights, const VT_Vector* normals) {
    const auto draw = [&](const VT_Rendition& of_tile, std::int32_t length, const VT_DCI_Point* strip, const VT_RGB32* of_strip,
                          const VT_Parameter* at, const float* weight, const VT_Vector* normal) {
        draw_through(data.actions.draw_dci_textured_polytriangle, &VD_Standard_Draw_DCI_Textured_Polytriangle, data, of_tile,
                     length, strip, of_strip, at, parameter_width, weight, normal);
    };
    const auto parameters_from = [&](std::int32_t k) { return parameters + std::int64_t{k} * parameter_width; };
    draw_in_tile(
        data, rendition, count, points, colors,
        [&](const VT_Rendition& of_tile, std::int32_t first, std::int32_t length, const VT_DCI_Point* strip) {
            draw(of_tile, length, strip, colors + first, parameters_from(first), weights ? weights + first : nullptr,
                 normals ? normals + first : nullptr);
        },
        [&](const VT_Rendition& of_tile, std::int32_t k, const Cut_Triangle& cut) {
            Scratch<VT_Parameter> cut_parameters(std::int64_t{cut.count} * parameter_width);
            const auto corner = [&](int i) { return vorna::Position{cut.corners[i].x, cut.corners[i].y}; };
            const vorna::Triangle_Plane plane(corner(0), corner(1), corner(2));
            for (std::int32_t j = 0; j < parameter_width; ++j) {
                const auto gradient =
                    plane.gradient<double>(parameters_from(k)[j], parameters_from(k + 1)[j], parameters_from(k + 2)[j]);
                for (std::int32_t i = 0; i < cut.count; ++i) {
                    const vorna::Position at{static_cast<double>(cut.points[i].x), static_cast<double>(cut.points[i].y)};
                    cut_parameters[i * parameter_width + j] = static_cast<VT_Parameter>(plane.value_at(gradient, at));
                }
            }
            draw(of_tile, cut.count, cut.points, cut.colors, cut_parameters.data(), nullptr, nullptr);
        });
}

} // namespace krb
