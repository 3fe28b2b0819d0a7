// Triangles with a texture or a colour.
#include "drawing/model/textured_triangles.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "vorna/draw.h"

namespace vorna::drawing::model {
namespace {

// Pixels by which a place on an edge may be wrong.
constexpr double allowed_error = 0.5;

// How far the middle of an edge is drawn from where it belongs.
double edge_error(const Textured_Corner& a, const Textured_Corner& b) {
    const double dx = a.x - b.x, dy = a.y - b.y;
    return std::sqrt(dx * dx + dy * dy) * std::abs(a.clip.w - b.clip.w) / (2 * (a.clip.w + b.clip.w));
}

// What is seen halfway between two points of the screen. The same bit by bit whichever comes first.
Textured_Corner middle_of(const Textured_Corner& a, const Textured_Corner& b, const Viewport& viewport) {
    const double sum = a.clip.w + b.clip.w;
    const auto mean = [&](double of_a, double of_b) { return (of_a * b.clip.w + of_b * a.clip.w) / sum; };
    const auto channel = [&](float of_a, float of_b) { return static_cast<float>(mean(of_a, of_b)); };
    Textured_Corner middle{
        {mean(a.clip.x, b.clip.x), mean(a.clip.y, b.clip.y), mean(a.clip.z, b.clip.z), mean(a.clip.w, b.clip.w)},
        mean(a.u, b.u),
        mean(a.v, b.v),
        channel(a.blue, b.blue),
        channel(a.green, b.green),
        channel(a.red, b.red),
        channel(a.alpha, b.alpha),
        0,
        0,
        {}};
    middle.place(viewport);
    return middle;
}

} // namespace

void Textured_Corner::place(const Viewport& viewport) {
    x = (clip.x / clip.w + 1) * viewport.half_width;
    y = (clip.y / clip.w + 1) * viewport.half_height;
    device = viewport.device_point(static_cast<float>(clip.x / clip.w), static_cast<float>(clip.y / clip.w),
                                   static_cast<float>(clip.z / clip.w));
}

VT_RGB32 Textured_Corner::color() const {
    const auto byte = [](float value) { return static_cast<std::uint8_t>(value + 0.5F); };
    return {byte(blue), byte(green), byte(red), byte(alpha)};
}

// Whether a triangle may touch the window_. Pieces of a triangle lie in it but for rounding.
bool Textured_Triangles::shows(const Textured_Corner& a, const Textured_Corner& b, const Textured_Corner& c) const {
    const auto [left, right] = std::minmax({a.device.x, b.device.x, c.device.x});
    const auto [bottom, top] = std::minmax({a.device.y, b.device.y, c.device.y});
    return left - 1 <= window_.right && right + 1 >= window_.left && bottom - 1 <= window_.top && top + 1 >= window_.bottom;
}

// Halves what needs it until the pieces can be drawn. Ends because the error of a half is at most half as large.
void Textured_Triangles::draw(const Textured_Corner& a, const Textured_Corner& b, const Textured_Corner& c) {
    if (!shows(a, b, c)) {
        return;
    }
    const std::array<const Textured_Corner*, 3> corners{&a, &b, &c};
    std::array<bool, 3> halved{}; // the edge from each corner to the next
    int count = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        halved[i] = edge_error(*corners[i], *corners[(i + 1) % 3]) > allowed_error;
        count += halved[i];
    }
    if (count == 0) {
        draw_piece(corners);
        return;
    }
    std::array<Textured_Corner, 3> middles;
    for (std::size_t i = 0; i < 3; ++i) {
        if (halved[i]) {
            middles[i] = middle_of(*corners[i], *corners[(i + 1) % 3], viewport_);
        }
    }
    if (count == 3) {
        for (std::size_t i = 0; i < 3; ++i) {
            draw(*corners[i], middles[i], middles[(i + 2) % 3]);
        }
        draw(middles[0], middles[1], middles[2]);
        return;
    }
    // Turned so that the first edge is halved and, of two, the second one as well.
    std::size_t first = 0;
    while (!halved[first] || (count == 2 && !halved[(first + 1) % 3])) {
        ++first;
    }
    const std::size_t second = (first + 1) % 3, third = (first + 2) % 3;
    const Textured_Corner &from = *corners[first], &tip = *corners[second], &to = *corners[third], &middle = middles[first];
    if (count == 1) {
        draw(from, middle, to);
        draw(middle, tip, to);
    } else {
        draw(middle, tip, middles[second]);
        draw(from, middle, middles[second]);
        draw(from, middles[second], to);
    }
}

