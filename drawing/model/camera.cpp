// Cameras that are fitted to what they look at.
#include "drawing/model/camera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

// The part of the picture's half width and height that the model may take.
constexpr double filled = 0.94;
// Of the far plane's distance to the near one's: 16 bits of depth tell apart what a camera inside a model sees.
constexpr double largest_depth_ratio = 500;

// In view space: what lies outermost to each side, seen along rays whose slopes against the view direction are the tangents.
struct Extent {
    double left = -infinity, right = -infinity, below = -infinity, above = -infinity, nearest = -infinity, farthest = infinity;
    static constexpr double infinity = std::numeric_limits<double>::infinity();
};

struct Axes {
    VT_Vector_D up, toward;
};

Axes axes_of(View view, Projection projection) {
    switch (view) {
    case View::front:
        return {{0, 1, 0}, {0, 0, 1}};
    case View::back:
        return {{0, 1, 0}, {0, 0, -1}};
    case View::left:
        return {{0, 1, 0}, {-1, 0, 0}};
    case View::right:
        return {{0, 1, 0}, {1, 0, 0}};
    case View::top:
        return {{0, 0, -1}, {0, 1, 0}};
    case View::bottom:
        return {{0, 0, 1}, {0, -1, 0}};
    case View::iso:
        break;
    }
    return {{0, 1, 0}, projection == Projection::orthographic ? VT_Vector_D{1, 1, 1} : VT_Vector_D{0.55, 0.42, 1}};
}

// Models with y up look along z. Others are turned around their x axis, so that those with z up stand on the x-y plane and look
// along -y; those with x up are turned around their z axis.
VT_Vector_D stand_up(const VT_Vector_D& v, Up_Axis up) noexcept {
    switch (up) {
    case Up_Axis::z:
        return {v.x, -v.z, v.y};
    case Up_Axis::minus_y:
        return {v.x, -v.y, -v.z};
    case Up_Axis::minus_z:
        return {v.x, v.z, -v.y};
    case Up_Axis::x:
        return {v.y, -v.x, v.z};
    case Up_Axis::minus_x:
        return {-v.y, v.x, v.z};
    case Up_Axis::y:
        break;
    }
    return v;
}

// How far a point lies outside to each side, in the axes of a camera.
Extent extent_of(const VT_Vector& point, const Camera& axes, double tangent_x, double tangent_y) {
    const VT_Vector_D p = widened(point);
    const double x = dot(axes.right, p), y = dot(axes.up, p), z = dot(axes.toward, p);
    return {tangent_x * z - x, tangent_x * z + x, tangent_y * z - y, tangent_y * z + y, z, z};
}

// Calls take(extent, point) for all points. Extents are those of what lies between rays that spread as the picture's borders do,
// which the fitted camera sees at the borders.
template <class Take>
void visit_extents(const Camera_Settings& settings, std::span<const VT_Vector> points, const Camera& axes, const Take& take) {
    const double tangent_y = settings.projection == Projection::perspective ? settings.half_tangent * filled : 0;
    for (const VT_Vector& point : points) {
        take(extent_of(point, axes, tangent_y * settings.aspect, tangent_y), point);
    }
}

Extent seen_extent(const Camera_Settings& settings, std::span<const VT_Vector> points, const Camera& axes) {
    Extent all;
    visit_extents(settings, points, axes, [&all](const Extent& one, const VT_Vector&) {
        all = {std::max(all.left, one.left),   std::max(all.right, one.right),     std::max(all.below, one.below),
               std::max(all.above, one.above), std::max(all.nearest, one.nearest), std::min(all.farthest, one.farthest)};
    });
    return all;
}

// Room for rounding, and for flat models, whose planes would coincide.
double slack_of(const Extent& extent) {
    const double half_width = (extent.right + extent.left) / 2, half_height = (extent.above + extent.below) / 2;
    return 1e-4 * std::max({half_width, half_height, extent.nearest - extent.farthest, 1e-3});
}

