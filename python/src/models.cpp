// Models and their images.
#include <algorithm>

#include <pybind11/stl.h>

#include "drawing/files/long_list.h"
#include "python/src/module.h"
#include "python/src/options.h"

namespace vorna::python {
namespace {

using drawing::Model;
using drawing::Model_View;
using namespace drawing::model;

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

Model_View view_of(const Options& options) {
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
    if (const py::object edges = options["edges"]; py::isinstance<py::str>(edges)) {
        view.edges = Options::chosen("edges", edges, edge_choices);
    } else if (bool all = false; options.flag("edges", all), all) {
        view.edges = Edge_Choice::all;
    }
    options.color("edge_color", view.edge_color);
    options.color("color", view.color);
    options.number("line_width", view.line_width);
    options.number("point_size", view.point_size);
    options.flag("axes", view.axes);
    options.flag("scale_bar", view.scale_bar);
    options.choice("look", view.studio, looks);
    return view;
}

Camera_Settings camera_of(const Options& options) {
    Camera_Settings camera;
    options.choice("view", camera.view, views);
    options.choice("up_axis", camera.up, up_axes);
    bool orthographic = false;
    options.flag("orthographic", orthographic);
    camera.projection = orthographic ? Projection::orthographic : Projection::perspective;
    options.number("zoom", camera.zoom);
    if (const py::object fov = options["fov"]; !fov.is_none()) {
        const auto degrees = Options::number_of<double>("fov", fov);
        if (!(degrees >= 1 && degrees <= 150)) {
            refuse("fov", "1 to 150 degrees", py::repr(fov).cast<std::string>());
        }
        camera.half_tangent = drawing::half_tangent_of_view(degrees);
    }
    if (const auto eye = options.numbers<3>("eye")) {
        const auto target = options.numbers<3>("target"), up = options.numbers<3>("up");
        camera.aim = Aim{vector_of(*eye), vector_of(target.value_or(std::array<double, 3>{})),
                         vector_of(up.value_or(std::array<double, 3>{}))};
    }
    if (const auto lens = options.numbers<4>("lens")) {
        camera.lens = Lens{(*lens)[0], (*lens)[1], (*lens)[2], (*lens)[3]};
    }
    return camera;
}

// Vectors of one array; absent ones give none.
template <class Element, class Number>
std::vector<Element> list_of(const char* name, const py::object& values, py::ssize_t columns, std::size_t count = 0) {
    static_assert(sizeof(Element) % sizeof(Number) == 0);
    if (values.is_none()) {
        return {};
    }
    py::object kept;
    const Rows_View rows = rows_of(name, values, kept);
    if (rows.columns != columns || (count > 0 && rows.count != static_cast<py::ssize_t>(count))) {
        refuse(name, "(" + (count > 0 ? std::to_string(count) : "n") + ", " + std::to_string(columns) + ") numbers",
               description_of(py::array(kept)));
    }
    const py::gil_scoped_release released;
    constexpr auto own_type = std::is_floating_point_v<Number> ? Rows_View::Type::float32 : Rows_View::Type::uint32;
    const std::size_t size =
        static_cast<std::size_t>(rows.count) * static_cast<std::size_t>(columns) * sizeof(Number) / sizeof(Element);
    std::vector<Element> list;
    drawing::reserve_in_large_pages(list, size);
    if (rows.is_packed(own_type, columns)) {
        const auto* const elements = reinterpret_cast<const Element*>(rows.data);
        list.assign(elements, elements + size);
    } else if (size > 0) {
        list.resize(size);
        convert_rows(name, rows, columns, reinterpret_cast<Number*>(list.data()));
    }
    return list;
}

void require_numbers_below(const char* name, const std::vector<std::uint32_t>& list, std::size_t count) {
    for (const std::uint32_t vertex : list) {
        if (vertex >= count) {
            throw drawing::Usage_Error(std::string(name) + ": expected numbers of vertices from 0 to " +
                                       std::to_string(count == 0 ? 0 : count - 1) + ", found " + std::to_string(vertex));
        }
    }
}

// Faces of four corners become two triangles without an edge between them.
void set_faces(Mesh& mesh, const py::object& faces) {
    if (faces.is_none()) {
        return;
    }
    py::object kept;
    const Rows_View rows = rows_of("faces", faces, kept);
    if (rows.columns == 4) {
        const std::vector<std::uint32_t> corners = list_of<std::uint32_t, std::uint32_t>("faces", kept, 4);
        for (std::size_t i = 0; i < corners.size(); i += 4) {
            mesh.triangles.insert(mesh.triangles.end(),
                                  {corners[i], corners[i + 1], corners[i + 2], corners[i], corners[i + 2], corners[i + 3]});
            mesh.diagonals.insert(mesh.diagonals.end(), {4, 1});
        }
    } else if (rows.count > 0) {
        mesh.triangles = list_of<std::uint32_t, std::uint32_t>("faces", kept, 3);
    }
}

Mesh mesh_of(const Options& options) {
    Mesh mesh;
    mesh.positions = list_of<VT_Vector, float>("vertices", options["vertices"], 3);
    const std::size_t vertices = mesh.positions.size();
    if (vertices == 0) {
        throw drawing::Usage_Error("vertices: expected one or more");
    }
    set_faces(mesh, options["faces"]);
    mesh.lines = list_of<std::uint32_t, std::uint32_t>("lines", options["lines"], 2);
    mesh.points = list_of<std::uint32_t, std::uint32_t>("points", options["points"], 1);
    require_numbers_below("faces", mesh.triangles, vertices);
    require_numbers_below("lines", mesh.lines, vertices);
    require_numbers_below("points", mesh.points, vertices);
    mesh.normals = list_of<VT_Vector, float>("normals", options["normals"], 3, vertices);
    if (const py::object colors = options["colors"]; !colors.is_none()) {
        py::object kept;
        const Rows_View rows = rows_of("colors", colors, kept);
        if (!are_colors(rows) || rows.count != static_cast<py::ssize_t>(vertices)) {
            refuse("colors", "(" + std::to_string(vertices) + ", 3 or 4) of uint8 or of floats from 0 to 1",
                   description_of(py::array(kept)));
        }
        mesh.colors.resize(vertices);
        convert_colors(rows, mesh.colors.data());
    }
    mesh.coordinates = list_of<Texture_Point, float>("uv", options["uv"], 2, vertices);
    if (const py::object texture = options["texture"]; !texture.is_none()) {
        if (mesh.coordinates.empty()) {
            throw drawing::Usage_Error("texture: expected uv with it");
        }
        drawing::add_texture(mesh, texture_samples_of(py::array(texture)));
    }
    return mesh;
}

// Keeps its model; one thread at a time draws.
class Model_Painter {
public:
    Model_Painter(std::shared_ptr<const Model> model, const Options& options)
        : model_(std::move(model)), images_(*model_, view_of(options), image_settings_of(options)) {}

