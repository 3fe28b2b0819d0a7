// Models for JavaScript: read from files of the module's memory or from arrays, and drawn from any camera.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>

#include "drawing/drawing.h"
#include "web/src/answer.h"
#include "web/src/drawings.h"

namespace vorna::web {
namespace {

using namespace drawing::model;
using drawing::Model;
using drawing::Model_Images;
using drawing::Model_View;

constexpr Choice<Shading> shadings[] = {{"auto", Shading::automatic},      {"flat", Shading::flat},
                                        {"gouraud", Shading::gouraud},     {"textured", Shading::textured},
                                        {"wireframe", Shading::wireframe}, {"hidden-line", Shading::hidden_line}};
constexpr Choice<Tint> tints[] = {{"lit", Tint::lit}, {"own", Tint::own}, {"normals", Tint::normals}};
constexpr Choice<Edge_Choice> edge_choices[] = {{"all", Edge_Choice::all}, {"feature", Edge_Choice::features}};
constexpr Choice<bool> looks[] = {{"plain", false}, {"studio", true}};
constexpr Choice<View> views[] = {{"iso", View::iso},     {"front", View::front}, {"back", View::back},    {"left", View::left},
                                  {"right", View::right}, {"top", View::top},     {"bottom", View::bottom}};
constexpr Choice<Up_Axis> up_axes[] = {{"y", Up_Axis::y},        {"z", Up_Axis::z},        {"x", Up_Axis::x},
                                       {"-y", Up_Axis::minus_y}, {"-z", Up_Axis::minus_z}, {"-x", Up_Axis::minus_x}};

VT_Vector_D vector_of(const std::array<double, 3>& numbers) {
    return {numbers[0], numbers[1], numbers[2]};
}

Model_View view_of(Options& options) {
    Model_View view;
    options.choice("shading", view.look.shading, shadings);
    options.choice("tint", view.look.tint, tints);
    bool cull = false;
    options.flag("cull", cull);
    view.look.culling = cull ? Culling::back : Culling::none;
    if (const auto light = options.numbers<3>("light")) {
        view.look.light = vector_of(*light);
    }
    options.number("specular", view.look.specular);
    if (const json* const edges = options.find("edges"); edges && edges->is_string()) {
        view.edges = Options::chosen("edges", *edges, edge_choices);
    } else if (bool all = false; options.flag("edges", all), all) {
        view.edges = Edge_Choice::all;
    }
    options.color("edgeColor", view.edge_color);
    options.color("color", view.color);
    options.number("lineWidth", view.line_width);
    options.number("pointSize", view.point_size);
    options.flag("axes", view.axes);
    options.flag("scaleBar", view.scale_bar);
    options.choice("look", view.studio, looks);
    return view;
}

Camera_Settings camera_of(Options& options, Up_Axis up) {
    Camera_Settings camera;
    camera.up = up;
    options.choice("view", camera.view, views);
    options.choice("up", camera.up, up_axes);
    bool orthographic = false;
    options.flag("orthographic", orthographic);
    camera.projection = orthographic ? Projection::orthographic : Projection::perspective;
    options.number("zoom", camera.zoom);
    if (const json* const fov = options.find("fov")) {
        const auto degrees = Options::number_of<double>("fov", *fov);
        Options::expect(degrees >= 1 && degrees <= 150, "fov", "1 to 150 degrees", *fov);
        camera.half_tangent = drawing::half_tangent_of_view(degrees);
    }
    // Eye and target, and where it is not the axis that points up, the direction that does.
    if (const json* const aim = options.find("camera")) {
        Options::expect(aim->is_array() && (aim->size() == 6 || aim->size() == 9), "camera", "6 or 9 numbers", *aim);
        std::array<double, 9> numbers{};
        for (std::size_t i = 0; i < aim->size(); ++i) {
            numbers[i] = Options::number_of<double>("camera", (*aim)[i]);
        }
        const auto vector_from = [&numbers](std::size_t at) {
            return VT_Vector_D{numbers[at], numbers[at + 1], numbers[at + 2]};
        };
        camera.aim = Aim{vector_from(0), vector_from(3), aim->size() == 9 ? vector_from(6) : up_direction(camera.up)};
    }
    return camera;
}

// What was drawn last stays ready: only the camera may change until the next options differ.
struct Scene {
    explicit Scene(Model whole) : model(std::make_unique<Model>(std::move(whole))) {}

