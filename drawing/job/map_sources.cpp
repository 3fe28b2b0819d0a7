// The files of a map, with the settings of each.
#include "drawing/job/map_sources.h"

#include <utility>

#include "drawing/job/formats.h"
#include "drawing/map/style_file.h"

namespace vorna::drawing {

std::vector<map::Map_Source> open_map_sources(std::vector<Input> inputs, map::Map_Settings& settings, Load_Limits& limits) {
    std::vector<map::Map_Source> sources;
    const auto add_inputs = [&](const map::Map_Settings& own) {
        for (const Input& input : inputs) {
            sources.push_back({input, own});
        }
    };
    if (settings.style.empty()) {
        for (Input& input : inputs) {
            sources.push_back({std::move(input), settings});
        }
        return sources;
    }
    map::Map_Style style = map::read_style(settings.style, settings, limits);
    settings = style.settings;
    for (const map::Style_Layer& layer : style.layers) {
        if (layer.source.empty()) {
            add_inputs(layer.settings);
            continue;
        }
        Input input = open_input(layer.source, "", limits);
        if (!is_map(input)) {
            throw Usage_Error(layer.settings.place + "source: expected a map, found " + input.name);
        }
        sources.push_back({std::move(input), layer.settings});
    }
    return sources;
}

} // namespace vorna::drawing
