// Cutting of segments and triangles that lie partly outside a rectangle, in double precision.
#include <algorithm>
#include <cmath>
#include <limits>

#include "host/clip.h"
#include "host/segment_clip.h"
#include "host/triangle_clipper.h"

namespace {

// Halves go up on both sides of zero. What no integer holds becomes the nearest that one does.
std::int32_t rounded(double value) noexcept {
    const double whole = std::trunc(value >= 0 ? value + 0.5 : value - 0.49999999999);
    constexpr double least = std::numeric_limits<std::int32_t>::min();
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    return whole != whole ? 0 : static_cast<std::int32_t>(std::clamp(whole, least, most));
}

std::uint8_t mixed(std::uint8_t a, std::uint8_t b, double t) noexcept {
    return static_cast<std::uint8_t>(rounded(std::clamp(a + (b - a) * t, 0.0, 255.0)));
}

VT_RGB32 mixed(VT_RGB32 a, VT_RGB32 b, double t) noexcept {
    return {mixed(a.blue, b.blue, t), mixed(a.green, b.green, t), mixed(a.red, b.red, t), mixed(a.alpha, b.alpha, t)};
}

// Where to cut: segments reach their outermost pixels, unlike areas.
struct Bounds {
    double left, right, bottom, top;

    explicit Bounds(const VT_Int_Rectangle& pixels) noexcept
        : left(pixels.left), right(pixels.right), bottom(pixels.bottom), top(pixels.top) {}
};

// How far along the segment it has passed every side that its first end is outside of.
double entry(const Bounds& bounds, const VT_Point_D& from, const VT_Point_D& to) noexcept {
    vorna::Segment_Part part;
    part.cut_between(from.x, to.x - from.x, bounds.left, bounds.right);
    part.cut_between(from.y, to.y - from.y, bounds.bottom, bounds.top);
    return part.entering;
}

VT_Point_D between(const VT_Point_D& a, const VT_Point_D& b, double t) noexcept {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
}

// Rounding may not carry the point out of the bounds again.
VT_DCI_Point rounded_inside(const Bounds& bounds, const VT_Point_D& point) noexcept {
    return {rounded(std::clamp(point.x, bounds.left, bounds.right)), rounded(std::clamp(point.y, bounds.bottom, bounds.top)),
            rounded(point.z)};
}

// The end points[outer], outside, moved along the segment to where it enters the rectangle.
void clip_end(const VT_Int_Rectangle& rectangle, const VT_Point_D* points, int outer, VT_DCI_Point& clipped,
              const VT_RGB32* colors, VT_RGB32* clipped_color) noexcept {
    const int inner = 1 - outer;
    const Bounds bounds(rectangle);
    const double t = entry(bounds, points[outer], points[inner]);
    clipped = rounded_inside(bounds, between(points[outer], points[inner], t));
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
    const Bounds bounds(rectangle);
    if (beside || entry(bounds, points[0], points[1]) + entry(bounds, points[1], points[0]) > 1) {
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
