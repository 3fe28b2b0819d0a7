// The canvas as Python sees it.
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "python/src/attributes.h"
#include "python/src/call_arrays.h"
#include "python/src/options.h"

namespace vorna::python {

using Type = Rows_View::Type;

// The drawing functions by the type of points: the forms that take points anywhere.
template <class Point> struct Forms;
#define VORNA_FORMS(Point, FORM)                                                                                                 \
    template <> struct Forms<Point> {                                                                                            \
        static constexpr auto polyline = VD_Draw_##FORM##_Polyline;                                                              \
        static constexpr auto colorized_polyline = VD_Draw_##FORM##_Colorized_Polyline;                                          \
        static constexpr auto gouraud_polyline = VD_Draw_##FORM##_Gouraud_Polyline;                                              \
        static constexpr auto strip = VD_Draw_##FORM##_Polytriangle;                                                             \
        static constexpr auto colorized_strip = VD_Draw_##FORM##_Colorized_Polytriangle;                                         \
        static constexpr auto gouraud_strip = VD_Draw_##FORM##_Gouraud_Polytriangle;                                             \
        static constexpr auto textured_strip = VD_Draw_##FORM##_Textured_Polytriangle;                                           \
        static constexpr auto polygon = VD_Draw_##FORM##_Polygon;                                                                \
        static constexpr auto markers = VD_Draw_##FORM##_Polymarker;                                                             \
        static constexpr auto colorized_markers = VD_Draw_##FORM##_Colorized_Polymarker;                                         \
    };
VORNA_FORMS(VT_Point, 2D)
VORNA_FORMS(VT_DCI_Point, 2DI)
VORNA_FORMS(VT_Point_D, 3D)
#undef VORNA_FORMS

// The canvas with the attributes of one call.
struct Target {
    Canvas& canvas;
    const VT_Rendition& attributes;

    VT_Renderer_Data& renderer() { return canvas.renderer(); }
    const VT_Rendition& rendition() { return attributes; }
};

Canvas_Settings canvas_settings_of(const Options& options);
Module& installed_module();

// One thread at a time draws: others wait. Whoever waits for it does not hold the interpreter's lock.
class Canvas_Object {
public:
    explicit Canvas_Object(const py::dict& options)
        : settings_(canvas_settings_of(Options(options))), own_(std::make_unique<Canvas>(installed_module(), settings_)),
          attributes_(new VT_Rendition(own_->rendition())) {}

    Canvas& canvas() noexcept { return recorded_ ? recorded_->canvas() : *own_; }

    void begin(const py::object& background) {
        const VT_RGB32 color = background.is_none() ? VT_RGB32{} : color_of("background", background);
        locked([&] {
            if (has_begun_) {
                throw std::runtime_error("begin: expected no picture that has begun already");
            }
            if (background.is_none()) {
                canvas().begin_picture();
            } else {
                canvas().begin_picture(color);
            }
            has_begun_ = true;
        });
    }
    void end() {
        locked([&] {
            require_picture("end");
            has_begun_ = false;
            canvas().end_picture();
        });
    }

    void flush() {
        locked([&] { canvas().flush(); });
    }

    void polyline(const py::object& points, const py::object& colors, const py::kwargs& attributes) {
        const Call_Arrays arrays(points, colors);
        arrays.require_colors({arrays.points.count - 1, arrays.points.count});
        draw("polyline", arrays, attributes, [&](auto forms, Target& target, const auto& list) {
            if (!arrays.has_colors) {
                forms.polyline(target, list);
            } else if (arrays.colors.count == arrays.points.count) {
                forms.gouraud_polyline(target, list, colors_of(arrays));
            } else {
                forms.colorized_polyline(target, list, colors_of(arrays));
            }
        });
    }

    void strip(const py::object& points, const py::object& colors, const py::object& uv, const py::kwargs& attributes) {
        const Call_Arrays arrays(points, colors, uv);
        if (arrays.has_parameters) {
            arrays.require_colors({arrays.points.count});
        } else {
            arrays.require_colors({arrays.points.count - 2, arrays.points.count});
        }
        draw("strip", arrays, attributes, [&](auto forms, Target& target, const auto& list) {
            if (arrays.has_parameters) {
                forms.textured_strip(target, list, arrays.has_colors ? colors_of(arrays) : whites(list.size()),
                                     parameters_of(arrays));
            } else if (!arrays.has_colors) {
                forms.strip(target, list);
            } else if (arrays.colors.count == arrays.points.count) {
                forms.gouraud_strip(target, list, colors_of(arrays));
            } else {
                forms.colorized_strip(target, list, colors_of(arrays));
            }
        });
    }

