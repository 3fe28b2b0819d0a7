// What the commands that draw a model have in common.
#include "app/commands/model_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <sstream>
#include <utility>

#include "app/cli/color_option.h"
#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/commands/option_choices.h"
#include "drawing/files/memory.h"
#include "drawing/image/color_name.h"
#include "drawing/image/palette.h"
#include "drawing/job/formats.h"
#include "drawing/model/model_reader.h"

namespace vorna::app {
namespace {

const Choices<drawing::model::Shading> shadings{
    {"auto", drawing::model::Shading::automatic},      {"gouraud", drawing::model::Shading::gouraud},
    {"flat", drawing::model::Shading::flat},           {"textured", drawing::model::Shading::textured},
    {"wireframe", drawing::model::Shading::wireframe}, {"hidden-line", drawing::model::Shading::hidden_line}};
const Choices<drawing::model::Culling> cullings{{"none", drawing::model::Culling::none}, {"back", drawing::model::Culling::back}};
const Choices<int> color_bits{{"32", 32}, {"8", 8}};

VT_Vector_D parsed_direction(const std::string& text) {
    VT_Vector_D direction;
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    char first_comma = 0, second_comma = 0;
    stream >> direction.x >> first_comma >> direction.y >> second_comma >> direction.z;
    const double squared = direction.x * direction.x + direction.y * direction.y + direction.z * direction.z;
    if (!stream || !(stream >> std::ws).eof() || first_comma != ',' || second_comma != ',' || !std::isfinite(squared) ||
        squared == 0) {
        throw drawing::Usage_Error("--light: expected a direction x,y,z, found '" + text + "'");
    }
    return direction;
}

// Levels of red, green and blue; nothing when the text has another form.
std::optional<VT_Int_RGB> parsed_levels(const std::string& text) {
    std::array<std::int32_t, 3> levels{};
    const char *place = text.data(), *const end = place + text.size();
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const auto [stop, error] = std::from_chars(place, end, levels[i]);
        if (error != std::errc{} || (i < 2 ? stop == end || *stop != 'x' : stop != end)) {
            return std::nullopt;
        }
        place = stop + 1;
    }
    return VT_Int_RGB{levels[0], levels[1], levels[2]};
}

void warn(const Model_Options& options, const std::vector<std::string>& warnings) {
    for (const std::string& warning : warnings) {
        if (options.strict) {
            throw drawing::Usage_Error(warning);
        }
        app::warn(warning);
    }
}

} // namespace

Option model_argument(Model_Options& options, const std::string& inputs) {
    return {.names = {"model"}, .value = text_value("MODEL"), .text = inputs, .target = &options.models, .is_required = true};
}

