// Scale bars: lengths on the globe as lengths in the image.
#pragma once

#include <string>

#include "drawing/map/map_painter.h"
#include "drawing/map/projection.h"

namespace vorna::drawing::map {

// How many metres on the ellipsoid of WGS 84 a step of one pixel to the right takes in the image's middle. 0 where the middle is
// no place of the globe.
double metres_per_pixel(const Projection& projection, const View& view);

struct Scale_Bar {
    double pixels;
    std::string text;
};

// The longest bar of 1, 2 or 5 times a power of ten metres, kilometres, feet or miles that takes no more than so many pixels.
Scale_Bar scale_bar(double metres_per_pixel, bool in_miles, double most_pixels);

} // namespace vorna::drawing::map