    void polygon(const py::object& points, const py::kwargs& attributes) {
        const Call_Arrays arrays(points, py::none());
        draw("polygon", arrays, attributes, [&](auto forms, Target& target, const auto& list) { forms.polygon(target, list); });
    }

    void markers(const py::object& points, const py::object& colors, const py::kwargs& attributes) {
        const Call_Arrays arrays(points, colors);
        arrays.require_colors({arrays.points.count});
        draw("markers", arrays, attributes, [&](auto forms, Target& target, const auto& list) {
            if (arrays.has_colors) {
                forms.colorized_markers(target, list, colors_of(arrays));
            } else {
                forms.markers(target, list);
            }
        });
    }

    void dots(const py::object& points, const py::object& colors, const py::kwargs& attributes) {
        const Call_Arrays arrays(points, colors);
        arrays.require_colors({arrays.points.count});
        draw("dots", arrays, attributes, [&](auto, Target& target, const auto& list) {
            const std::span<const VT_RGB32> all = arrays.has_colors ? colors_of(arrays) : std::span<const VT_RGB32>();
            for (std::size_t i = 0; i < list.size(); ++i) {
                // Beside the window nothing is drawn; what is not a number is there too.
                const auto whole = [](auto value) {
                    constexpr double beside = -2e9;
                    const double v = std::floor(static_cast<double>(value) + (std::is_integral_v<decltype(value)> ? 0.0 : 0.5));
                    return static_cast<std::int32_t>(v > beside && v < -beside ? v : beside);
                };
                const VT_DCI_Point point{whole(list[i].x), whole(list[i].y), whole(list[i].z)};
                if (all.empty()) {
                    VD_Draw_DCI_Dot(target, point);
                } else {
                    VD_Draw_DCI_Dot(target, point, all[i]);
                }
            }
        });
    }

    void ellipse(const py::object& center, const py::object& radii, double start, double end, double rotation, bool filled,
                 const py::kwargs& attributes) {
        const VT_DCI_Point middle = point_of("center", center), sides = point_of("radii", radii);
        draw_with(filled ? "ellipse" : "arc", attributes, [&](Target& target) {
            if (filled) {
                VD_Draw_DCI_Ellipse(target, middle, sides, start, end, rotation);
            } else {
                VD_Draw_DCI_Elliptical_Arc(target, middle, sides, start, end, rotation);
            }
        });
    }

    void image(py::array pixels, const py::object& at, const py::kwargs& attributes);

    // Attributes of the calls that follow. Returns what restores the ones before.
    VT_Reference<const VT_Rendition> set(const py::kwargs& attributes) {
        VT_Reference<const VT_Rendition> before = attributes_;
        attributes_ = changed(attributes);
        return before;
    }
    void restore(const VT_Reference<const VT_Rendition>& attributes) { attributes_ = attributes; }

    void set_depth_mode(const py::object& test, const py::object& write);

    // The buffer of colours or of depths, if there is one: an array that shares and keeps its memory, with everything that was
    // drawn.
    py::object buffer(bool of_depths);

    // A copy: (pixels, palette).
    py::tuple copied();
    // None of 32-bit colours.
    py::object palette();

    // On another canvas, with the same settings, attributes and depth mode: recordings begin with empty buffers.
    void start_recording();
    std::string finish_recording() {
        return locked([&] {
            is_recording_ = false;
            return recorded_->finish();
        });
    }

private:
    template <class Work> std::invoke_result_t<const Work&> locked(const Work& work) {
        const py::gil_scoped_release released;
        const std::lock_guard lock(mutex_);
        return work();
    }

    void require_picture(const char* call) const {
        if (!has_begun_) {
            throw std::runtime_error(std::string(call) + ": expected a picture that has begun, as 'with canvas.picture():' does");
        }
    }

    VT_Reference<const VT_Rendition> changed(const py::dict& attributes) {
        if (attributes.empty()) {
            return attributes_;
        }
        VT_Reference<VT_Rendition> rendition(new VT_Rendition(*attributes_));
        set_attributes(*rendition, canvas(), attributes);
        return VT_Reference<const VT_Rendition>(rendition);
    }

    // Calls work(target).
    template <class Work> void draw_with(const char* call, const py::kwargs& attributes, const Work& work) {
        const VT_Reference<const VT_Rendition> rendition = changed(attributes);
        locked([&] {
            require_picture(call);
            Target target{canvas(), *rendition};
            work(target);
        });
    }

