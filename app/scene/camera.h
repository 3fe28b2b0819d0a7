// Cameras that are fitted to what they look at.
#pragma once

#include <span>

#include "renderer/host/geometry.h"

namespace app::scene {

enum class View { front, back, left, right, top, bottom, iso };
enum class Up_Axis { y, z };
enum class Projection { perspective, orthographic };

struct Camera_Settings {
    View view = View::iso;
    Up_Axis up = Up_Axis::y;
    Projection projection = Projection::perspective;
    double aspect = 1; // width of the picture over its height
    double zoom = 1;   // above 1 enlarges the middle of the picture
};

// Clip space: a point is visible where -w <= x <= w, -w <= y <= w and 0 <= z <= w; z / w is linear in the depth buffer.
struct Camera {
    VT_Matrix clip_from_model;
    VT_Vector_D right, up, toward; // axes of view space in model space; toward points at the viewer
    VT_Vector_D eye;               // perspective: a place; orthographic: the direction towards the viewer
    bool eye_is_place = true;
};

// The closest camera that shows every point, with a margin, and with near and far planes that just hold them.
Camera fit_camera(const Camera_Settings& settings, std::span<const VT_Vector> points);

} // namespace app::scene
