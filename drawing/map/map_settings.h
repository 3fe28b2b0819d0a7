// The visible part of a map, and its style.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "drawing/map/map_paint.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Map_Fill {
    enum class Kind {
        automatic, // palette for maps, own for drawings
        palette,   // a shape's own colour, else one different from its neighbours'
        own,       // a shape's own colour, else none
        none,
        color
    } kind = Kind::automatic;
    VT_RGB32 color = {};
};

struct Map_Settings {
    std::string layer;          // object of a TopoJSON file; empty = its first
    std::optional<Extent> bbox; // degrees, or a drawing's units; west > east: over the antimeridian; empty = everything
    std::string projection;     // empty = equirectangular for maps, plane for drawings
    std::optional<Position> center;
    std::string clip_to; // name, id or number of a shape that clips the map; empty = none
    Map_Fill fill;
    double opacity = 1; // of fills
    std::optional<VT_RGB32> water;
    double graticule = 0;                     // degrees between meridians and parallels; 0 = none
    std::optional<Dashes> border = Dashes{};  // none: not drawn
    std::optional<Dashes> outline = Dashes{}; // of borders that belong to one shape only
    std::optional<VT_RGB32> border_color;     // none: the shapes' own
    std::int32_t border_width = 1;
    std::optional<VT_RGB32> casing;
    std::int32_t casing_width = 2; // on each side
    Marker_Paint marker{{30, 50, 200, 255}};
    bool labels = false;
    std::int32_t label_size = 12;
    VT_RGB32 label_color{0, 0, 0, 255};
    std::string font;    // file; empty = the default font
    std::string overlay; // file of a map that is drawn over this one; empty = none
    VT_RGB32 overlay_color{230, 140, 90, 255};
    bool merges = false; // whether the overlay is merged with the pixels below, bit by bit
};

} // namespace vorna::drawing::map