void add_model_options(std::vector<Option>& table, Model_Options& options) {
    const auto add = [&table](const char* group, Applies_To applies_to, std::initializer_list<Option> list) {
        for (Option option : list) {
            option.group = group;
            option.applies_to = applies_to;
            table.push_back(std::move(option));
        }
    };
    add("Input", Applies_To::every_input,
        {{.names = {"--input-format"},
          .value = text_value("SUFFIX"),
          .text = "What the files are, as a suffix: obj, ply, stl, gltf, json and so on; by default their names or contents tell",
          .target = &options.input_format}});
    add_camera_options(table, options);
    add("Drawing of models", Applies_To::models,
        {choice("--shading", options.picture.shading,
                "How colours run over faces; auto: textured where the model has images or "
                "translucent materials and there is no --color, else gouraud",
                shadings, "KIND"),
         {.names = {"--edges"},
          .value = optional_value("all", suggested_value("KIND", {"all", "feature"})),
          .text = "Draw the edges of polygons over them, or outlines, borders and sharp bends only",
          .target = &options.edges},
         {.names = {"--edge-color"}, .value = text_value("COLOR"), .text = "Colour of edges", .target = &options.edge_color},
         {.names = {"--line-width"},
          .value = whole_value("PIXELS", 1, drawing::model::largest_point),
          .text = "Width of the model's own lines",
          .target = &options.line_width,
          .by_default = std::to_string(options.line_width)},
         {.names = {"--point-size"},
          .value = whole_value("PIXELS", 1, drawing::model::largest_point),
          .text = "Size of the model's points; 2 to 8 without it, fewer points are larger",
          .target = &options.point_size},
         {.names = {"--axes"}, .text = "Show where the model's axes point", .target = &options.axes},
         {.names = {"--scale-bar"},
          .text = "Show a round length in the model's units; --map-scale is that of maps",
          .target = &options.scale_bar,
          .needs = {"--ortho"}}});
    add("Drawing", Applies_To::every_input,
        {{.names = {"--antialias"}, .text = "Smooth lines; --supersample smooths everything", .target = &options.antialias}});
    add("Drawing of models", Applies_To::models,
        {choice("--cull", options.picture.culling, "Faces to leave out, as seen by the viewer", cullings, "FACES")});
    add("Drawing", Applies_To::every_input,
        {{.names = {"--background"},
          .value = suggested_value("COLOR", {"none", "gradient"}),
          .text = "Colour behind what is drawn; none is transparent, gradient light grey, TOP,BOTTOM a gradient of two colours; "
                  "by default a gradient behind models, and white behind hidden lines, with a palette and behind maps",
          .target = &options.background}});
    add("Drawing of models", Applies_To::models,
        {{.names = {"--color"},
          .value = text_value("COLOR"),
          .text = "Colour of the model instead of its own",
          .target = &options.color},
         {.names = {"--crease"},
          .value = number_value("DEGREES", 0, 180),
          .text = "Shade faces as one surface up to this angle between them, where the model gives no normals: 0 is flat, 180 "
                  "smooth everywhere; by default 30, or as smoothing groups of the model say",
          .target =
              [&options](const std::string& text) {
                  std::from_chars(text.data(), text.data() + text.size(), options.crease.emplace());
              }},
         {.names = {"--light"},
          .value = text_value("X,Y,Z"),
          .text = "Direction towards the light: right, up, towards the viewer",
          .target = &options.light,
          .by_default = options.light},
         {.names = {"--specular"},
          .value = number_value("FACTOR", 0, 10),
          .text = "Strength of highlights: 0 is none",
          .target = &options.picture.specular,
          .by_default = text_of(options.picture.specular)}});
    add("Drawing", Applies_To::every_input,
        {choice("--colors", options.colors, "Bits a pixel, 8 through a palette", color_bits, "BITS")});
    add("Drawing of models", Applies_To::models,
        {{.names = {"--palette"},
          .value = text_value("PALETTE"),
          .text = "Palette of 8-bit pixels: cube (6x6x6 and greys), levels of red, green and blue as 8x8x4, or a file: PNG "
                  "with a palette, GIMP palette, lines of #rrggbb",
          .target = &options.palette}});
    add("Input", Applies_To::every_input,
        {{.names = {"--strict"},
          .text = "Fail when a file of materials, or a texture to be drawn, cannot be read, instead of warning",
          .target = &options.strict},
         memory_option(options.max_memory),
         {.names = {"--allow-outside"},
          .text = "Read materials, images and buffers that lie outside of a model's folder too",
          .target = &options.allow_outside}});
}

std::vector<std::string> arguments_of(const Model_Options& options) {
    const Model_Options defaults;
    std::vector<std::string> arguments;
    const auto add = [&](const char* name, const std::string& value, const std::string& by_default) {
        if (value != by_default) {
            arguments.push_back(std::string(name) + "=" + value);
        }
    };
    const auto add_chosen = [&](const char* name, const auto& value, const auto& choices) {
        add(name, name_of(value, choices), choices.front().first);
    };
    const auto add_flag = [&](const char* name, bool on) {
        if (on) {
            arguments.emplace_back(name);
        }
    };
    for (const std::string& file : options.models) {
        const bool is_like_option = file.size() > 1 && file.front() == '-';
        arguments.push_back((is_like_option ? "./" : "") + file);
    }
    add("--input-format", options.input_format, "");
    const std::vector<std::string> camera = camera_arguments_of(options);
    arguments.insert(arguments.end(), camera.begin(), camera.end());
    add_chosen("--shading", options.picture.shading, shadings);
    add("--edges", options.edges, defaults.edges);
    add("--edge-color", options.edge_color, defaults.edge_color);
    add("--line-width", std::to_string(options.line_width), std::to_string(defaults.line_width));
    if (options.point_size > 0) {
        add("--point-size", std::to_string(options.point_size), "");
    }
    add_flag("--axes", options.axes);
    add_flag("--scale-bar", options.scale_bar && options.orthographic);
    add_flag("--antialias", options.antialias);
    add_chosen("--cull", options.picture.culling, cullings);
    add("--background", options.background, defaults.background);
    add("--color", options.color, defaults.color);
    if (options.crease) {
        add("--crease", text_of(*options.crease), "");
    }
    add("--light", options.light, defaults.light);
    add("--specular", text_of(options.picture.specular), text_of(defaults.picture.specular));
    add("--palette", options.palette, "");
    if (options.palette.empty() && options.colors == 8) {
        add("--colors", "8", "");
    }
    add_flag("--strict", options.strict);
    add_flag("--allow-outside", options.allow_outside);
    add("--max-memory", options.max_memory, "");
    return arguments;
}

