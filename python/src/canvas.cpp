// The canvas.
#include <numbers>

#include <pybind11/stl.h>

#include "python/src/canvas_object.h"
#include "python/src/module.h"

namespace vorna::python {

namespace {

constexpr unsigned most_threads = 1024;

} // namespace

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
    options.number("threads", settings.threads);
    if (settings.threads > most_threads) {
        refuse("threads", "0 to " + std::to_string(most_threads), std::to_string(settings.threads));
    }
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

// Drawing from the canvas' own memory would read pixels that are drawn already.
void Canvas_Object::image(py::array pixels, const py::object& at, const py::kwargs& attributes) {
    const VT_DCI_Point top_left = point_of("at", at);
    if (pixels.base()) {
        const py::object may_share = py::module_::import("numpy").attr("may_share_memory");
        for (const bool of_depths : {false, true}) {
            const py::object own = buffer(of_depths);
            if (!own.is_none() && may_share(pixels, own).cast<bool>()) {
                pixels = py::array(pixels.attr("copy")());
            }
        }
    }
    const bool words = pixels.ndim() == 2 && pixels.dtype().kind() == 'u' && pixels.itemsize() == 4;
    if (!words) {
        const drawing::Image_Samples samples = samples_of(pixels, py::none());
        draw_with("image", attributes, [&](Target& target) { draw_samples(target, top_left, samples); });
        return;
    }
    const py::array packed =
        py::array::ensure(in_own_byte_order(pixels), py::array::c_style | int{py::detail::npy_api::NPY_ARRAY_ALIGNED_});
    const VT_Int_Pair size{static_cast<std::int32_t>(packed.shape(1)), static_cast<std::int32_t>(packed.shape(0))};
    const std::span<const VT_RGB32> colors(static_cast<const VT_RGB32*>(packed.data()), static_cast<std::size_t>(packed.size()));
    draw_with("image", attributes, [&](Target& target) { VD_Draw_DCI_RGB32_Image(target, top_left, {colors, size}); });
}

void Canvas_Object::set_depth_mode(const py::object& test, const py::object& write) {
    static constexpr Choice<Depth_Test> tests[] = {
        {"nearer", Depth_Test::nearer}, {"nearer-or-equal", Depth_Test::nearer_or_equal}, {"farther", Depth_Test::farther}};
    std::optional<Depth_Test> chosen;
    if (!test.is_none()) {
        chosen = Options::chosen("test", test, tests);
    }
    const bool writes = write.is_none() || truth_of(write);
    locked([&] {
        if (chosen) {
            canvas().set_depth_test(*chosen);
            depth_test_ = chosen;
        }
        if (!write.is_none()) {
            canvas().set_depth_write(writes);
            depth_write_ = writes;
        }
    });
}

py::object Canvas_Object::buffer(bool of_depths) {
    if (of_depths && !canvas().has_depth_buffer()) {
        return py::none();
    }
    using Holder = VT_Reference<const Frame_Buffer>;
    const Holder buffer = locked([&] { return Holder(of_depths ? &canvas().depth_buffer() : &canvas().color_buffer()); });
    std::vector<py::ssize_t> shape{buffer->height, buffer->width};
    std::vector<py::ssize_t> strides{buffer->bytes_per_row, bytes_per_pixel(buffer->format)};
    if (buffer->format == Buffer_Format::rgb32) {
        shape.push_back(4);
        strides.push_back(1);
    }
    const py::dtype type =
        buffer->format == Buffer_Format::depth16 ? py::dtype::of<std::uint16_t>() : py::dtype::of<std::uint8_t>();
    const py::capsule owner(new Holder(buffer), [](void* holder) { delete static_cast<Holder*>(holder); });
    return py::array(type, shape, strides, buffer->rows[buffer->height - 1], owner);
}

py::tuple Canvas_Object::copied() {
    const drawing::Image_Samples image = locked([&] {
        const Frame_Buffer& buffer = canvas().color_buffer();
        const bool indexed = buffer.format == Buffer_Format::index8;
        drawing::Image_Samples copy = drawing::make_samples(
            indexed ? drawing::Image_Samples::Kind::indices : drawing::Image_Samples::Kind::colors, buffer.width, buffer.height);
        const auto width = static_cast<std::size_t>(buffer.width);
        std::uint8_t* to = copy.bytes.get();
        for (std::int32_t row = buffer.height - 1; row >= 0; --row, to += width * copy.pixel_bytes()) {
            if (indexed) {
                std::copy_n(buffer.rows[row], width, to);
            } else {
                drawing::exchange_red_and_blue(buffer.rows[row], width, to);
            }
        }
        return copy;
    });
    return py::make_tuple(array_of(image), palette());
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

// With both locks: attributes are made with the interpreter's lock alone and look at the canvas. Whoever waits for the canvas
// does not hold the interpreter's lock.
void Canvas_Object::start_recording() {
    const py::gil_scoped_release released;
    const std::lock_guard lock(mutex_);
    const py::gil_scoped_acquire acquired;
    if (has_begun_ || is_recording_) {
        throw std::runtime_error(std::string("record: expected no ") + (has_begun_ ? "picture" : "recording") +
                                 " that has begun already");
    }
    auto recorded = std::make_unique<drawing::Recorded_Canvas>(settings_);
    if (depth_test_) {
        recorded->canvas().set_depth_test(*depth_test_);
    }
    if (depth_write_) {
        recorded->canvas().set_depth_write(*depth_write_);
    }
    recorded_ = std::move(recorded);
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
        .def("flush", &Canvas_Object::flush)
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
