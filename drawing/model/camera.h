// Cameras that are fitted to what they look at.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/geometry.h"

namespace vorna::drawing::model {

enum class View { front, back, left, right, top, bottom, iso };
enum class Up_Axis { y, z, x, minus_y, minus_z, minus_x };
enum class Projection { perspective, orthographic };

// Tangent of half the vertical field of view at zoom 1, about 30 degrees in all.
inline constexpr double half_view_tangent = 0.268;
// That of a field of view in degrees, below 180. The same bit by bit on every machine.
double half_tangent_of(double degrees);

// Where a camera stands, what is in the middle of its picture, and what points up there. Parallel projection shows as much as
// perspective does at the target's distance.
struct Aim {
    VT_Vector_D eye, target, up;
};

// Whether the direction that points up leads away from the line of sight, so that it has a place in the image.
bool is_upright(const Aim& aim) noexcept;

// The perspective of a measured camera, in pixels of the image: focal lengths, and the place on the line of sight, counted from
// the image's upper left corner to the right and down.
struct Lens {
    double focal_x = 0, focal_y = 0, center_x = 0, center_y = 0;
};

struct Camera_Settings {
    View view = View::iso;
    Up_Axis up = Up_Axis::y;
    Projection projection = Projection::perspective;
    double aspect = 1;                     // width of the picture over its height
    double zoom = 1;                       // above 1 enlarges the middle of the picture
    std::optional<Aim> aim = std::nullopt; // instead of the view and the distance that fits; has a direction, and another one up
    double half_tangent = half_view_tangent; // of the vertical field of view, at zoom 1
    // Where the line of sight meets the image, from its middle, in halves of its width to the right and of its height upwards.
    double shift_x = 0, shift_y = 0;
    std::optional<Lens> lens; // instead of half_tangent, aspect and the shift, which follow from it and the image's size
    // Of parallel projection: half of the height that the image shows, instead of what follows from the aim's distance and zoom.
    double half_height = 0; // 0 = not given
};

// The direction of the model's axis that points up.
VT_Vector_D up_direction(Up_Axis up) noexcept;

// Clip space: a point is visible where -w <= x <= w, -w <= y <= w and 0 <= z <= w; z / w is linear in the depth buffer.
struct Camera {
    VT_Matrix clip_from_model;
    VT_Vector_D right, up, toward; // axes of view space in model space; toward points at the viewer
    VT_Vector_D eye;               // perspective: a place; orthographic: the direction towards the viewer
    bool eye_is_place = true;
    double near = 0, far = 0; // distances of the planes of the least and the largest depth from the aim's eye
};

// The aim of settings that have none, along the direction of their view; iso is isometric without perspective, where all three
// axes are equally long: the closest one that shows every point, with a margin.
Aim fitted_aim(const Camera_Settings& settings, std::span<const VT_Vector> points);

// The aim turned around an axis through a place, counter-clockwise as seen from where the axis points: by part of so many parts
// of a full turn. The same bit by bit on every machine.
Aim turned_aim(const Aim& aim, const VT_Vector_D& place, const VT_Vector_D& axis, std::int32_t part, std::int32_t parts);

// How far points reach towards the borders of a camera's picture: 1 = they just fit. Infinite for those that it cannot see.
double reach_of(const Camera& camera, std::span<const VT_Vector> points);

// The few of the points that decide where the camera is fitted and where its near and far planes lie: of each direction the
// outermost one. Of points in several lists: those of the lists' outermost points.
std::vector<VT_Vector> outermost_points(const Camera_Settings& settings, std::span<const VT_Vector> points);

// The camera of the settings' aim, or of the one that fits. Near and far planes just hold the points; a camera in their midst
// does not see what is right before it.
Camera fit_camera(const Camera_Settings& settings, std::span<const VT_Vector> points);

} // namespace vorna::drawing::model
