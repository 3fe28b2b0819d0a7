// The pixels of polygons, row by row.
#pragma once

#include <cstdint>
#include <functional>

#include "drawing/map/shapes.h"
#include "host/geometry.h"

namespace vorna::drawing::map {

// Scan conversion with edge lists: calls draw for disjoint rectangles of pixels, given by their lower left and upper right
// pixels, that together are the inside of the face. Coordinates are pixels: pixel (i, j) lies between i and i + 1, j and j + 1.
// Even-odd over all rings, sampled at pixel centres, computed from each side alone and independent of its direction: faces that
// share a side share no pixel and leave no gap.
void for_each_rectangle(const Face& face, const VT_Int_Rectangle& window,
                        const std::function<void(const VT_Int_Rectangle&)>& draw);

} // namespace vorna::drawing::map
