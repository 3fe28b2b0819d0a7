// Settings that images of models and of maps have in common.
#pragma once

#include "drawing/drawing.h"
#include "web/src/kernels.h"
#include "web/src/options.h"

namespace vorna::web {

inline drawing::Image_Settings image_settings_of(Options& options) {
    choose_kernels(options);
    drawing::Image_Settings settings;
    settings.threads = 1;
    if (const auto size = options.numbers<2>("size")) {
        settings.size = {static_cast<std::int32_t>((*size)[0]), static_cast<std::int32_t>((*size)[1])};
    }
    if (const json* const background = options.find("background"); background && *background == "transparent") {
        settings.transparent = true;
    } else if (background) {
        settings.background = Options::color_of("background", *background);
    }
    options.color("lowerBackground", settings.lower_background);
    std::int32_t colors = 32;
    options.number("colors", colors);
    Options::expect(colors == 8 || colors == 32, "colors", "8 or 32 bits", colors);
    settings.indexed = colors == 8;
    options.flag("antialias", settings.smooth_lines);
    options.number("supersample", settings.supersample);
    options.number("maxMemory", settings.max_memory);
    return settings;
}

} // namespace vorna::web
