// Options that take the style of maps from their data.
#include "app/commands/map_style_options.h"

#include <algorithm>
#include <cmath>

#include "app/cli/messages.h"
#include "drawing/map/color_ramps.h"
#include "drawing/map/filter.h"
#include "drawing/map/line_styles.h"

namespace vorna::app {

using namespace drawing::map;

void add_map_style_options(std::vector<Option>& table, Map_Options& options) {
    const std::vector<Option> own{
        {.names = {"--filter"},
         .value = text_value("CONDITION"),
         .text = "Draw the shapes whose fields meet it, as \"pop > 1e6 and kind in (city, town)\"",
         .target = &options.filter},
        {.names = {"--fill-by"},
         .value = text_value("FIELD"),
         .text = "Colours by a field: of faces, and of points and lines without faces",
         .target = &options.fill_by},
        {.names = {"--classes"},
         .value = choice_value("METHOD", {"quantiles", "equal", "natural", "categories"}),
         .text = "How values become classes; quantiles by default, for texts categories",
         .target = &options.classes,
         .needs = {"--fill-by"}},
        {.names = {"--class-count"},
         .value = whole_value("COUNT", 1, 64),
         .text = "Number of classes, 5 by default",
         .target = &options.class_count,
         .needs = {"--fill-by"}},
        {.names = {"--breaks"},
         .value = text_value("NUMBERS"),
         .text = "Limits between classes, increasing, as 10,100,1000",
         .target = &options.breaks,
         .needs = {"--fill-by"}},
        {.names = {"--ramp"},
         .value = suggested_value("NAME", ramp_names()),
         .text = "Colours of ColorBrewer; YlGnBu by default, for categories Set2 or Set3",
         .target = &options.ramp,
         .needs = {"--fill-by"}},
        {.names = {"--reverse-ramp"},
         .text = "The colours in reverse order",
         .target = &options.reverse_ramp,
         .needs = {"--fill-by"}},
        {.names = {"--width-by"},
         .value = text_value("FIELD"),
         .text = "Widths of lines by a field of numbers",
         .target = &options.width_by},
        {.names = {"--widths"},
         .value = text_value("FROM,TO"),
         .text = "Widths of the least and the greatest value, 1,8 by default",
         .target = &options.widths,
         .needs = {"--width-by"}},
        {.names = {"--label-by"},
         .value = text_value("FIELD"),
         .text = "Labels with the values of a field",
         .target = &options.label_by},
        {.names = {"--style"},
         .value = text_value("FILE"),
         .text = "Style file in JSON: layers with their filters, colours, lines and labels",
         .target = &options.style},
        {.names = {"--legend"}, .text = "Colours and values of --fill-by, in the emptiest corner", .target = &options.legend},
        {.names = {"--title"}, .value = text_value("TEXT"), .text = "Title above the map", .target = &options.title},
        {.names = {"--attribution"},
         .value = text_value("TEXT"),
         .text = "Small text at the lower right, as the data's licence may ask",
         .target = &options.attribution},
        {.names = {"--map-scale"},
         .value = choice_value("UNIT", {"km", "miles"}),
         .text = "Scale bar at the lower left of a map, for lengths in the middle of the image",
         .target = &options.scale_bar},
    };
    table.insert(table.end(), own.begin(), own.end());
}

void set_map_style(const Map_Options& options, Map_Settings& settings) {
    settings.filter = options.filter;
    if (!options.filter.empty()) {
        Filter("--filter", options.filter);
    }
    settings.fill_by = options.fill_by;
    Classing& classing = settings.classing;
    classing.method = options.classes;
    classing.count = static_cast<std::size_t>(options.class_count);
    classing.reversed = options.reverse_ramp;
    classing.ramp = options.ramp;
    if (!options.ramp.empty() && !ramp_colors(options.ramp, 1)) {
        throw drawing::Usage_Error("--ramp: expected one of " + list_of(ramp_names()) + ", found '" + options.ramp + "'");
    }
    if (!options.breaks.empty()) {
        classing.breaks = numbers_between_commas(options.breaks);
        const auto& breaks = classing.breaks;
        const bool rises = std::ranges::adjacent_find(breaks, [](double a, double b) { return !(a < b); }) == breaks.end();
        if (breaks.empty() || breaks.size() > 63 || !rises) {
            throw drawing::Usage_Error("--breaks: expected up to 63 increasing numbers between commas, found '" + options.breaks +
                                       "'");
        }
    }
    if (!options.breaks.empty() && options.classes == "categories") {
        throw drawing::Usage_Error("--breaks: expected classes of numbers beside it, found --classes categories");
    }
    settings.width_by = options.width_by;
    if (!options.widths.empty()) {
        const std::vector<double> widths = numbers_between_commas(options.widths);
        const auto fits = [](double width) { return width >= 0 && width <= 1000 && width == std::floor(width); };
        if (widths.size() != 2 || !std::ranges::all_of(widths, fits)) {
            throw drawing::Usage_Error("--widths: expected two whole numbers of pixels up to 1000 as 1,8, found '" +
                                       options.widths + "'");
        }
        settings.width_from = static_cast<std::int32_t>(widths[0]);
        settings.width_to = static_cast<std::int32_t>(widths[1]);
    }
    settings.label_by = options.label_by;
    settings.style = options.style;
    settings.title = options.title;
    settings.attribution = options.attribution;
    settings.legend = options.legend;
    settings.map_scale = options.scale_bar.empty()   ? Scale_Unit::none
                         : options.scale_bar == "km" ? Scale_Unit::kilometres
                                                     : Scale_Unit::miles;
}

} // namespace vorna::app
