// The items of a map, in drawing order.
#pragma once

#include <variant>
#include <vector>

#include "drawing/map/map_painter.h"

namespace vorna::drawing::map {

struct Face_Item {
    const Face* face;
    VT_RGB32 color;
};

struct Line_Item {
    const Path* path;
    Line_Paint paint;
};

struct Mark_Item {
    Position place;
    Marker_Paint paint;
};

// Letters: a face in pixels before supersampling, and an offset in pixels of the supersampled image.
struct Text_Item {
    const Face* outline;
    VT_Int_Pair moved;
    VT_RGB32 color;
};

// Does not own what its pointers refer to.
using Map_Item = std::variant<Face_Item, Line_Item, Mark_Item, Text_Item>;
using Map_Items = std::vector<Map_Item>;

} // namespace vorna::drawing::map
