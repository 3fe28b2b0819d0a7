// Cuts one triangle against the clip rectangle.
#pragma once

#include <cstdint>

#include "renderer/host/color.h"
#include "renderer/host/geometry.h"

namespace krb {

// A corner of a triangle or of what is left of it. Colour and texture parameters travel along and mean nothing to callers that do
// not use them.
struct Clip_Vertex {
    VT_DCI_Point point;
    VT_RGB32 color;
    float u, v;
};

// A convex polygon of up to eight corners in strip order, so that the walk over a strip draws it as count - 2 triangles. Points,
// colours and parameters are apart, as the kernels want them.
struct Clipped_Polygon {
    static constexpr std::int32_t most_vertices = 8;

    std::int32_t count;
    VT_DCI_Point points[most_vertices];
    VT_RGB32 colors[most_vertices];
    float u[most_vertices], v[most_vertices];
};

// The part of the triangle that covers pixels of the rectangle, cut at the far edges of its outermost pixels. New corners are
// found by Liang and Barsky's method and take their values from the triangle's plane; where the boundary leaves through one side
// and comes back through another, the rectangle's corners between them are put in. Returns the count; below 3 there is nothing to
// draw.
std::int32_t clip_triangle_to_rectangle(const VT_Int_Rectangle& rectangle, const Clip_Vertex (&triangle)[3],
                                        Clipped_Polygon& polygon);

} // namespace krb