    std::unique_ptr<Model> model;
    std::unique_ptr<Model_Images> images;
    std::string drawn_with;
};

Handles<Scene> scenes;

template <class Element> std::vector<Element> list_at(const json& members, const char* name) {
    const auto found = members.find(name);
    if (found == members.end()) {
        return {};
    }
    const auto* const first = reinterpret_cast<const Element*>((*found)[0].get<std::uintptr_t>());
    return {first, first + (*found)[1].get<std::size_t>()};
}

void require_corners_below(const std::vector<std::uint32_t>& corners, std::size_t count) {
    for (const std::uint32_t corner : corners) {
        if (corner >= count) {
            throw drawing::Usage_Error("indices: expected numbers of vertices from 0 to " +
                                       std::to_string(count == 0 ? 0 : count - 1) + ", found " + std::to_string(corner));
        }
    }
}

// Addresses and numbers of elements, as web/package/index.js has copied and checked them.
Mesh mesh_at(const json& members) {
    Mesh mesh;
    mesh.positions = list_at<VT_Vector>(members, "positions");
    mesh.normals = list_at<VT_Vector>(members, "normals");
    mesh.colors = list_at<VT_RGB32>(members, "colors");
    mesh.triangles = list_at<std::uint32_t>(members, "indices");
    require_corners_below(mesh.triangles, mesh.positions.size());
    return mesh;
}

const char* up_name(Up_Axis up) {
    return std::ranges::find(up_axes, up, &Choice<Up_Axis>::value)->name;
}

void describe(Answers& all, std::int32_t handle) {
    const Model& model = *scenes[handle].model;
    all.answer.handle = handle;
    all.text = text_of({{"triangles", model.triangle_count()},
                        {"lines", model.line_count()},
                        {"points", model.point_count()},
                        {"center", {model.center().x, model.center().y, model.center().z}},
                        {"radius", model.radius()},
                        {"up", up_name(model.up_axis())},
                        {"warnings", model.warnings()}});
}

// Options without those of the camera, which are read first.
struct Request {
    Model_View view;
    drawing::Image_Settings settings;

    Request(const json& values, Up_Axis up) {
        Options options(values);
        view = view_of(options);
        view.camera = camera_of(options, up);
        settings = image_settings_of(options);
        options.reject_unknown();
    }
};

std::string text_without_camera(json values) {
    for (const char* const name : {"view", "up", "orthographic", "zoom", "fov", "camera", "size"}) {
        values.erase(name);
    }
    return values.dump();
}

} // namespace

// Puts a file where models and maps are read from. name: relative, without a folder above.
VORNA_WEB_FUNCTION const Answer* vorna_add_file(const char* name, std::size_t name_size, const char* bytes, std::size_t size) {
    return answers.of([&](Answers&) {
        const std::filesystem::path path = std::filesystem::path("/files") / std::string(name, name_size);
        std::filesystem::create_directories(path.parent_path());
        std::ofstream file(path, std::ios::binary);
        file.write(bytes, static_cast<std::streamsize>(size));
        if (!file.flush()) {
            throw std::runtime_error(path.string() + ": cannot be kept in memory");
        }
    });
}

VORNA_WEB_FUNCTION const Answer* vorna_remove_files(const char* folder, std::size_t size) {
    return answers.of(
        [&](Answers&) { std::filesystem::remove_all(std::filesystem::path("/files") / std::string(folder, size)); });
}

// Options: file, and crease. The text of the answer: in JSON what there is to draw.
VORNA_WEB_FUNCTION const Answer* vorna_open_model(const char* request, std::size_t size) {
    return answers.of([&](Answers& all) {
        Options options(json::parse(text_at(request, size)));
        std::string file;
        drawing::Reading reading;
        reading.threads = 1;
        options.text("file", file);
        if (const json* const crease = options.find("crease")) {
            reading.crease = Options::number_of<double>("crease", *crease);
        }
        options.reject_unknown();
        describe(all, scenes.add(Scene(Model({"/files/" + file}, reading))));
    });
}

VORNA_WEB_FUNCTION const Answer* vorna_open_mesh(const char* request, std::size_t size) {
    return answers.of(
        [&](Answers& all) { describe(all, scenes.add(Scene(Model(mesh_at(json::parse(text_at(request, size))))))); });
}

// keeps: whether what does not depend on the camera is kept for the next image; the first one takes more memory and time then.
VORNA_WEB_FUNCTION const Answer* vorna_draw_model(std::int32_t handle, const char* request, std::size_t size, bool keeps) {
    return answers.of([&](Answers& all) {
        Scene& scene = scenes[handle];
        const json values = json::parse(text_at(request, size));
        const Request drawn(values, scene.model->up_axis());
        if (!scene.images || scene.drawn_with != text_without_camera(values)) {
            scene.images.reset();
            scene.images = std::make_unique<Model_Images>(*scene.model, drawn.view, drawn.settings);
            scene.drawn_with = text_without_camera(values);
        }
        all.set_planes(scene.images->draw(drawn.view.camera, drawn.settings.size).colors);
        all.text = text_of(scene.images->warnings());
        if (!keeps) {
            scene.images.reset();
        }
    });
}

VORNA_WEB_FUNCTION const Answer* vorna_close_model(std::int32_t handle) {
    return answers.of([&](Answers&) { scenes.close(handle); });
}

} // namespace vorna::web
