// What the commands that draw maps and drawings have in common.
#include "app/commands/map_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <tuple>
#include <utility>

#include "app/cli/color_option.h"
#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/files/input_file.h"
#include "drawing/map/map_choice.h"
#include "drawing/map/projection.h"
#include "host/rendition.h"

namespace vorna::app {
namespace {

using namespace drawing::map;

constexpr const char* option_group = "Maps and drawings";

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
    throw drawing::Usage_Error("--marker: expected one of " + CLI::detail::join(symbol_names(), ", ") + ", found '" + text + "'");
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

void add_map_options(CLI::App& command, Map_Options& options) {
    const auto add = [&](const char* name, auto& target, const char* description, const char* type) {
        return command.add_option(name, target, description)->type_name(type)->group(option_group);
    };
    add("--projection", options.projection,
        "A projection's name, a PROJ string or EPSG code; maps are equirectangular by default, plane is coordinates as they are",
        "NAME")
        ->check(values(projection_names()));
    add("--center", options.center, "Longitude, or longitude and latitude, in the middle of the projection", "LON[,LAT]");
    add("--bbox", options.bbox, "What to show, in degrees or a drawing's units; all by default", "W,S,E,N");
    add("--layer", options.layer, "Object of a TopoJSON file; its first by default", "NAME");
    add("--clip-to", options.clip_to, "Draw inside of this shape only: its name, id or number", "SHAPE");
    add("--fill", options.fill, "One colour for all faces; palette, the default of maps, gives neighbours different ones",
        "COLOR");
    add("--opacity", options.opacity, "How much fills hide what lies below", "SHARE")->check(between(0.0, 1.0));
    add("--water", options.water, "Colour of the globe behind the shapes", "COLOR");
    add("--graticule", options.graticule, "Meridians and parallels so many degrees apart", "DEGREES")->check(between(0.1, 90.0));
    add("--border", options.border, "Borders and lines, solid by default; or lengths of dashes and gaps such as 6,4", "STYLE")
        ->check(values(border_names()));
    add("--outline", options.outline, "Borders that no two faces share, as coasts; as --border by default", "STYLE")
        ->check(values(border_names()));
    add("--border-color", options.border_color, "Colour of borders and lines instead of their own", "COLOR");
    add("--border-width", options.border_width, "Width of borders and lines, 1 by default", "PIXELS")->check(between(1, 1000));
    CLI::Option* const casing = add("--casing", options.casing, "Colour of a casing on both sides of borders and lines", "COLOR");
    add("--casing-width", options.casing_width, "Width of the casing on each side, 2 by default", "PIXELS")
        ->needs(casing)
        ->check(between(1, 1000));
    add("--marker", options.marker, "Points, disc by default", "SYMBOL")->check(values(symbol_names()));
    add("--marker-size", options.marker_size, "Size of points, 7 by default", "PIXELS")->check(between(1, 1000));
    add("--marker-color", options.marker_color, "Colour of points", "COLOR");
    CLI::Option* const labels =
        command.add_flag("--labels", options.labels, "Names of shapes where there is room for them")->group(option_group);
    add("--label-size", options.label_size, "Size of letters, 12 by default", "PIXELS")->needs(labels)->check(between(4, 1000));
    add("--label-color", options.label_color, "Colour of letters", "COLOR")->needs(labels);
    add("--font", options.font, "Font of labels: TrueType, OpenType and others", "FONT")->needs(labels);
    CLI::Option* const overlay = add("--overlay", options.overlay, "Another map to draw over this one", "MAP");
    add("--overlay-color", options.overlay_color, "Colour of its faces, lines and points", "COLOR")->needs(overlay);
    add("--merge", options.merge, "How the overlay's colours combine with those below, bit by bit, as inks do", "RULE")
        ->needs(overlay)
        ->check(one_of({"and"}));
}

void refuse_options_of_other_kind(const CLI::App& command, const drawing::Input& input) {
    const bool map = drawing::is_map(input);
    for (const CLI::Option* option : command.get_options()) {
        const std::string& group = option->get_group();
        const bool of_maps = group == option_group, of_models = group.ends_with(" of models");
        if (option->count() > 0 && (map ? of_models : of_maps)) {
            std::string message = option->get_name();
            message += map ? ": expected a model, found " : ": expected a map or drawing, found ";
            throw drawing::Usage_Error(message + input.name);
        }
    }
}

void check_map_options(const Model_Options& options, const Map_Options& map_options, const drawing::Input& input) {
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
    if (map_options.overlay == "-" && input.name == drawing::name_of_input("-")) {
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
    const VT_RGB32 background = options.is_transparent() ? VT_RGB32{255, 255, 255, 255} : background_of(options);
    auto scene = std::make_unique<Map_Scene>(input, map_settings_of(map_options), background, options.limits);
    for (const std::string& warning : scene->warnings()) {
        if (options.strict) {
            throw drawing::Usage_Error(warning);
        }
        warn(warning);
    }
    return scene;
}

} // namespace vorna::app
