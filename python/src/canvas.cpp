// The canvas.
#include <numbers>

#include <pybind11/stl.h>

#include "python/src/canvas_object.h"
#include "python/src/module.h"

namespace vorna::python {

Module& installed_module() {
    static Module* const module = new Module(Module::installed_path()); // canvases may outlive everything else
    return *module;
}

Canvas_Settings canvas_settings_of(const Options& options) {
    Canvas_Settings settings;
    const auto size = options.numbers<2>("size").value_or(std::array<double, 2>{});
    for (const double side : size) {
        if (!(side >= 1 && side <= largest_buffer_side)) {
            refuse("size", "a width and a height from 1 to " + std::to_string(largest_buffer_side),
                   py::repr(options["size"]).cast<std::string>());
        }
    }
    settings.size = {static_cast<std::int32_t>(size[0]), static_cast<std::int32_t>(size[1])};
    options.flag("indexed", settings.indexed);
    options.flag("depth", settings.depth_buffer);
    options.flag("blending", settings.alpha_blending);
    if (const py::object palette = options["palette"]; !palette.is_none()) {
        py::object kept;
        const Rows_View rows = rows_of("palette", palette, kept);
        if (!settings.indexed || !are_colors(rows) || rows.count < 1 || rows.count > 256) {
            refuse("palette", "(1 to 256, 3) of uint8, of a canvas with colors=8", description_of(py::array(kept)));
        }
        std::vector<VT_RGB32> colors(static_cast<std::size_t>(rows.count));
        convert_colors(rows, colors.data());
        settings.palette = VT_Reference<const VT_Palette>(new VT_Palette(std::move(colors), {}));
    }
    return settings;
}

py::object Canvas_Object::palette() {
    if (canvas().renderer().current_options.color_system() != 0) {
        return py::none();
    }
    std::vector<VT_RGB32> colors;
    for (std::int32_t i = 0; i < canvas().palette().size(); ++i) {
        colors.push_back(canvas().palette().color(static_cast<std::uint8_t>(i)));
    }
    return palette_array(colors);
}

// With both locks: attributes are made with the interpreter's lock alone and look at the canvas. Who draws needs no second one.
void Canvas_Object::start_recording() {
    const std::lock_guard lock(mutex_);
    if (has_begun_ || is_recording_) {
        throw std::runtime_error(std::string("record: expected no ") + (has_begun_ ? "picture" : "recording") +
                                 " that has begun already");
    }
    recorded_ = std::make_unique<drawing::Recorded_Canvas>(settings_);
    own_.reset();
    is_recording_ = true;
}

namespace {

struct Saved_Attributes {
    VT_Reference<const VT_Rendition> attributes;
};

} // namespace

void add_canvas(py::module_& module) {
    using py::arg;
    py::class_<Texture>(module, "Texture").def(py::init<const py::array&>(), arg("image"));
    py::class_<Saved_Attributes>(module, "Saved_Attributes");
    constexpr double whole_turn = 2 * std::numbers::pi;
    py::class_<Canvas_Object>(module, "Canvas")
        .def(py::init<const py::dict&>())
        .def("begin", &Canvas_Object::begin, arg("background") = py::none())
        .def("end", &Canvas_Object::end)
        .def("polyline", &Canvas_Object::polyline, arg("points"), arg("colors") = py::none())
        .def("strip", &Canvas_Object::strip, arg("points"), arg("colors") = py::none(), arg("uv") = py::none())
        .def("polygon", &Canvas_Object::polygon, arg("points"))
        .def("markers", &Canvas_Object::markers, arg("points"), arg("colors") = py::none())
        .def("dots", &Canvas_Object::dots, arg("points"), arg("colors") = py::none())
        .def(
            "ellipse",
            [](Canvas_Object& canvas, const py::object& center, const py::object& radii, double start, double end,
               double rotation,
               const py::kwargs& attributes) { canvas.ellipse(center, radii, start, end, rotation, true, attributes); },
            arg("center"), arg("radii"), arg("start") = 0.0, arg("end") = whole_turn, arg("rotation") = 0.0)
        .def(
            "arc",
            [](Canvas_Object& canvas, const py::object& center, const py::object& radii, double start, double end,
               double rotation,
               const py::kwargs& attributes) { canvas.ellipse(center, radii, start, end, rotation, false, attributes); },
            arg("center"), arg("radii"), arg("start") = 0.0, arg("end") = whole_turn, arg("rotation") = 0.0)
        .def("image", &Canvas_Object::image, arg("pixels"), arg("at"))
        .def("set", [](Canvas_Object& canvas, const py::kwargs& attributes) { canvas.set(attributes); })
        .def("_exchange",
             [](Canvas_Object& canvas, const py::kwargs& attributes) { return Saved_Attributes{canvas.set(attributes)}; })
        .def("_restore", [](Canvas_Object& canvas, const Saved_Attributes& saved) { canvas.restore(saved.attributes); })
        .def("depth_mode", &Canvas_Object::set_depth_mode, arg("test") = py::none(), arg("write") = py::none())
        .def("_buffer", &Canvas_Object::buffer)
        .def("_copied", &Canvas_Object::copied)
        .def("_start_recording", &Canvas_Object::start_recording)
        .def("_finish_recording", &Canvas_Object::finish_recording)
        .def_property_readonly("palette", &Canvas_Object::palette);
}

} // namespace vorna::python
