// The pixels of polygons, row by row.
#pragma once

#include <cstdint>
#include <functional>

#include "drawing/map/shapes.h"
#include "host/geometry.h"

namespace vorna::drawing::map {

// Calls draw with every rectangle of pixels inside the face, from its lower left pixel to its upper right one; each pixel is in
// one of them. Coordinates are pixels: pixel (i, j) lies between i and i + 1, j and j + 1. Even-odd over all rings, decided at
// pixel centres from each side by itself, whichever way it runs: faces that share a side share no pixel and leave none out
// between them, however small they are. Edge lists with crossings sorted by row.
void for_each_rectangle(const Face& face, const VT_Int_Rectangle& window,
                        const std::function<void(const VT_Int_Rectangle&)>& draw);

} // namespace vorna::drawing::map