    // (pixels, palette, depths, faces, near, far)
    py::tuple draw(const py::dict& camera, std::pair<std::int32_t, std::int32_t> size, bool colors, bool depths, bool faces) {
        const Camera_Settings settings = camera_of(Options(camera));
        const drawing::Model_Image image = unlocked({}, [&] {
            return turn_([&] { return images_.draw(settings, {size.first, size.second}, {colors, depths, faces}); });
        });
        return py::make_tuple(array_of(image.colors), palette_array(image.colors.palette), array_of(image.depths),
                              array_of(image.faces), image.near, image.far);
    }

    std::vector<std::string> warnings() {
        const py::gil_scoped_release released;
        return turn_([&] { return images_.warnings(); });
    }

private:
    std::shared_ptr<const Model> model_;
    Turn turn_;
    drawing::Model_Images images_;
};

} // namespace

drawing::Reading reading_of(const Options& options) {
    drawing::Reading reading;
    options.number("max_memory", reading.max_memory);
    options.flag("outside_of_folder", reading.outside_of_folder);
    options.number("threads", reading.threads);
    options.flag("allow_empty", reading.accepts_no_triangles);
    if (const py::object crease = options["crease"]; !crease.is_none()) {
        reading.crease = Options::number_of<double>("crease", crease);
    }
    if (const auto plane = options.numbers<4>("section")) {
        reading.section = Section{{(*plane)[0], (*plane)[1], (*plane)[2]}, (*plane)[3]};
    }
    options.text("input_format", reading.input_format);
    return reading;
}

drawing::Image_Settings image_settings_of(const Options& options) {
    drawing::Image_Settings settings;
    options.number("threads", settings.threads);
    options.number("max_memory", settings.max_memory);
    settings.other_memory = 1; // what the program itself has is not counted
    options.number("supersample", settings.supersample);
    options.flag("smooth_lines", settings.smooth_lines);
    options.flag("indexed", settings.indexed);
    options.flag("transparent", settings.transparent);
    options.flag("allow_empty", settings.allow_empty);
    options.color("background", settings.background);
    options.color("lower_background", settings.lower_background);
    if (const auto size = options.numbers<2>("size")) {
        settings.size = {static_cast<std::int32_t>((*size)[0]), static_cast<std::int32_t>((*size)[1])};
    }
    options.number("dpi", settings.print.dpi);
    options.text("paper", settings.print.paper);
    options.text("scale", settings.print.scale);
    options.text("unit", settings.print.unit);
    return settings;
}

void add_models(py::module_& module) {
    py::class_<Model, std::shared_ptr<Model>>(module, "Model")
        .def_static("of_files",
                    [](const std::vector<std::string>& files, const py::dict& options) {
                        const drawing::Reading reading = reading_of(Options(options));
                        return unlocked({files.begin(), files.end()}, [&] { return std::make_shared<Model>(files, reading); });
                    })
        .def_static("of_arrays",
                    [](const std::vector<py::dict>& meshes, const py::dict& options) {
                        const drawing::Reading reading = reading_of(Options(options));
                        std::vector<Mesh> made;
                        for (const py::dict& mesh : meshes) {
                            made.push_back(mesh_of(Options(mesh)));
                        }
                        return unlocked({}, [&] { return std::make_shared<Model>(std::move(made), reading); });
                    })
        .def_property_readonly("up_axis",
                               [](const Model& model) {
                                   const auto* found = std::ranges::find(up_axes, model.up_axis(), &Choice<Up_Axis>::value);
                                   return found->name;
                               })
        .def_property_readonly("triangle_count", &Model::triangle_count)
        .def_property_readonly("line_count", &Model::line_count)
        .def_property_readonly("point_count", &Model::point_count)
        .def_property_readonly("warnings", [](const Model& model) { return texts_of(model.warnings()); });
    py::class_<Model_Painter>(module, "Model_Painter")
        .def(py::init([](std::shared_ptr<Model> model, const py::dict& options) {
            return std::make_unique<Model_Painter>(std::move(model), Options(options));
        }))
        .def("draw", &Model_Painter::draw)
        .def_property_readonly("warnings", [](Model_Painter& painter) { return texts_of(painter.warnings()); });
}

} // namespace vorna::python
