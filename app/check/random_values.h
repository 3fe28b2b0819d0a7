// Random values of the types that drawing calls are made of, the same for a seed everywhere.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "app/check/random.h"
#include "host/frame_buffer.h"
#include "host/rendition.h"

namespace vorna::app::check {

VT_RGB32 random_color(Random& random);
// In four lists of ten most colours are nearly equal.
std::vector<VT_RGB32> random_colors(Random& random, std::size_t count);
VT_Int_Rectangle random_rectangle(Random& random, const VT_Int_Rectangle& within);
// The rectangle with all sides moved outwards.
VT_Int_Rectangle grown(const VT_Int_Rectangle& rectangle, std::int32_t distance);

VT_Reference<VT_Shared_Image> random_image(Random& random, VT_Int_Pair size, Buffer_Format format);
// With a texture, of which some have sides that renderers do not draw.
VT_Reference<VT_Basic_Material> random_material(Random& random);
// length() returns the length of a dash or the width of a casing.
VT_Reference<VT_Line_Type> random_line_type(Random& random, const std::function<double()>& length);
// Up to three contours, with holes, overlaps and too few corners among them. corner() returns a corner.
VT_Reference<const VT_Contour_Set> random_region(Random& random, const std::function<VT_Point()>& corner);
// A region with corners in the window and a little beside it.
VT_Reference<const VT_Contour_Set> random_region(Random& random, const VT_Int_Rectangle& window);

// Faces with a stock pattern. A bitmap and a material are set for callers that choose to draw with them.
VT_Face_Attributes random_face(Random& random);
VT_Window_Attributes random_window_attributes(Random& random, const VT_Int_Rectangle& within);
// All attributes, with numbers that every renderer and the standard functions draw. Without a region.
VT_Reference<VT_Rendition> random_rendition(Random& random, const VT_Int_Rectangle& window);

// In a fifth of the calls the point takes x, y or both from an earlier one: level and upright edges, and equal points.
template <class Point> void repeat_coordinates(Random& random, Point& point, const std::vector<Point>& earlier) {
    if (!earlier.empty() && random.chance(20)) {
        const Point& other = random.one_of(earlier);
        const std::int32_t axes = random.number(1, 3);
        point.x = (axes & 1) != 0 ? other.x : point.x;
        point.y = (axes & 2) != 0 ? other.y : point.y;
    }
}

// The points of one call: spread over an area, close together or in a sliver of it.
class Point_Cloud {
public:
    Point_Cloud(Random& random, const VT_Int_Rectangle& area);

    // z in 0..65535.
    VT_DCI_Point next(const std::vector<VT_DCI_Point>& earlier);

private:
    Random& random_;
    VT_Int_Rectangle area_;
    std::int32_t z_least_, z_most_;
    bool only_extreme_z_;
};

} // namespace vorna::app::check
