// Camera moves for mouse and keys.
#include "app/view/camera_moves.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "drawing/model/vectors.h"

namespace vorna::app::view {
namespace {

using namespace drawing::model;

struct Axes {
    VT_Vector_D right, up, toward;
};

Axes axes_of(const drawing::model::Aim& aim) {
    Axes axes;
    axes.toward = aim.eye - aim.target;
    axes.right = cross(aim.up, axes.toward);
    axes.toward.normalize();
    axes.right.normalize();
    axes.up = cross(axes.toward, axes.right);
    return axes;
}

// Rodrigues' rotation about an axis of length 1.
VT_Vector_D rotated(const VT_Vector_D& v, const VT_Vector_D& axis, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return v * c + cross(axis, v) * s + axis * (dot(axis, v) * (1 - c));
}

Pose shifted(Pose pose, const VT_Vector_D& by) {
    pose.aim.eye = pose.aim.eye + by;
    pose.aim.target = pose.aim.target + by;
    return pose;
}

} // namespace

double pixel_length(const Pose& pose, VT_Int_Pair size) {
    return 2 * pose.half_tangent * length(pose.aim.eye - pose.aim.target) / (pose.zoom * size.y);
}

Pose turned(const Pose& pose, const VT_Vector_D& vertical, double turn, double tilt) {
    const auto [right, up, toward] = axes_of(pose.aim);
    constexpr double quarter = std::numbers::pi / 2;
    const double elevation = std::atan2(dot(toward, vertical), dot(up, vertical));
    // A camera that starts upside down or tilted beyond the vertical is not forced back.
    if (std::abs(elevation) <= quarter + 1e-9) {
        tilt = std::clamp(elevation + tilt, -quarter, quarter) - elevation;
    }
    const auto move = [&, &axis = right](const VT_Vector_D& v) { return rotated(rotated(v, axis, -tilt), vertical, turn); };
    Pose result = pose;
    result.aim.up = move(up);
    result.aim.eye = pose.aim.target + move(toward) * length(pose.aim.eye - pose.aim.target);
    return result;
}

Pose moved(const Pose& pose, VT_Int_Pair size, const Place& by) {
    const auto [right, up, toward] = axes_of(pose.aim);
    const double pixel = pixel_length(pose, size);
    return shifted(pose, right * (-by.x * pixel) + up * (by.y * pixel));
}

Pose zoomed(const Pose& pose, VT_Int_Pair size, double factor, const Place& pointer) {
    const auto [right, up, toward] = axes_of(pose.aim);
    Pose result = pose;
    result.zoom = std::clamp(pose.zoom * factor, smallest_zoom, largest_zoom);
    const double by = pixel_length(pose, size) - pixel_length(result, size);
    return shifted(result, right * ((pointer.x - size.x / 2.0) * by) + up * ((size.y / 2.0 - pointer.y) * by));
}

Pose focused(const Pose& pose, drawing::model::Projection projection, double distance) {
    const VT_Vector_D toward = pose.aim.eye - pose.aim.target;
    Pose result = pose;
    result.aim.target = pose.aim.eye - toward * (distance / length(toward));
    if (projection == drawing::model::Projection::orthographic) {
        result.zoom *= distance / length(toward);
    }
    return result;
}

} // namespace vorna::app::view
