// Cutting of segments and triangles that lie partly outside a rectangle, in double precision.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "renderer/host/clip.h"

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

// Where to cut. Segments are cut in the outermost pixels, which they reach; areas at the far edges of those pixels, because they
// are filled up to but not including their last column and row.
struct Bounds {
    double left, right, bottom, top;

    static Bounds of_segments(const VT_Int_Rectangle& pixels) noexcept {
        return {static_cast<double>(pixels.left), static_cast<double>(pixels.right), static_cast<double>(pixels.bottom),
                static_cast<double>(pixels.top)};
    }
    static Bounds of_areas(const VT_Int_Rectangle& pixels) noexcept {
        return {static_cast<double>(pixels.left), pixels.right + 1.0, static_cast<double>(pixels.bottom), pixels.top + 1.0};
    }
};

// The sides by their outcodes: distance is negative outside.
struct Side {
    std::uint16_t code;
    double (*distance)(const Bounds& bounds, const VT_Point_D& point);
};

constexpr std::array<Side, 4> sides{{
    {vorna::outcode::left, [](const Bounds& b, const VT_Point_D& p) { return p.x - b.left; }},
    {vorna::outcode::above, [](const Bounds& b, const VT_Point_D& p) { return b.top - p.y; }},
    {vorna::outcode::right, [](const Bounds& b, const VT_Point_D& p) { return b.right - p.x; }},
    {vorna::outcode::below, [](const Bounds& b, const VT_Point_D& p) { return p.y - b.bottom; }},
}};

// How far along the segment it has passed every side that its first end, of this outcode, is outside of.
double entry(std::uint16_t code, const Bounds& bounds, const VT_Point_D& from, const VT_Point_D& to) noexcept {
    double latest = 0;
    for (const Side& side : sides) {
        if (code & side.code) {
            const double start = side.distance(bounds, from);
            latest = std::max(latest, start / (start - side.distance(bounds, to)));
        }
    }
    return latest;
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
void clip_end(std::uint16_t code, const VT_Int_Rectangle& rectangle, const VT_Point_D* points, int outer, VT_DCI_Point& clipped,
              const VT_RGB32* colors, VT_RGB32* clipped_color) noexcept {
    const int inner = 1 - outer;
    const Bounds bounds = Bounds::of_segments(rectangle);
    const double t = entry(code, bounds, points[outer], points[inner]);
    clipped = rounded_inside(bounds, between(points[outer], points[inner], t));
    if (colors && clipped_color) {
        *clipped_color = mixed(colors[outer], colors[inner], t);
    }
}

struct Corner {
    VT_Point_D point;
    VT_RGB32 color;
};

// A convex polygon: each of the four sides adds a corner at the most.
struct Polygon {
    std::array<Corner, 8> corners;
    std::size_t count = 0;

    void add(const Corner& corner) noexcept {
        if (count < corners.size()) {
            corners[count++] = corner;
        }
    }
};

Polygon cut(const Polygon& polygon, const Side& side, const Bounds& bounds) noexcept {
    Polygon left;
    for (std::size_t i = 0; i < polygon.count; ++i) {
        const Corner& corner = polygon.corners[i];
        const Corner& next = polygon.corners[(i + 1) % polygon.count];
        const double here = side.distance(bounds, corner.point);
        const double there = side.distance(bounds, next.point);
        if (!(here < 0)) {
            left.add(corner);
        }
        if ((here < 0) != (there < 0)) {
            const double t = here / (here - there);
            left.add({between(corner.point, next.point, t), mixed(corner.color, next.color, t)});
        }
    }
    return left;
}

} // namespace

void VD_Preclip_Head(std::uint16_t outcode, const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                     const VT_RGB32* colors, VT_RGB32* clipped_color) {
    clip_end(outcode, rectangle, points, 0, *clipped, colors, clipped_color);
}

void VD_Preclip_Tail(std::uint16_t outcode, const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                     const VT_RGB32* colors, VT_RGB32* clipped_color) {
    clip_end(outcode, rectangle, points, 1, *clipped, colors, clipped_color);
}

bool VD_Preclip_Ends(const std::uint16_t* outcodes, const VT_Int_Rectangle& rectangle, const VT_Point_D* points,
                     VT_DCI_Point* clipped, const VT_RGB32* colors, VT_RGB32* clipped_colors) {
    const bool beside = (outcodes[0] & outcodes[1]) != 0;
    const Bounds bounds = Bounds::of_segments(rectangle);
    if (beside || entry(outcodes[0], bounds, points[0], points[1]) + entry(outcodes[1], bounds, points[1], points[0]) > 1) {
        return false;
    }
    for (int end = 0; end < 2; ++end) {
        clip_end(outcodes[end], rectangle, points, end, clipped[end], colors, clipped_colors ? clipped_colors + end : nullptr);
    }
    return true;
}

std::int32_t VD_Preclip_2D_Triangle(const VT_Int_Rectangle& rectangle, const VT_Point_D* points, VT_DCI_Point* clipped,
                                    const VT_RGB32* colors, VT_RGB32* clipped_colors) {
    const Bounds bounds = Bounds::of_areas(rectangle);
    Polygon polygon;
    for (int i = 0; i < 3; ++i) {
        polygon.add({points[i], colors ? colors[i] : VT_RGB32{}});
    }
    for (const Side& side : sides) {
        polygon = cut(polygon, side, bounds);
    }
    if (polygon.count < 3) {
        return 0;
    }
    // Around the boundary, as a strip: alternately from its front and from its back.
    std::size_t front = 0;
    std::size_t back = polygon.count;
    for (std::size_t i = 0; i < polygon.count; ++i) {
        const Corner& corner = polygon.corners[i == 0 || i % 2 == 1 ? front++ : --back];
        clipped[i] = rounded_inside(bounds, corner.point);
        if (colors && clipped_colors) {
            clipped_colors[i] = corner.color;
        }
    }
    return static_cast<std::int32_t>(polygon.count);
}
