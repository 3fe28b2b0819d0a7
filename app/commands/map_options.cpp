// What the commands that draw maps and drawings have in common.
#include "app/commands/map_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <tuple>
#include <utility>

#include "app/cli/color_option.h"
#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/job/formats.h"
#include "drawing/map/map_choice.h"
#include "drawing/map/projection.h"
#include "host/rendition.h"

namespace vorna::app {
namespace {

using namespace drawing::map;

// Numbers between commas; empty when there is anything else.
std::vector<double> parsed_numbers(const std::string& text) {
    std::vector<double> numbers;
    const char* const end = text.data() + text.size();
    for (const char* place = text.data();; ++place) {
        double value = 0;
        const auto [stop, error] = std::from_chars(place, end, value);
        if (error != std::errc{} || !std::isfinite(value) || (stop != end && *stop != ',')) {
            return {};
        }
        numbers.push_back(value);
        place = stop;
        if (place == end) {
            return numbers;
        }
    }
}

struct Border_Style {
    const char* name;
    Dashes dashes;
};

const std::vector<Border_Style>& border_styles() {
    static const std::vector<Border_Style> styles{{"solid", {}},
                                                  {"dashed", {6, 4}},
                                                  {"dotted", {0, 3}},
                                                  {"dash-dot", {8, 3, 0, 3}},
                                                  {"dash-dot-dot", {8, 3, 0, 3, 0, 3}},
                                                  {"long-dashed", {14, 5}}};
    return styles;
}

std::vector<std::string> border_names() {
    std::vector<std::string> names{"none"};
    names.reserve(1 + border_styles().size());
    for (const Border_Style& style : border_styles()) {
        names.emplace_back(style.name);
    }
    return names;
}

// Nothing: no line at all.
std::optional<Dashes> parsed_dashes(const char* option, const std::string& text) {
    if (text == "none") {
        return std::nullopt;
    }
    for (const Border_Style& style : border_styles()) {
        if (text == style.name) {
            return style.dashes;
        }
    }
    const std::vector<double> lengths = parsed_numbers(text);
    const bool fits = !lengths.empty() && lengths.size() % 2 == 0 && std::ranges::all_of(lengths, [&](const double& length) {
        return length <= 10000 && (&length - lengths.data()) % 2 ? length > 0 : length >= 0;
    });
    if (!fits) {
        throw drawing::Usage_Error(
            std::string(option) +
            ": expected none, solid, dashed, dotted, dash-dot, dash-dot-dot, long-dashed or lengths of dashes and "
            "gaps in pixels as 6,4, found '" +
            text + "'");
    }
    return lengths;
}

constexpr std::array<std::pair<const char*, std::int32_t>, 9> symbols{{{"dot", vorna::marker_symbol::dot},
                                                                       {"plus", vorna::marker_symbol::plus},
                                                                       {"cross", vorna::marker_symbol::cross},
                                                                       {"circle", vorna::marker_symbol::circle},
                                                                       {"disc", vorna::marker_symbol::filled_circle},
                                                                       {"square", vorna::marker_symbol::square},
                                                                       {"block", vorna::marker_symbol::filled_square},
                                                                       {"triangle", vorna::marker_symbol::triangle},
                                                                       {"star", vorna::marker_symbol::star}}};

std::vector<std::string> symbol_names() {
    std::vector<std::string> names;
    names.reserve(symbols.size());
    for (const auto& [name, symbol] : symbols) {
        names.emplace_back(name);
    }
    return names;
}

std::int32_t parsed_symbol(const std::string& text) {
    for (const auto& [name, symbol] : symbols) {
        if (text == name) {
            return symbol;
        }
    }
    throw drawing::Usage_Error("--marker: expected one of " + list_of(symbol_names()) + ", found '" + text + "'");
}

std::optional<Extent> parsed_extent(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::vector<double> n = parsed_numbers(text);
    if (n.size() != 4 || n[1] >= n[3] || n[0] == n[2]) {
        throw drawing::Usage_Error("--bbox: expected west,south,east,north, found '" + text + "'");
    }
    return Extent{n[0], n[1], n[2], n[3]};
}

std::optional<Position> parsed_center(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::vector<double> n = parsed_numbers(text);
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
        {.names = {"--bbox"},
         .value = text_value("W,S,E,N"),
         .text = "What to show, in degrees or a drawing's units; all by default",
         .target = &options.bbox},
        {.names = {"--layer"},
         .value = text_value("NAME"),
         .text = "Object of a TopoJSON file; its first by default",
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
         .target = &options.label_size,
         .needs = {"--labels"}},
        {.names = {"--label-color"},
         .value = text_value("COLOR"),
         .text = "Colour of letters",
         .target = &options.label_color,
         .needs = {"--labels"}},
        {.names = {"--font"},
         .value = text_value("FONT"),
         .text = "Font of labels: TrueType, OpenType and others",
         .target = &options.font,
         .needs = {"--labels"}},
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
    for (Option option : own) {
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
    return settings;
}

std::unique_ptr<Map_Scene> load_map_scene(const Model_Options& options, const Map_Options& map_options,
                                          const drawing::Input& input) {
    const VT_RGB32 background = options.is_transparent() ? VT_RGB32{255, 255, 255, 255} : map_background_of(options);
    const Map_Settings settings = map_settings_of(map_options);
    const auto overlay = drawing::open_overlay(settings, *options.limits);
    auto scene = std::make_unique<Map_Scene>(input, overlay, settings, background, options.limits);
    for (const std::string& warning : scene->warnings()) {
        if (options.strict) {
            throw drawing::Usage_Error(warning);
        }
        warn(warning);
    }
    return scene;
}

} // namespace vorna::app
