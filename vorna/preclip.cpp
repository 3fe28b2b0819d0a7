// Segments and triangles cut to a rectangle, in double precision.
#include <algorithm>

#include "host/clip.h"
#include "host/rounding.h"
#include "host/segment_clip.h"
#include "host/triangle_clipper.h"

namespace {

std::uint8_t mixed(std::uint8_t a, std::uint8_t b, double t) noexcept {
    return static_cast<std::uint8_t>(vorna::saturated_coordinate(std::clamp(a + (b - a) * t, 0.0, 255.0)));
}

VT_RGB32 mixed(VT_RGB32 a, VT_RGB32 b, double t) noexcept {
    return {mixed(a.blue, b.blue, t), mixed(a.green, b.green, t), mixed(a.red, b.red, t), mixed(a.alpha, b.alpha, t)};
}

// The parameter at which the segment has passed every side that its first end lies outside of. Segments are cut at the centres of
// the outermost pixels, unlike areas.
double entry(const VT_Int_Rectangle& rectangle, const VT_Point_D& from, const VT_Point_D& to) noexcept {
    return vorna::part_near(rectangle, 0, from, VT_Vector_D{to.x - from.x, to.y - from.y, 0}).entering;
}

VT_Point_D between(const VT_Point_D& a, const VT_Point_D& b, double t) noexcept {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
}

// Clamped before rounding, because interpolation errors may lead out of the rectangle.
VT_DCI_Point rounded_inside(const VT_Int_Rectangle& rectangle, const VT_Point_D& point) noexcept {
    const auto rounded = [](double v, std::int32_t least, std::int32_t most) {
        return vorna::saturated_coordinate(std::clamp<double>(v, least, most));
    };
    return {rounded(point.x, rectangle.left, rectangle.right), rounded(point.y, rectangle.bottom, rectangle.top),
            vorna::saturated_coordinate(point.z)};
}

// Cuts the end points[outer], which is outside, where the segment enters the rectangle.
void clip_end(const VT_Int_Rectangle& rectangle, const VT_Point_D* points, int outer, VT_DCI_Point& clipped,
              const VT_RGB32* colors, VT_RGB32* clipped_color) noexcept {
    const int inner = 1 - outer;
    const double t = entry(rectangle, points[outer], points[inner]);
    clipped = rounded_inside(rectangle, between(points[outer], points[inner], t));
    if (colors && clipped_color) {
        *clipped_color = mixed(colors[outer], colors[inner], t);
    }
}

} // namespace

void VD_Preclip_Head(std::uint16_t, const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                     const VT_RGB32* colors, VT_RGB32* clipped_color) {
    clip_end(rectangle, points, 0, *clipped, colors, clipped_color);
}

void VD_Preclip_Tail(std::uint16_t, const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                     const VT_RGB32* colors, VT_RGB32* clipped_color) {
    clip_end(rectangle, points, 1, *clipped, colors, clipped_color);
}

bool VD_Preclip_Ends(const std::uint16_t* outcodes, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                     VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_colors) {
    const bool beside = (outcodes[0] & outcodes[1]) != 0;
    if (beside || entry(rectangle, points[0], points[1]) + entry(rectangle, points[1], points[0]) > 1) {
        return false;
    }
    for (int end = 0; end < 2; ++end) {
        clip_end(rectangle, points, end, clipped[end], colors, clipped_colors ? clipped_colors + end : nullptr);
    }
    return true;
}

std::int32_t VD_Preclip_2D_Triangle(const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                                    const VT_RGB32* colors, VT_RGB32* clipped_colors) {
    vorna::Clip_Vertex<VT_Point_D> triangle[3];
    for (int i = 0; i < 3; ++i) {
        triangle[i] = {points[i], colors ? colors[i] : VT_RGB32{}, 0, 0};
    }
    vorna::Clipped_Polygon polygon;
    const std::int32_t count = vorna::clip_triangle_to_rectangle(rectangle, triangle, polygon);
    std::copy_n(polygon.points, count, clipped);
    if (colors && clipped_colors) {
        std::copy_n(polygon.colors, count, clipped_colors);
    }
    return count;
}