void set_axes(Camera& camera, const VT_Vector_D& up, const VT_Vector_D& toward) {
    camera.toward = toward;
    camera.right = cross(up, toward);
    camera.toward.normalize();
    camera.right.normalize();
    camera.up = cross(camera.toward, camera.right);
}

void set_row(double (&row)[4], const VT_Vector_D& v, double last) {
    row[0] = v.x;
    row[1] = v.y;
    row[2] = v.z;
    row[3] = last;
}

struct Direction {
    double x, y;
};

// Cosine and sine of an angle up to an eighth of a turn or a little more, summed up: those of libraries differ in the last bit.
Direction direction_at(double angle) {
    double cosine = 1, sine = 0, term = 1;
    for (int i = 1; i < 20; ++i) {
        term *= angle / i;
        double& sum = i % 2 ? sine : cosine;
        sum += i / 2 % 2 ? -term : term;
    }
    return {cosine, sine};
}

// Cosine and sine of a part of a full turn.
Direction direction_of(std::int32_t part, std::int32_t parts) {
    const std::int64_t eighths = 8 * std::int64_t{part} / parts, rest = 8 * std::int64_t{part} - eighths * parts;
    const bool odd = eighths % 2 != 0; // measured from the next quarter back
    constexpr double eighth_turn = 0.78539816339744830962;
    const double angle = eighth_turn * static_cast<double>(odd ? parts - rest : rest) / parts;
    const auto [cosine, sine] = direction_at(angle);
    const double x = odd ? sine : cosine, y = odd ? cosine : sine;
    switch (eighths / 2 % 4) {
    case 0:
        return {x, y};
    case 1:
        return {-y, x};
    case 2:
        return {-x, -y};
    default:
        return {y, -x};
    }
}

} // namespace

// By the double angle, whose half is at most an eighth of a turn.
double half_tangent_of(double degrees) {
    constexpr double half_degree = 0.00872664625997164788;
    const auto [cosine, sine] = direction_at(degrees * half_degree / 2);
    const double tangent = sine / cosine;
    return 2 * tangent / (1 - tangent * tangent);
}

VT_Vector_D up_direction(Up_Axis up) noexcept {
    return stand_up({0, 1, 0}, up);
}

bool is_upright(const Aim& aim) noexcept {
    const VT_Vector_D toward = aim.eye - aim.target;
    return length(cross(aim.up, toward)) > 1e-9 * length(aim.up) * length(toward);
}

Aim turned_aim(const Aim& aim, const VT_Vector_D& place, const VT_Vector_D& axis, std::int32_t part, std::int32_t parts) {
    const Direction turn = direction_of(part, parts);
    VT_Vector_D k = axis;
    k.normalize();
    const auto turned = [&](const VT_Vector_D& v) {
        const VT_Vector_D along = k * dot(k, v), beside = v - along;
        return along + beside * turn.x + cross(k, beside) * turn.y;
    };
    return {place + turned(aim.eye - place), place + turned(aim.target - place), turned(aim.up)};
}

double reach_of(const Camera& camera, std::span<const VT_Vector> points) {
    const auto& m = camera.clip_from_model.m;
    double reach = 0;
    for (const VT_Vector& point : points) {
        const VT_Vector_D p = widened(point);
        const auto row = [&](int r) { return m[r][0] * p.x + m[r][1] * p.y + m[r][2] * p.z + m[r][3]; };
        const double w = row(3), size = std::max(std::abs(row(0)), std::abs(row(1)));
        reach = std::max(reach, w > 0 ? size / w : Extent::infinity);
    }
    return reach;
}

namespace {

Camera axes_of_view(const Camera_Settings& settings) {
    const Axes axes = axes_of(settings.view, settings.projection);
    Camera camera;
    set_axes(camera, stand_up(axes.up, settings.up), stand_up(axes.toward, settings.up));
    return camera;
}

} // namespace

