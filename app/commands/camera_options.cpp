// Where a model is seen from, and where it is cut open.
#include "app/commands/camera_options.h"

#include <cmath>
#include <span>
#include <string_view>

#include "app/commands/option_choices.h"
#include "drawing/files/usage_error.h"
#include "drawing/job/formats.h"
#include "drawing/job/model_style.h"
#include "drawing/model/vectors.h"

namespace vorna::app {
namespace {

using drawing::model::Aim;
using drawing::model::Up_Axis;
using drawing::model::View;

const Choices<View> views{{"iso", View::iso},     {"front", View::front}, {"back", View::back},    {"left", View::left},
                          {"right", View::right}, {"top", View::top},     {"bottom", View::bottom}};
const Choices<Up_Axis> up_axes{{"y", Up_Axis::y},        {"z", Up_Axis::z},        {"x", Up_Axis::x},
                               {"-y", Up_Axis::minus_y}, {"-z", Up_Axis::minus_z}, {"-x", Up_Axis::minus_x}};

// An axis may be given as +y for y.
Option up_axis(Camera_Options& options) {
    const auto without_plus = [](const std::string& text) { return text.starts_with('+') ? text.substr(1) : text; };
    Option option = choice("--up", options.camera.up,
                           "The model's axis that points up; by default z for STL, OFF and Blender, else y", up_axes, "AXIS");
    option.value.problem = [=, problem = option.value.problem](const std::string& text) { return problem(without_plus(text)); };
    option.target = [=, &options,
                     choose = std::get<std::function<void(const std::string&)>>(option.target)](const std::string& text) {
        choose(without_plus(text));
        options.has_up = true;
    };
    option.by_default.clear();
    return option;
}

// Reads numbers with commas between them. Returns how many there are, 0 when the text holds anything else. Coordinates of more
// than a double's cube root are no place.
std::size_t read_numbers(std::string_view text, std::span<double> numbers) {
    const char *next = text.data(), *const end = next + text.size();
    for (std::size_t count = 0; count < numbers.size();) {
        const auto [stop, error] = std::from_chars(next, end, numbers[count]);
        if (error != std::errc{} || !(std::abs(numbers[count]) < 1e100)) {
            return 0;
        }
        ++count;
        if (stop == end) {
            return count;
        }
        if (*stop != ',') {
            return 0;
        }
        next = stop + 1;
    }
    return 0;
}

// Eye and target, and the direction that points up, if given.
Aim parsed_aim(const std::string& text) {
    using drawing::model::operator-;
    std::array<double, 9> numbers{};
    const std::size_t count = read_numbers(text, numbers);
    const auto vector = [&](std::size_t i) { return VT_Vector_D{numbers[i], numbers[i + 1], numbers[i + 2]}; };
    const Aim aim{vector(0), vector(3), vector(6)};
    if ((count != 6 && count != 9) || !(drawing::model::length(aim.eye - aim.target) > 0)) {
        throw drawing::Usage_Error(
            "--camera: expected two places x,y,z,x,y,z, of the eye and of what it looks at, and for a direction that "
            "points up another x,y,z, found '" +
            text + "'");
    }
    if (count == 9 && !drawing::model::is_upright(aim)) {
        throw drawing::Usage_Error("--camera: expected a direction that points up across the line of sight, found '" + text +
                                   "'");
    }
    return aim;
}

std::string aim_text(const Aim& aim) {
    std::string text;
    std::vector<VT_Vector_D> vectors{aim.eye, aim.target};
    if (drawing::model::length(aim.up) > 0) {
        vectors.push_back(aim.up);
    }
    for (const VT_Vector_D& v : vectors) {
        for (const double coordinate : {v.x, v.y, v.z}) {
            text += (text.empty() ? "" : ",") + text_of(coordinate);
        }
    }
    return text;
}

// An axis, an equals sign and the place where the axis is cut. Nothing for another form.
std::optional<drawing::model::Section> axis_section(std::string_view text) {
    const double sign = text.starts_with('-') ? -1 : 1;
    text.remove_prefix(sign < 0 ? 1 : 0);
    std::array<double, 1> place{};
    if (text.size() < 3 || text[1] != '=' || read_numbers(text.substr(2), place) != 1) {
        return std::nullopt;
    }
    const auto along = [&](char axis) { return text[0] == axis ? sign : 0; };
    const VT_Vector_D normal{along('x'), along('y'), along('z')};
    return drawing::model::length(normal) > 0 ? std::optional(drawing::model::Section{normal, sign * place[0]}) : std::nullopt;
}

} // namespace

void add_camera_options(std::vector<Option>& table, Camera_Options& options) {
    const std::initializer_list<Option> list{
        choice("--view", options.camera.view, "Side to look at", views, "SIDE"),
        {.names = {"--camera"},
         .value = text_value("PLACES"),
         .text = "Instead of a side: places of the eye and of the middle of the image, X,Y,Z,X,Y,Z in the model's "
                 "coordinates, and three more numbers for the direction that points up if it is not the model's",
         .target = [&options](const std::string& text) { options.aim = parsed_aim(text); },
         .excludes = {"--view"}},
        {.names = {"--perspective"}, .text = "Near things are larger, as without --ortho"},
        {.names = {"--ortho"},
         .text = "Parallel lines stay parallel; the view iso is isometric then",
         .target = &options.orthographic,
         .excludes = {"--perspective"}},
        {.names = {"--fov"},
         .value = number_value("DEGREES", 1, 150),
         .text = "Angle between the lower and the upper border of the image, 30 by default",
         .target = &options.field_of_view,
         .excludes = {"--ortho"}},
        up_axis(options),
        {.names = {"--zoom"},
         .value = number_value("N", 0.01, 1000),
         .text = "Enlarge the middle of the image",
         .target = &options.camera.zoom,
         .by_default = text_of(options.camera.zoom)},
        {.names = {"--section"},
         .value = text_value("PLANE"),
         .text = "Remove what lies beyond a plane: x=2 what has a larger x, -x=2 what has a smaller one; X,Y,Z,OFFSET where X "
                 "times x and so on is more than OFFSET",
         .target = &options.section}};
    for (Option option : list) {
        option.group = "Camera of models";
        option.applies_to = Applies_To::models;
        table.push_back(std::move(option));
    }
}

std::vector<std::string> camera_arguments_of(const Camera_Options& options) {
    std::vector<std::string> arguments;
    const auto add = [&arguments](bool differs, const std::string& text) {
        if (differs) {
            arguments.push_back(text);
        }
    };
    if (options.aim) {
        add(true, "--camera=" + aim_text(*options.aim));
    } else {
        add(options.camera.view != views.front().second, "--view=" + name_of(options.camera.view, views));
    }
    add(options.orthographic, "--ortho");
    add(options.field_of_view > 0 && !options.orthographic, "--fov=" + text_of(options.field_of_view));
    add(options.has_up, "--up=" + name_of(options.camera.up, up_axes));
    add(options.camera.zoom != Camera_Options().camera.zoom, "--zoom=" + text_of(options.camera.zoom));
    add(!options.section.empty(), "--section=" + options.section);
    return arguments;
}

void choose_up_axis(Camera_Options& options, const std::vector<drawing::Input>& inputs) {
    if (!options.has_up) {
        options.camera.up = drawing::up_axis_of(inputs.front());
    }
}

drawing::model::Camera_Settings camera_settings_of(const Camera_Options& options, const drawing::model::Mesh& mesh,
                                                   VT_Int_Pair size) {
    using drawing::model::Projection;
    drawing::model::Camera_Settings settings = options.camera;
    settings.projection = options.orthographic ? Projection::orthographic : Projection::perspective;
    settings.aim = options.aim;
    if (options.field_of_view > 0 && !options.orthographic) {
        settings.half_tangent = drawing::model::half_tangent_of(options.field_of_view);
    }
    if (const auto placed = drawing::camera_of_mesh(settings, mesh, size)) {
        return *placed;
    }
    throw drawing::Usage_Error(
        "--camera: expected two places apart, not one above the other, or another direction that points up "
        "behind them, found '" +
        aim_text(*options.aim) + "'");
}

std::optional<drawing::model::Section> section_of(const Camera_Options& options) {
    if (options.section.empty()) {
        return std::nullopt;
    }
    if (const auto section = axis_section(options.section)) {
        return section;
    }
    std::array<double, 4> numbers{};
    if (read_numbers(options.section, numbers) == 4) {
        const VT_Vector_D normal{numbers[0], numbers[1], numbers[2]};
        if (const double size = drawing::model::length(normal); size > 0 && std::isfinite(size)) {
            return drawing::model::Section{normal, numbers[3]};
        }
    }
    throw drawing::Usage_Error(
        "--section: expected an axis and a place as x=2 or -z=0.5, or X,Y,Z,OFFSET with a direction that is "
        "not 0, found '" +
        options.section + "'");
}

} // namespace vorna::app
