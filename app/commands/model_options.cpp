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
#include "drawing/files/memory.h"
#include "drawing/image/palette.h"
#include "drawing/job/formats.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/vectors.h"

namespace vorna::app {
namespace {

// The first one is the default.
template <class Value> using Choices = std::vector<std::pair<std::string, Value>>;

const Choices<drawing::model::View> views{{"iso", drawing::model::View::iso},      {"front", drawing::model::View::front},
                                          {"back", drawing::model::View::back},    {"left", drawing::model::View::left},
                                          {"right", drawing::model::View::right},  {"top", drawing::model::View::top},
                                          {"bottom", drawing::model::View::bottom}};
const Choices<drawing::model::Up_Axis> up_axes{
    {"y", drawing::model::Up_Axis::y},        {"z", drawing::model::Up_Axis::z},        {"x", drawing::model::Up_Axis::x},
    {"-y", drawing::model::Up_Axis::minus_y}, {"-z", drawing::model::Up_Axis::minus_z}, {"-x", drawing::model::Up_Axis::minus_x}};
const Choices<drawing::model::Shading> shadings{
    {"auto", drawing::model::Shading::automatic},      {"gouraud", drawing::model::Shading::gouraud},
    {"flat", drawing::model::Shading::flat},           {"textured", drawing::model::Shading::textured},
    {"wireframe", drawing::model::Shading::wireframe}, {"hidden-line", drawing::model::Shading::hidden_line}};
const Choices<drawing::model::Culling> cullings{{"none", drawing::model::Culling::none}, {"back", drawing::model::Culling::back}};
const Choices<int> color_bits{{"32", 32}, {"8", 8}};

template <class Chosen>
Option choice(const char* name, Chosen& target, const char* text, const Choices<Chosen>& choices, const char* word) {
    std::vector<std::string> names;
    names.reserve(choices.size());
    for (const auto& [known, value] : choices) {
        names.push_back(known);
    }
    const auto choose = [&target, &choices](const std::string& given) {
        target = std::ranges::find(choices, given, [](const auto& known) { return known.first; })->second;
    };
    return {.names = {name}, .value = choice_value(word, names), .text = text, .target = choose, .by_default = names.front()};
}

// An axis may be given as +y for y.
Option up_axis(drawing::model::Up_Axis& target) {
    const auto without_plus = [](const std::string& text) { return text.starts_with('+') ? text.substr(1) : text; };
    Option option = choice("--up", target, "The model's axis that points up", up_axes, "AXIS");
    option.value.problem = [=, problem = option.value.problem](const std::string& text) { return problem(without_plus(text)); };
    option.target = [=, choose = std::get<std::function<void(const std::string&)>>(option.target)](const std::string& text) {
        choose(without_plus(text));
    };
    return option;
}

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

// Eye and target, and the direction that points up, if given. Coordinates of more than a double's cube root are no place.
drawing::model::Aim parsed_aim(const std::string& text) {
    using drawing::model::operator-;
    std::array<double, 9> numbers{};
    std::size_t count = 0;
    const char *next = text.data(), *const end = next + text.size();
    for (; count < numbers.size(); ++count) {
        const auto [stop, error] = std::from_chars(next, end, numbers[count]);
        if (error != std::errc{} || !(std::abs(numbers[count]) < 1e100)) {
            break;
        }
        next = stop;
        if (next == end || *next != ',') {
            ++count;
            break;
        }
        ++next;
    }
    const auto vector = [&](std::size_t i) { return VT_Vector_D{numbers[i], numbers[i + 1], numbers[i + 2]}; };
    const drawing::model::Aim aim{vector(0), vector(3), vector(6)};
    if ((count != 6 && count != 9) || next != end || !(drawing::model::length(aim.eye - aim.target) > 0)) {
        throw drawing::Usage_Error(
            "--camera: expected two places x,y,z,x,y,z, of the eye and of what it looks at, and for a direction that "
            "points up another x,y,z, found '" +
            text + "'");
    }
    return aim;
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

// A number that reads back as the same.
std::string text_of(double number) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string text_of(const drawing::model::Aim& aim) {
    std::string text;
    for (const VT_Vector_D& v : {aim.eye, aim.target, aim.up}) {
        for (const double coordinate : {v.x, v.y, v.z}) {
            text += (text.empty() ? "" : ",") + text_of(coordinate);
        }
    }
    return text;
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
    add("Camera of models", Applies_To::models,
        {choice("--view", options.camera.view, "Side to look at", views, "SIDE"),
         {.names = {"--camera"},
          .value = text_value("PLACES"),
          .text = "Instead of a side: places of the eye and of the middle of the image, X,Y,Z,X,Y,Z in the model's "
                  "coordinates, and three more numbers for the direction that points up if it is not the model's",
          .target = [&options](const std::string& text) { options.aim = parsed_aim(text); },
          .excludes = {"--view"}},
         {.names = {"--perspective"}, .text = "Near things are larger, as without --ortho"},
         {.names = {"--ortho"},
          .text = "Parallel lines stay parallel",
          .target = &options.orthographic,
          .excludes = {"--perspective"}},
         up_axis(options.camera.up),
         {.names = {"--zoom"},
          .value = number_value("N", 0.01, 1000),
          .text = "Enlarge the middle of the image",
          .target = &options.camera.zoom,
          .by_default = text_of(options.camera.zoom)}});
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
          .target = &options.point_size}});
    add("Drawing", Applies_To::every_input,
        {{.names = {"--antialias"}, .text = "Smooth lines; --supersample smooths everything", .target = &options.antialias}});
    add("Drawing of models", Applies_To::models,
        {choice("--cull", options.picture.culling, "Faces to leave out, as seen by the viewer", cullings, "FACES")});
    add("Drawing", Applies_To::every_input,
        {{.names = {"--background"},
          .value = text_value("COLOR"),
          .text = "Colour behind what is drawn, or none: transparent",
          .target = &options.background,
          .by_default = options.background}});
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
        const auto found = std::ranges::find(choices, value, [](const auto& choice) { return choice.second; });
        add(name, found->first, choices.front().first);
    };
    const auto add_flag = [&](const char* name, bool on) {
        if (on) {
            arguments.emplace_back(name);
        }
    };
    arguments = options.models;
    add("--input-format", options.input_format, "");
    if (options.aim) {
        add("--camera", text_of(*options.aim), "");
    } else {
        add_chosen("--view", options.camera.view, views);
    }
    add_flag("--ortho", options.orthographic);
    add_chosen("--up", options.camera.up, up_axes);
    add("--zoom", text_of(options.camera.zoom), text_of(defaults.camera.zoom));
    add_chosen("--shading", options.picture.shading, shadings);
    add("--edges", options.edges, defaults.edges);
    add("--edge-color", options.edge_color, defaults.edge_color);
    add("--line-width", std::to_string(options.line_width), std::to_string(defaults.line_width));
    if (options.point_size > 0) {
        add("--point-size", std::to_string(options.point_size), "");
    }
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

