// The shadow of an object on the ground below it, seen through a camera.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "drawing/image/studio_planes.h"
#include "host/geometry.h"

namespace vorna::drawing {

class Studio_Ground {
public:
    // Columns and rows of the map.
    static constexpr std::int32_t side = 512;
    // From a place in the image to one on the map, in its pixels, as homogeneous coordinates: with the place (x, y, 1) the rows
    // give (u, v, w), and the place on the map is (u / w, v / w) where w is positive.
    using Homography = std::array<std::array<double, 3>, 3>;

    // No shadow.
    Studio_Ground() = default;
    // heights: by pixel of the map, rows upwards, the least height of the object above it, up to 65535; 65535 = nothing is above.
    // visible: a rectangle of the image that holds all of the map that is seen. The shadow fades where it is cut off by the
    // frame, the border of the image.
    Studio_Ground(const std::vector<std::uint16_t>& heights, const Homography& map_from_image, const VT_Int_Rectangle& visible,
                  const VT_Int_Rectangle& frame);

    // What the shadow leaves of the light in squares of step x step pixels, from the one with its lower left corner at (x, y)
    // rightwards. Gives those that it darkens.
    Column_Range shade(std::int32_t x, std::int32_t y, std::int32_t step, std::vector<float>& light) const;

private:
    std::vector<float> map_; // the part of the light that is taken away; 0 in the outermost rows and columns
    Homography map_from_image_{};
    VT_Int_Rectangle visible_{0, -1, 0, -1}, frame_;
    float per_pixel_ = 0; // by how much the shadow grows from the frame inwards, until it is whole
};

} // namespace vorna::drawing