Aim fitted_aim(const Camera_Settings& settings, std::span<const VT_Vector> points) {
    const Camera camera = axes_of_view(settings);
    const Extent extent = seen_extent(settings, points, camera);
    // The middle between the rays that touch on both sides, and the smallest room that the model takes between them.
    const VT_Vector_D target =
        camera.right * ((extent.right - extent.left) / 2) + camera.up * ((extent.above - extent.below) / 2);
    const double half_width = (extent.right + extent.left) / 2, half_height = (extent.above + extent.below) / 2;
    const double slack = slack_of(extent), tangent = settings.half_tangent * filled;
    double distance = std::max({half_width / settings.aspect, half_height, slack}) / tangent;
    if (settings.projection == Projection::perspective) {
        distance = std::max(distance, extent.nearest + 2 * slack);
    }
    return {target + camera.toward * distance, target, camera.up};
}

std::vector<VT_Vector> outermost_points(const Camera_Settings& settings, std::span<const VT_Vector> points) {
    Camera camera = axes_of_view(settings);
    if (settings.aim) {
        set_axes(camera, settings.aim->up, settings.aim->eye - settings.aim->target);
    }
    Extent all;
    std::array<VT_Vector, 6> outermost{};
    visit_extents(settings, points, camera, [&](const Extent& one, const VT_Vector& point) {
        double* const most[] = {&all.left, &all.right, &all.below, &all.above, &all.nearest};
        const double own[] = {one.left, one.right, one.below, one.above, one.nearest};
        for (std::size_t side = 0; side < std::size(own); ++side) {
            if (own[side] > *most[side]) {
                *most[side] = own[side];
                outermost[side] = point;
            }
        }
        if (one.farthest < all.farthest) {
            all.farthest = one.farthest;
            outermost.back() = point;
        }
    });
    return points.empty() ? std::vector<VT_Vector>() : std::vector<VT_Vector>(outermost.begin(), outermost.end());
}

Camera fit_camera(const Camera_Settings& settings, std::span<const VT_Vector> points) {
    const Aim aim = settings.aim ? *settings.aim : fitted_aim(settings, points);
    Camera camera;
    set_axes(camera, aim.up, aim.eye - aim.target);
    const double x = dot(camera.right, aim.eye), y = dot(camera.up, aim.eye), z = dot(camera.toward, aim.eye);
    const Extent extent = seen_extent(settings, points, camera);
    const double slack = slack_of(extent);

    if (settings.projection == Projection::perspective) {
        const double far = std::max(z - extent.farthest + slack, 2 * slack);
        const double near = std::max(z - extent.nearest - slack, far / largest_depth_ratio);
        const double scale_y = settings.zoom / settings.half_tangent, scale_x = scale_y / settings.aspect;
        const double depth_scale = far / (far - near);
        // A place at the distance w from the eye moves by w halves of the image for a shift of 1.
        set_row(camera.clip_from_model.m[0], camera.right * scale_x - camera.toward * settings.shift_x,
                -x * scale_x + z * settings.shift_x);
        set_row(camera.clip_from_model.m[1], camera.up * scale_y - camera.toward * settings.shift_y,
                -y * scale_y + z * settings.shift_y);
        set_row(camera.clip_from_model.m[2], camera.toward * -depth_scale, (z - near) * depth_scale);
        set_row(camera.clip_from_model.m[3], camera.toward * -1.0, z);
        camera.eye = aim.eye;
        camera.near = near;
        camera.far = far;
    } else {
        const double scale_y = settings.half_height > 0 ? 1 / settings.half_height
                                                        : settings.zoom / (settings.half_tangent * length(aim.eye - aim.target)),
                     scale_x = scale_y / settings.aspect;
        const double near = extent.nearest + slack, depth_scale = 1 / (near - extent.farthest + slack);
        set_row(camera.clip_from_model.m[0], camera.right * scale_x, settings.shift_x - x * scale_x);
        set_row(camera.clip_from_model.m[1], camera.up * scale_y, settings.shift_y - y * scale_y);
        set_row(camera.clip_from_model.m[2], camera.toward * -depth_scale, near * depth_scale);
        set_row(camera.clip_from_model.m[3], {}, 1);
        camera.near = z - near;
        camera.far = camera.near + 1 / depth_scale;
        camera.eye = camera.toward;
        camera.eye_is_place = false;
    }
    return camera;
}

} // namespace vorna::drawing::model
