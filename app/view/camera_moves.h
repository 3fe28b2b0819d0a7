// Camera moves for mouse and keys: functions from a pose to the next pose.
#pragma once

#include "app/view/window.h"
#include "drawing/model/camera.h"

namespace vorna::app::view {

// In any coordinates; lengths are in their unit.
struct Pose {
    drawing::model::Aim aim;
    double zoom = 1; // see Camera_Settings
    double half_tangent = drawing::model::half_view_tangent;
};

// The range that the command line accepts.
inline constexpr double smallest_zoom = 0.01, largest_zoom = 1000;

// The length that a pixel covers at the target.
double pixel_length(const Pose& pose, VT_Int_Pair size);

// Turns the camera around the target: by turn about the vertical and by tilt about the image's horizontal axis, in radians. The
// camera is never upside down: vertical, the direction that points up, stays up in the image.
Pose turned(const Pose& pose, const VT_Vector_D& vertical, double turn, double tilt);

// Moves the camera so that points at the target's distance follow a pointer that moves by so many pixels to the right and down.
Pose moved(const Pose& pose, VT_Int_Pair size, const Place& by);

// Enlarges by a factor, within the range of zooms. The point under the pointer at the target's distance keeps its place.
Pose zoomed(const Pose& pose, VT_Int_Pair size, double factor, const Place& pointer);

// The pose that shows the same image with the target at another distance from the eye, above 0.
Pose focused(const Pose& pose, drawing::model::Projection projection, double distance);

} // namespace vorna::app::view