std::shared_ptr<drawing::Load_Limits> limits_of(const Model_Options& options, unsigned threads) {
    return std::make_shared<drawing::Load_Limits>(drawing::parsed_limit(options.max_memory), options.allow_outside, threads);
}

VT_Int_Pair parsed_pair(const std::string& text, std::int32_t most, const std::string& expected) {
    VT_Int_Pair size;
    const char* end = text.data() + text.size();
    const auto [x, width_error] = std::from_chars(text.data(), end, size.x);
    if (width_error == std::errc{} && x != end && *x == 'x') {
        const auto [stop, height_error] = std::from_chars(x + 1, end, size.y);
        if (height_error == std::errc{} && stop == end && size.x >= 1 && size.x <= most && size.y >= 1 && size.y <= most) {
            return size;
        }
    }
    throw drawing::Usage_Error(expected + ", found '" + text + "'");
}

std::vector<drawing::Input> open_inputs(const Model_Options& options) {
    if (std::ranges::count(options.models, "-") > 1) {
        throw drawing::Usage_Error("-: expected standard input once, found it twice");
    }
    std::vector<drawing::Input> inputs;
    for (const std::string& file : options.models) {
        inputs.push_back(drawing::open_input(file, options.input_format, *options.limits));
    }
    return inputs;
}

bool draws_indices(const Model_Options& options) {
    return options.palette.empty() ? options.colors == 8 : options.palette == "cube" || parsed_levels(options.palette);
}

Palette_Choice palette_of(const Model_Options& options) {
    Palette_Choice choice;
    if (options.palette.empty() || options.palette == "cube") {
        if (draws_indices(options)) {
            choice.drawn = new VT_Palette;
        }
    } else if (const auto levels = parsed_levels(options.palette)) {
        constexpr std::int32_t most = 256;
        const auto [red, green, blue] = *levels;
        const bool fits =
            std::min({red, green, blue}) >= 2 && std::max({red, green, blue}) <= most / 4 && red * green * blue <= most;
        if (!fits) {
            throw drawing::Usage_Error("--palette: expected 2 levels or more of each colour and 256 colours at most, found " +
                                       options.palette);
        }
        choice.drawn = drawing::cube_palette(*levels);
    } else {
        if (options.palette == "-" && std::ranges::count(options.models, "-") > 0) {
            throw drawing::Usage_Error("--palette -: expected a file, found standard input, which is a model");
        }
        choice.mapped = drawing::read_palette(options.palette, *options.limits);
    }
    if (options.colors == 32 && !options.palette.empty()) {
        throw drawing::Usage_Error("--palette: expected 8 bits a pixel, found --colors 32");
    }
    return choice;
}

// Gradients are dithered where pixels have palette indices, and drawings of lines have them on paper.
drawing::Background background_of(const Model_Options& options) {
    const std::string& text = options.background;
    if (text.empty()) {
        const bool is_white =
            !options.palette.empty() || options.colors == 8 || options.picture.shading == drawing::model::Shading::hidden_line;
        return is_white ? drawing::Background() : drawing::model_gradient;
    }
    if (text == "gradient") {
        return drawing::model_gradient;
    }
    const std::size_t comma = text.find(',');
    if (comma == text.npos) {
        return parsed_color("--background", text, {"none", "gradient", "TOP,BOTTOM"});
    }
    const auto top = drawing::color_named(text.substr(0, comma)), bottom = drawing::color_named(text.substr(comma + 1));
    if (!top || !bottom) {
        throw drawing::Usage_Error(
            "--background: expected two colours TOP,BOTTOM, each #rgb, #rrggbb or a colour's name, found '" + text + "'");
    }
    return {*top, *bottom};
}

