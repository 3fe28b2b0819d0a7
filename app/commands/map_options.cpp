// What the commands that draw maps and drawings have in common.
#include "app/commands/map_options.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "app/cli/color_option.h"
#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/commands/map_style_options.h"
#include "drawing/job/formats.h"
#include "drawing/job/map_sources.h"
#include "drawing/map/line_styles.h"
#include "drawing/map/map_choice.h"
#include "drawing/map/projection.h"

namespace vorna::app {
namespace {

using namespace drawing::map;

std::vector<std::string> border_names() {
    std::vector<std::string> names{"none"};
    names.insert(names.end(), dash_names().begin(), dash_names().end());
    return names;
}

// Nothing: no line at all.
std::optional<Dashes> parsed_dashes(const char* option, const std::string& text) {
    std::optional<Dashes> dashes = text == "none" ? std::nullopt : dashes_of(text);
    if (!dashes && text != "none") {
        throw drawing::Usage_Error(
            std::string(option) +
            ": expected none, solid, dashed, dotted, dash-dot, dash-dot-dot, long-dashed or lengths of dashes and "
            "gaps in pixels as 6,4, found '" +
            text + "'");
    }
    return dashes;
}

std::int32_t parsed_symbol(const std::string& text) {
    const std::optional<std::int32_t> symbol = symbol_of(text);
    if (!symbol) {
        throw drawing::Usage_Error("--marker: expected one of " + list_of(symbol_names()) + ", found '" + text + "'");
    }
    return *symbol;
}

std::optional<Extent> parsed_extent(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::vector<double> n = numbers_between_commas(text);
    if (n.size() != 4 || n[1] >= n[3] || n[0] == n[2]) {
        throw drawing::Usage_Error("--bbox: expected west,south,east,north with south below north, found '" + text + "'");
    }
    return Extent{n[0], n[1], n[2], n[3]};
}

std::optional<Position> parsed_center(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::vector<double> n = numbers_between_commas(text);
    if (n.empty() || n.size() > 2 || std::abs(n[0]) > full_circle || (n.size() == 2 && std::abs(n[1]) > 90)) {
        throw drawing::Usage_Error("--center: expected a longitude, or longitude,latitude, found '" + text + "'");
    }
    return Position{n[0], n.size() == 2 ? n[1] : 0};
}

Map_Fill parsed_fill(const std::string& text) {
    using Kind = Map_Fill::Kind;
    if (text.empty()) {
        return {};
    }
    if (text == "palette" || text == "none") {
        return {text == "none" ? Kind::none : Kind::palette};
    }
    return {Kind::color, parsed_color("--fill", text, {"palette", "none"})};
}

// None for an empty text.
std::optional<VT_RGB32> color_unless_empty(const char* option, const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(parsed_color(option, text));
}

} // namespace

void add_map_options(std::vector<Option>& table, Map_Options& options) {
    const std::vector<Option> own{
        {.names = {"--projection"},
         .value = suggested_value("NAME", projection_names()),
         .text = "A projection's name, a PROJ string or EPSG code; maps are equirectangular by default, plane is coordinates as "
                 "they are",
         .target = &options.projection},
        {.names = {"--center"},
         .value = text_value("LON[,LAT]"),
         .text = "Longitude, or longitude and latitude, in the middle of the projection",
         .target = &options.center},
        {.names = {"--flip-y"},
         .text = "Coordinates of a plane grow downwards; found out by itself for maps in pixels",
         .target = &options.flip_y},
        {.names = {"--bbox"},
         .value = text_value("W,S,E,N"),
         .text = "What to show, in degrees or a drawing's units; all by default",
         .target = &options.bbox},
        {.names = {"--layer"},
         .value = text_value("NAME"),
         .text = "Layer, or several between commas; by default the first object of a TopoJSON file, all layers of others",
         .target = &options.layer},
        {.names = {"--clip-to"},
         .value = text_value("SHAPE"),
         .text = "Draw inside of this shape only: its name, id or number",
         .target = &options.clip_to},
        {.names = {"--fill"},
         .value = text_value("COLOR"),
         .text = "One colour for all faces; palette, the default of maps, gives neighbours different ones",
         .target = &options.fill},
        {.names = {"--opacity"},
         .value = number_value("SHARE", 0, 1),
         .text = "How much fills hide what lies below",
         .target = &options.opacity},
        {.names = {"--water"},
         .value = text_value("COLOR"),
         .text = "Colour of the globe behind the shapes",
         .target = &options.water},
        {.names = {"--graticule"},
         .value = number_value("DEGREES", 0.1, 90),
         .text = "Meridians and parallels so many degrees apart",
         .target = &options.graticule},
        {.names = {"--border"},
         .value = suggested_value("STYLE", border_names()),
         .text = "Borders and lines, solid by default; or lengths of dashes and gaps such as 6,4",
         .target = &options.border},
        {.names = {"--outline"},
         .value = suggested_value("STYLE", border_names()),
         .text = "Borders that no two faces share, as coasts; as --border by default",
         .target = &options.outline},
        {.names = {"--border-color"},
         .value = text_value("COLOR"),
         .text = "Colour of borders and lines instead of their own",
         .target = &options.border_color},
        {.names = {"--border-width"},
         .value = whole_value("PIXELS", 1, 1000),
         .text = "Width of borders and lines, 1 by default",
         .target = &options.border_width},
        {.names = {"--casing"},
         .value = text_value("COLOR"),
         .text = "Colour of a casing on both sides of borders and lines",
         .target = &options.casing},
        {.names = {"--casing-width"},
         .value = whole_value("PIXELS", 1, 1000),
         .text = "Width of the casing on each side, 2 by default",
         .target = &options.casing_width,
         .needs = {"--casing"}},
        {.names = {"--marker"},
         .value = suggested_value("SYMBOL", symbol_names()),
         .text = "Points, disc by default",
         .target = &options.marker},
        {.names = {"--marker-size"},
         .value = whole_value("PIXELS", 1, 1000),
         .text = "Size of points, 7 by default",
         .target = &options.marker_size},
        {.names = {"--marker-color"}, .value = text_value("COLOR"), .text = "Colour of points", .target = &options.marker_color},
        {.names = {"--labels"}, .text = "Names of shapes where there is room for them", .target = &options.labels},
        {.names = {"--label-size"},
         .value = whole_value("PIXELS", 4, 1000),
         .text = "Size of letters, 12 by default",
         .target = &options.label_size},
        {.names = {"--label-color"}, .value = text_value("COLOR"), .text = "Colour of letters", .target = &options.label_color},
        {.names = {"--font"},
         .value = text_value("FONT"),
         .text = "Font of labels: TrueType, OpenType and others",
         .target = &options.font},
        {.names = {"--overlay"},
         .value = text_value("MAP"),
         .text = "Another map to draw over this one",
         .target = &options.overlay},
        {.names = {"--overlay-color"},
         .value = text_value("COLOR"),
         .text = "Colour of its faces, lines and points",
         .target = &options.overlay_color,
         .needs = {"--overlay"}},
        {.names = {"--merge"},
         .value = choice_value("RULE", {"and"}),
         .text = "How the overlay's colours combine with those below, bit by bit, as inks do",
         .target = &options.merge,
         .needs = {"--overlay"}},
    };
    std::vector<Option> all = own;
    add_map_style_options(all, options);
    for (Option& option : all) {
        option.group = "Maps and drawings";
        option.applies_to = Applies_To::maps;
        table.push_back(std::move(option));
    }
}

void check_map_options(const Model_Options& options, const Map_Options& map_options) {
    const bool indexed = options.colors == 8;
    if (options.antialias && indexed) {
        throw drawing::Usage_Error("--antialias: expected 32 bits a pixel, found --colors 8");
    }
    if (map_options.opacity < 1 && indexed) {
        throw drawing::Usage_Error("--opacity: expected 32 bits a pixel, found --colors 8");
    }
    for (const auto& [given, name, expected] : {std::tuple(indexed, "--colors 8", "32 bits a pixel"),
                                                {!map_options.merge.empty(), "--merge", "a colour to merge with"}}) {
        if (given && options.is_transparent()) {
            throw drawing::Usage_Error("--background none: expected " + std::string(expected) + ", found " + name);
        }
    }
    const Map_Options usual;
    const bool has_text = map_options.labels || map_options.legend || !map_options.label_by.empty() ||
                          !map_options.title.empty() || !map_options.attribution.empty() || !map_options.style.empty();
    for (const auto& [given, name] : {std::pair(map_options.font != usual.font, "--font"),
                                      {map_options.label_size != usual.label_size, "--label-size"},
                                      {map_options.label_color != usual.label_color, "--label-color"}}) {
        if (given && !has_text) {
            throw drawing::Usage_Error(std::string(name) +
                                       ": expected --labels or another option for texts beside it, found none");
        }
    }
    if (map_options.style == "-" && options.models.front() == "-") {
        throw drawing::Usage_Error("--style -: expected a file, found standard input, which is the map");
    }
    if (map_options.overlay == "-" && options.models.front() == "-") {
        throw drawing::Usage_Error("--overlay -: expected a file, found standard input, which is the map");
    }
}

Map_Settings map_settings_of(const Map_Options& options) {
    Map_Settings settings;
    settings.layer = options.layer;
    settings.bbox = parsed_extent(options.bbox);
    settings.projection = options.projection;
    settings.center = parsed_center(options.center);
    if (options.flip_y) {
        settings.flip_y = true;
    }
    settings.clip_to = options.clip_to;
    settings.fill = parsed_fill(options.fill);
    settings.opacity = options.opacity;
    settings.water = color_unless_empty("--water", options.water);
    settings.graticule = options.graticule;
    settings.border = parsed_dashes("--border", options.border);
    settings.outline = parsed_dashes("--outline", options.outline.empty() ? options.border : options.outline);
    settings.border_color = color_unless_empty("--border-color", options.border_color);
    settings.border_width = options.border_width;
    settings.casing = color_unless_empty("--casing", options.casing);
    settings.casing_width = options.casing_width;
    settings.marker = {parsed_color("--marker-color", options.marker_color), parsed_symbol(options.marker), options.marker_size};
    settings.labels = options.labels;
    settings.label_size = options.label_size;
    settings.label_color = parsed_color("--label-color", options.label_color);
    settings.font = options.font;
    settings.overlay = options.overlay;
    settings.overlay_color = parsed_color("--overlay-color", options.overlay_color);
    settings.merges = !options.merge.empty();
    set_map_style(options, settings);
    return settings;
}

std::unique_ptr<Map_Scene> load_map_scene(const Model_Options& options, const Map_Options& map_options,
                                          std::vector<drawing::Input> inputs, const std::function<void(Map_Settings&)>& change) {
    const VT_RGB32 background = options.is_transparent() ? VT_RGB32{255, 255, 255, 255} : map_background_of(options);
    Map_Settings settings = map_settings_of(map_options);
    const std::vector<Map_Source> sources = drawing::open_map_sources(std::move(inputs), settings, *options.limits);
    if (change) {
        change(settings);
    }
    const auto overlay = drawing::open_overlay(settings, *options.limits);
    auto scene = std::make_unique<Map_Scene>(sources, overlay, settings, background, options.limits);
    for (const std::string& warning : scene->warnings()) {
        if (options.strict) {
            throw drawing::Usage_Error(warning);
        }
        warn(warning);
    }
    return scene;
}

} // namespace vorna::app
