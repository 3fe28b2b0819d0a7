// Polylines with line types: cut into plain pieces, which are drawn one by one.
#pragma once

#include <cstdint>
#include <functional>

#include "host/attributes.h"
#include "host/rendition.h"

namespace krb {

using vorna::has_line_types;

// Draws a plain polyline: the rendition without line types, the count of points, the points.
using Draw_Plain_Polyline = std::function<void(const VT_Rendition*, int, const VT_DCI_Point*)>;

// Cuts a polyline of count points, 2 or more, by the line types of its rendition and draws the dashes and dots in order: per
// segment each with its own type, along the polyline all with the first type of the set. Every piece has two points; those of a
// dot are the same. A set that does not fit the polyline draws nothing.
//
// window: where pieces can be seen, in device coordinates. Of a segment that repeats its type very often only the part near the
// window is cut, and none when even that part repeats it more than 2^17 times, 2^14 times when the line is wide.
//
// Throws std::bad_alloc, std::bad_function_call for an empty function, and what the function throws.
void draw_by_line_types(const VT_Rendition& rendition, const VT_Int_Rectangle& window, std::int32_t count,
                        const VT_DCI_Point* points, const Draw_Plain_Polyline& draw);

} // namespace krb
