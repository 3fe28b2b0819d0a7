// Standard polygons: any number of points, concave, with self-intersections, with holes that a seam connects to the outline.
// Hatched polygons go back to their slot with the hatch as a bitmap; others are triangulated.
#include <vector>

#include "host/attributes.h"
#include "host/contour.h"
#include "host/polygon_clip.h"
#include "vorna/draw.h"
#include "vorna/standard/drawing_area.h"
#include "vorna/standard/faces.h"
#include "vorna/standard/standard_call.h"

namespace {

struct Polygon_Call {
    VT_Renderer_Data& renderer;
    const VT_Rendition& rendition;
    const VT_RGB32* color; // null = that of the rendition
};

// Draws triangles through the slots of the float form.
template <const auto& polytriangle, const auto& colorized_polytriangle, class Point>
void draw_triangulated(Polygon_Call call, std::int32_t count, const Point* points) {
    std::vector<VT_Point> floats;
    floats.reserve(static_cast<std::size_t>(count));
    for (std::int32_t i = 0; i < count; ++i) {
        const Point& point = points[i];
        floats.push_back({static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)});
    }
    const VT_Contour_Set contours(count, floats.data(), false);
    contours.triangulate(
        [](void* context, const VT_Point* corners) {
            const auto& to = *static_cast<const Polygon_Call*>(context);
            if (to.color) {
                colorized_polytriangle(to.renderer, to.rendition, 3, corners, to.color, true);
            } else {
                polytriangle(to.renderer, to.rendition, 3, corners);
            }
        },
        &call);
}

// distance(point): from the side, above 0 inside.
template <class Distance> std::vector<VT_Point_D> cut(const std::vector<VT_Point_D>& polygon, Distance distance) {
    std::vector<VT_Point_D> inside;
    vorna::clip_polygon_at_side(
        polygon, polygon.size(), distance,
        [](const VT_Point_D& from, double here, const VT_Point_D& to, double there) -> VT_Point_D {
            const double part = here / (here - there);
            return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part, from.z + (to.z - from.z) * part};
        },
        [&inside](const VT_Point_D& corner) { inside.push_back(corner); });
    return inside;
}

// So far outside the window that the rounding of cuts is invisible, and near enough for floats to represent parts of a pixel.
std::vector<VT_Point_D> cut_around_window(std::vector<VT_Point_D> polygon, const VT_Int_Rectangle& window) {
    constexpr double margin = 0x8000;
    polygon = cut(polygon, [&](const VT_Point_D& p) { return p.x - (window.left - margin); });
    polygon = cut(polygon, [&](const VT_Point_D& p) { return window.right + 1 + margin - p.x; });
    polygon = cut(polygon, [&](const VT_Point_D& p) { return p.y - (window.bottom - margin); });
    return cut(polygon, [&](const VT_Point_D& p) { return window.top + 1 + margin - p.y; });
}

} // namespace

#define VT_STANDARD_POLYGON(form, point, triangle_form)                                                                          \
    void VD_Standard_Draw_##form##_Polygon(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,        \
                                           const point* points, const VT_RGB32* color) {                                         \
        const vorna::Standard_Call call(renderer, "VD_Standard_Draw_" #form "_Polygon");                                         \
        if (count < 3) {                                                                                                         \
            return;                                                                                                              \
        }                                                                                                                        \
        if (!vorna::drawn_by_renderer(rendition.face)) {                                                                         \
            VD_Draw_##form##_Polygon(renderer, *vorna::with_plain_face(rendition), count, points, color);                        \
        } else {                                                                                                                 \
            draw_triangulated<VD_Draw_##triangle_form##_Polytriangle, VD_Draw_##triangle_form##_Colorized_Polytriangle>(         \
                {renderer, rendition, color}, count, points);                                                                    \
        }                                                                                                                        \
    }
VT_STANDARD_POLYGON(2D, VT_Point, 2D)
VT_STANDARD_POLYGON(DC, VT_Point, DC)
VT_STANDARD_POLYGON(2DI, VT_DCI_Point, 2D)
VT_STANDARD_POLYGON(DCI, VT_DCI_Point, DC)

// Through the 2D slot, which clips to the hard clip and draws hatches.
void VD_Standard_Draw_3D_Polygon(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                 const VT_Point_D* points, const VT_RGB32* color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_3D_Polygon");
    if (count < 3) {
        return;
    }
    const VT_Int_Rectangle window = vorna::window_rectangle(renderer.current_renderer_options());
    std::vector<VT_Point> floats;
    for (const VT_Point_D& point : cut_around_window({points, points + count}, window)) {
        floats.push_back({static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)});
    }
    VD_Draw_2D_Polygon(renderer, rendition, static_cast<std::int32_t>(floats.size()), floats.data(), color);
}