std::optional<drawing::Background> drawn_background_of(const Model_Options& options) {
    return options.is_transparent() ? std::nullopt : std::optional(background_of(options));
}

VT_RGB32 map_background_of(const Model_Options& options) {
    if (options.background == "gradient" || options.background.find(',') != std::string::npos) {
        throw drawing::Usage_Error("--background: expected one colour or none behind a map or drawing, found '" +
                                   options.background + "'");
    }
    return parsed_color("--background", options.background.empty() ? "white" : options.background, {"none"});
}

drawing::Model_Style style_of(const Model_Options& options) {
    drawing::Model_Style style;
    style.look = options.picture;
    style.look.light = parsed_direction(options.light);
    style.line_width = options.line_width;
    style.point_size = options.point_size;
    style.axes = options.axes;
    style.scale_bar = options.scale_bar;
    if (!options.edges.empty()) {
        if (options.edges != "all" && options.edges != "feature") {
            throw drawing::Usage_Error("--edges: expected all or feature, found '" + options.edges + "'");
        }
        style.edges = options.edges == "feature" ? drawing::model::Edge_Choice::features : drawing::model::Edge_Choice::all;
    }
    if (!options.edge_color.empty()) {
        style.edge_color = parsed_color("--edge-color", options.edge_color);
    }
    if (!options.color.empty()) {
        style.color = parsed_color("--color", options.color);
    }
    return style;
}

drawing::Model_Look look_of(const Model_Options& options, bool has_lines, VT_Reference<const VT_Palette> palette) {
    if (!options.has_edges()) {
        for (const auto& [given, name] :
             {std::pair(options.antialias && !has_lines, "--antialias"), {!options.edge_color.empty(), "--edge-color"}}) {
            if (given) {
                throw drawing::Usage_Error(std::string(name) +
                                           ": expected --edges, --shading wireframe or hidden-line beside it, found none");
            }
        }
    }
    if (options.antialias && draws_indices(options)) {
        throw drawing::Usage_Error("--antialias: expected 32 bits a pixel, found " +
                                   (options.palette.empty() ? "--colors 8" : "--palette " + options.palette));
    }
    return drawing::look_of(style_of(options), drawn_background_of(options), options.antialias, std::move(palette));
}

drawing::model::Mesh load_mesh(const Model_Options& options, std::vector<drawing::Input> inputs, bool empty) {
    const std::optional<drawing::model::Section> section = section_of(options);
    const std::string name = inputs.front().name;
    drawing::model::Mesh mesh = drawing::model::load_models(inputs, *options.limits, empty, options.crease);
    std::ranges::for_each(mesh.notes, [](const std::string& note) { app::warn(note); });
    warn(options, mesh.warnings);
    if (section && !mesh.is_empty()) {
        drawing::model::cut_open(mesh, *section, name, *options.limits);
    }
    return mesh;
}

std::unique_ptr<drawing::model::Scene> make_faces(const Model_Options& options, const drawing::model::Mesh& mesh) {
    std::vector<std::string> warnings;
    const drawing::model::Facing facing(mesh, options.limits->threads());
    auto faces = drawing::make_faces(mesh, facing, style_of(options), *options.limits, warnings);
    warn(options, warnings);
    return faces;
}

drawing::Model_Parts make_model(const Model_Options& options, const drawing::model::Mesh& mesh) {
    if (options.picture.tint == drawing::model::Tint::numbers) {
        drawing::check_countable(mesh); // files have 24 bits of a number
    }
    std::vector<std::string> warnings;
    drawing::Model_Parts parts =
        drawing::make_parts(mesh, style_of(options), drawn_background_of(options), *options.limits, warnings);
    warn(options, warnings);
    return parts;
}

} // namespace vorna::app
