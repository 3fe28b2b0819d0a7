// The items of a map, in drawing order.
#pragma once

#include <variant>
#include <vector>

#include "drawing/map/lettering.h"
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

// A face in pixels before supersampling.
struct Form_Item {
    const Face* outline;
    VT_RGB32 color;
};

struct Text_Item {
    const Lettering* lettering;
};

// Does not own what its pointers refer to.
using Map_Item = std::variant<Face_Item, Line_Item, Mark_Item, Form_Item, Text_Item>;
using Map_Items = std::vector<Map_Item>;

} // namespace vorna::drawing::map