void Textured_Triangles::draw_piece(const std::array<const Textured_Corner*, 3>& corners) {
    std::array<VT_DCI_Point, 3> points;
    std::array<VT_RGB32, 3> colors;
    for (std::size_t i = 0; i < 3; ++i) {
        points[i] = corners[i]->device;
        colors[i] = corners[i]->color();
    }
    const auto extent = [&](const VT_DCI_Point& p, const VT_DCI_Point& q) {
        return std::int64_t{p.x - points[0].x} * (q.y - points[0].y) - std::int64_t{p.y - points[0].y} * (q.x - points[0].x);
    };
    if (extent(points[1], points[2]) == 0) {
        return; // Rounded to a line, of which nothing is drawn.
    }
    if (!texture_) {
        VD_Draw_DCI_Gouraud_Polytriangle(renderer_, rendition_, 3, points.data(), colors.data());
        return;
    }
    std::array<VT_Parameter, 6> parameters;
    rendition_.face.material = choose_texture(corners, parameters).material;
    VD_Draw_DCI_Textured_Polytriangle(renderer_, rendition_, 3, points.data(), colors.data(), parameters.data(), 2, nullptr,
                                      nullptr);
}

// The image for a triangle, and where its points lie in it. Points are rounded to corners of pixels, and the renderer looks at
// that corner while what a pixel shows is its middle: coordinates are moved along with both, or straight lines would waver.
Texture::Cut Textured_Triangles::choose_texture(const std::array<const Textured_Corner*, 3>& corners,
                                                std::array<VT_Parameter, 6>& parameters) const {
    const Textured_Corner &a = *corners[0], &b = *corners[1], &c = *corners[2];
    const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
    const double bu = b.u - a.u, bv = b.v - a.v, cu = c.u - a.u, cv = c.v - a.v;
    const double area = bx * cy - cx * by; // in pixels, twice
    const double low[2] = {std::min({a.u, b.u, c.u}), std::min({a.v, b.v, c.v})};
    const double high[2] = {std::max({a.u, b.u, c.u}), std::max({a.v, b.v, c.v})};
    // Needles have no direction to trust.
    const double longest = std::max({bx * bx + by * by, cx * cx + cy * cy, (cx - bx) * (cx - bx) + (cy - by) * (cy - by)});
    const bool needle = std::abs(area) <= longest * 1e-4;
    const double scale = needle ? 0 : 1 / area;
    const double across[2] = {(bu * cy - cu * by) * scale, (bv * cy - cv * by) * scale};
    const double up[2] = {(cu * bx - bu * cx) * scale, (cv * bx - bv * cx) * scale};
    double covered[2];
    for (std::size_t axis = 0; axis < 2; ++axis) {
        covered[axis] = needle ? (high[axis] - low[axis]) / std::sqrt(std::max(longest, 1.0))
                               : std::sqrt(across[axis] * across[axis] + up[axis] * up[axis]);
    }
    Texture::Cut cut = texture_->cut(covered, low, high);
    for (std::size_t i = 0; i < 3; ++i) {
        const Textured_Corner& corner = *corners[i];
        const double dx = corner.device.x - viewport_.left + 0.5 - corner.x,
                     dy = corner.device.y - viewport_.bottom + 0.5 - corner.y;
        const double place[2] = {corner.u, corner.v};
        for (std::size_t axis = 0; axis < 2; ++axis) {
            // A moved point stays near what the triangle shows.
            const double room = 1.5 * cut.texel[axis];
            const double moved = std::clamp(place[axis] + across[axis] * dx + up[axis] * dy, low[axis] - room, high[axis] + room);
            parameters[2 * i + axis] =
                static_cast<VT_Parameter>(std::clamp((moved - cut.first[axis]) * cut.scale[axis], cut.low[axis], cut.high[axis]));
        }
    }
    return cut;
}

} // namespace vorna::drawing::model
