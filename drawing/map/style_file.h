// Style files: the layers of a map in JSON, with what is drawn of each and how.
#pragma once

#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/map_settings.h"

namespace vorna::drawing::map {

struct Style_Layer {
    std::string source; // a file by its path; empty = the maps that are drawn anyway
    Map_Settings settings;
};

struct Map_Style {
    Map_Settings settings; // of the whole map
    std::vector<Style_Layer> layers;
};

// base: the settings that the file's members replace. Layers are in drawing order. Throws Map_Error, which names the file, line,
// column and key, Usage_Error and Load_Error.
Map_Style read_style(const std::string& file, const Map_Settings& base, Load_Limits& limits);

} // namespace vorna::drawing::map
