// The visible part of a map, and its style.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

enum class Scale_Unit { none, kilometres, miles };

// How the values of a field become colours.
struct Classing {
    std::string method;         // quantiles, equal, natural or categories; empty = quantiles, for texts categories
    std::size_t count = 5;      // of classes
    std::vector<double> breaks; // between classes, increasing, instead of a method
    std::string ramp;           // a name of ramp_names(); empty = one for the kind of values
    bool reversed = false;
};

struct Map_Settings {
    std::string layout;         // of a drawing; empty = model space
    std::string layer;          // layers between commas; empty = the first object of a TopoJSON file, all layers of others
    std::string filter;         // a condition that shapes must meet, see Filter; empty = none
    std::optional<Extent> bbox; // degrees, or a drawing's units; west > east: over the antimeridian; empty = everything
    std::string projection;     // empty = equirectangular for maps, plane for drawings
    std::optional<Position> center;
    std::optional<bool> flip_y; // of a plane, whether y grows downwards; empty = as the coordinates tell
    std::string clip_to;        // name, id or number of a shape that clips the map; empty = none
    Map_Fill fill;
    std::string fill_by; // field that chooses the colour; empty = none
    Classing classing;
    double opacity = 1; // of fills
    std::optional<VT_RGB32> water;
    double graticule = 0;                     // degrees between meridians and parallels; 0 = none
    std::optional<Dashes> border = Dashes{};  // none: not drawn
    std::optional<Dashes> outline = Dashes{}; // of borders that belong to one shape only
    std::optional<VT_RGB32> border_color;     // none: the shapes' own
    std::int32_t border_width = 1;
    std::string width_by; // field of numbers that chooses the width; empty = none
    std::int32_t width_from = 1, width_to = 8;
    std::optional<VT_RGB32> casing;
    std::int32_t casing_width = 2; // on each side
    Marker_Paint marker{{30, 50, 200, 255}};
    bool labels = false;
    std::string label_by;  // field of labels instead of the name; empty = none
    std::string label_key; // field of numbers: labels with greater ones are placed first; empty = those of larger shapes
    std::int32_t label_size = 12;
    VT_RGB32 label_color{0, 0, 0, 255};
    double halo = 1;                    // width around letters, in pixels; 0 = none
    std::optional<VT_RGB32> halo_color; // none: white or black, in contrast to the letters
    std::string font;                   // file or family; empty = the default font
    std::string overlay;                // file of a map that is drawn over this one; empty = none
    VT_RGB32 overlay_color{230, 140, 90, 255};
    std::string style;              // style file; empty = none
    std::string place;              // of these settings in a style file, before messages; empty for others
    std::string title, attribution; // empty = none
    bool legend = false;            // of fill_by
    Scale_Unit map_scale = Scale_Unit::none;
    bool merges = false; // whether the overlay is merged with the pixels below, bit by bit
};

} // namespace vorna::drawing::map