std::shared_ptr<drawing::Load_Limits> limits_of(const Model_Options& options) {
    return std::make_shared<drawing::Load_Limits>(drawing::parsed_limit(options.max_memory), options.allow_outside);
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
        choice.mapped = drawing::read_palette(options.palette, *options.limits);
    }
    if (options.colors == 32 && !options.palette.empty()) {
        throw drawing::Usage_Error("--palette: expected 8 bits a pixel, found --colors 32");
    }
    return choice;
}

VT_RGB32 background_of(const Model_Options& options) {
    return parsed_color("--background", options.background, {"none"});
}

drawing::Model_Style style_of(const Model_Options& options) {
    drawing::Model_Style style;
    style.picture = options.picture;
    style.picture.light = parsed_direction(options.light);
    style.line_width = options.line_width;
    style.point_size = options.point_size;
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
    const auto background = options.is_transparent() ? std::nullopt : std::optional(background_of(options));
    return drawing::look_of(style_of(options), background, options.antialias, std::move(palette));
}

drawing::model::Camera_Settings camera_settings_of(const Model_Options& options, const drawing::model::Mesh& mesh,
                                                   VT_Int_Pair size) {
    using drawing::model::Projection;
    drawing::model::Camera_Settings settings = options.camera;
    settings.projection = options.orthographic ? Projection::orthographic : Projection::perspective;
    settings.aim = options.aim;
    if (const auto placed = drawing::camera_of_mesh(settings, mesh, size)) {
        return *placed;
    }
    throw drawing::Usage_Error("--camera: expected two places apart and another direction that points up, found '" +
                               text_of(*options.aim) + "'");
}

drawing::model::Mesh load_mesh(const Model_Options& options, std::vector<drawing::Input> inputs, bool empty) {
    drawing::model::Mesh mesh = drawing::model::load_models(inputs, *options.limits, empty, options.crease);
    warn(options, mesh.warnings);
    return mesh;
}

std::unique_ptr<drawing::model::Scene> make_faces(const Model_Options& options, const drawing::model::Mesh& mesh) {
    std::vector<std::string> warnings;
    auto faces = drawing::make_faces(mesh, style_of(options), *options.limits, warnings);
    warn(options, warnings);
    return faces;
}

drawing::Model_Parts make_model(const Model_Options& options, const drawing::model::Mesh& mesh) {
    std::vector<std::string> warnings;
    drawing::Model_Parts parts = drawing::make_parts(mesh, style_of(options), *options.limits, warnings);
    warn(options, warnings);
    return parts;
}

} // namespace vorna::app
