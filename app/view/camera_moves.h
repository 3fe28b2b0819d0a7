// How hands move a camera: turning, moving and enlarging as functions from one pose to the next.
#pragma once

#include "app/view/window.h"
#include "drawing/model/camera.h"

namespace vorna::app::view {

// In the coordinates of any space; lengths count in its units.
struct Pose {
    drawing::model::Aim aim;
    double zoom = 1; // see Camera_Settings
    double half_tangent = drawing::model::half_view_tangent;
};

// As the command line takes it.
inline constexpr double smallest_zoom = 0.01, largest_zoom = 1000;

// What a pixel covers at the target.
double pixel_length(const Pose& pose, VT_Int_Pair size);

// Around the target: as on a turntable by one angle, tilted by the other, in radians. The camera never stands on its head:
// vertical, the direction that points up, stays up in the picture.
Pose turned(const Pose& pose, const VT_Vector_D& vertical, double turn, double tilt);

// What is at the target follows a pointer that moves so many pixels to the right and downwards.
Pose moved(const Pose& pose, VT_Int_Pair size, const Place& by);

// Larger by a factor, as far as zooming goes. What is at the target's distance under a pointer stays there.
Pose zoomed(const Pose& pose, VT_Int_Pair size, double factor, const Place& pointer);

// The same picture with the target at another distance from the eye, above 0.
Pose focused(const Pose& pose, drawing::model::Projection projection, double distance);

} // namespace vorna::app::view
