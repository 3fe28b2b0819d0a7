// What a map file consists of.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "drawing/files/input.h"
#include "drawing/files/json_text.h"
#include "drawing/map/map_layer.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Layer_Summary {
    Layer_Facts facts;
    std::size_t shapes = 0, faces = 0, lines = 0, points = 0;
    Bounds bounds = Bounds::nothing(); // in the units of the file
};

// The layers of a file. Throws what load_map throws.
std::vector<Layer_Summary> layer_summaries_of(const Input& input, Load_Limits& limits);

// A list of layers: name, projection, numbers of shapes, faces, lines and points, extent, and fields with their types.
void add_layers(Json_Text& json, const std::vector<Layer_Summary>& layers);

// The same in lines.
std::string text_of(const std::vector<Layer_Summary>& layers);

} // namespace vorna::drawing::map