    // Calls work(forms, target, points). Doubles in three columns are points of the form 3D.
    template <class Work> void draw(const char* call, const Call_Arrays& arrays, const py::kwargs& attributes, const Work& work) {
        if (arrays.points.count == 0) {
            return;
        }
        draw_with(call, attributes, [&](Target& target) {
            const Rows_View& points = arrays.points;
            if (points.type == Type::float32) {
                work(Forms<VT_Point>(), target, points_of<VT_Point, float>(points, Type::float32));
            } else if (points.type == Type::float64) {
                work(Forms<VT_Point_D>(), target, points_of<VT_Point_D, double>(points, Type::float64));
            } else {
                work(Forms<VT_DCI_Point>(), target, points_of<VT_DCI_Point, std::int32_t>(points, Type::int32));
            }
        });
    }

    template <class Point, class Number> std::span<const Point> points_of(const Rows_View& rows, Type type) {
        const auto count = static_cast<std::size_t>(rows.count);
        if (rows.is_packed(type, 3)) {
            return {reinterpret_cast<const Point*>(rows.data), count};
        }
        points_.resize(count * sizeof(Point));
        convert_rows("points", rows, 3, reinterpret_cast<Number*>(points_.data()));
        return {reinterpret_cast<const Point*>(points_.data()), count};
    }

    std::span<const VT_RGB32> colors_of(const Call_Arrays& arrays) {
        const auto count = static_cast<std::size_t>(arrays.colors.count);
        if (arrays.colors.is_packed(Type::uint32, 1)) {
            return {reinterpret_cast<const VT_RGB32*>(arrays.colors.data), count};
        }
        colors_.resize(count);
        convert_colors(arrays.colors, colors_.data());
        return colors_;
    }
    std::span<const VT_RGB32> whites(std::size_t count) {
        colors_.assign(count, VT_RGB32{255, 255, 255, 255});
        return colors_;
    }
    std::span<const VT_Parameter> parameters_of(const Call_Arrays& arrays) {
        parameters_.resize(2 * static_cast<std::size_t>(arrays.parameters.count));
        convert_rows("uv", arrays.parameters, 2, parameters_.data());
        return parameters_;
    }

    static VT_DCI_Point point_of(const char* name, const py::object& value) {
        py::object kept;
        const Rows_View rows = rows_of(name, value, kept);
        if (rows.columns != 1 || (rows.count != 2 && rows.count != 3)) {
            refuse(name, "two or three numbers", py::repr(value).cast<std::string>());
        }
        std::array<std::int32_t, 3> numbers{};
        convert_rows(name, rows, 1, numbers.data());
        return {numbers[0], numbers[1], numbers[2]};
    }

    void draw_samples(Target& target, const VT_DCI_Point& top_left, const drawing::Image_Samples& samples) {
        using Kind = drawing::Image_Samples::Kind;
        const VT_Int_Pair size{samples.width, samples.height};
        const auto count = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
        if (samples.kind == Kind::indices) {
            VD_Draw_DCI_Index8_Image(target, top_left, {{samples.bytes.get(), count}, size});
        } else if (samples.kind == Kind::depths) {
            VD_Write_Depth_Rectangle(target, top_left,
                                     {{reinterpret_cast<const std::uint16_t*>(samples.bytes.get()), count}, size});
        } else if (samples.kind == Kind::colors) {
            colors_.resize(count);
            drawing::exchange_red_and_blue(samples.bytes.get(), count, reinterpret_cast<std::uint8_t*>(colors_.data()));
            VD_Draw_DCI_RGB32_Image(target, top_left, {colors_, size});
        } else {
            throw std::invalid_argument("pixels: expected colours, indices or depths, found int32");
        }
    }

    Canvas_Settings settings_;
    std::unique_ptr<Canvas> own_; // null once recordings were made
    std::unique_ptr<drawing::Recorded_Canvas> recorded_;
    VT_Reference<const VT_Rendition> attributes_; // not changed once it is here: calls of other threads may draw with it
    std::mutex mutex_;
    bool has_begun_ = false, is_recording_ = false;
    // The depth mode, where it was set.
    std::optional<Depth_Test> depth_test_;
    std::optional<bool> depth_write_;
    // Converted arrays of the current call.
    std::vector<std::byte> points_;
    std::vector<VT_RGB32> colors_;
    std::vector<VT_Parameter> parameters_;
};

} // namespace vorna::python
