// Drawing calls: the arguments are checked and given to the drawing functions of the host library.
#include "vorna/draw.h"

#include <algorithm>
#include <span>
#include <type_traits>

#include "c/call.h"
#include "c/handles.h"
#include "vorna/c_draw.h"

namespace vorna::c {
namespace {

// The host's type of each type of point.
template <class Point> struct Host_Point;
template <> struct Host_Point<vorna_point> { using Type = VT_Point; };
template <> struct Host_Point<vorna_point_i> { using Type = VT_DCI_Point; };
template <> struct Host_Point<vorna_point_d> { using Type = VT_Point_D; };

// One pass without branches, which compilers turn into vector code: v - v is 0 for finite numbers only.
template <class Number> bool are_finite(const Number* numbers, std::size_t count) noexcept {
    Number sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += numbers[i] - numbers[i]; // NOLINT(misc-redundant-expression)
    }
    return sum == 0;
}

template <class Point> auto points_of(const Point* points, std::size_t count) {
    using Host = typename Host_Point<Point>::Type;
    using Number = decltype(Point::x);
    static_assert(sizeof(Host) == sizeof(Point) && sizeof(Point) == 3 * sizeof(Number) &&
                  std::is_same_v<decltype(Host::z), Number>);
    require(count <= INT32_MAX, [&] { return "count: expected at most 2147483647, found " + std::to_string(count); });
    require_list(points, count, "points");
    if constexpr (std::is_floating_point_v<Number>) {
        require(are_finite(reinterpret_cast<const Number*>(points), 3 * count), "points: expected finite numbers");
    }
    return std::span(reinterpret_cast<const Host*>(points), count);
}

std::span<const VT_RGB32> colors_of(const vorna_color* colors, std::size_t count) {
    require_list(colors, count, "colors");
    return {host_colors(colors), count};
}

template <auto& Draw, class Point> vorna_status draw_points(vorna_canvas* given, std::size_t count, const Point* points) {
    return guarded([&] {
        Canvas& canvas = drawn_canvas(given).canvas();
        Draw(canvas, points_of(points, count));
    });
}

template <auto& Draw, class Point>
vorna_status draw_colorized(vorna_canvas* given, std::size_t count, const Point* points, std::size_t color_count,
                            const vorna_color* colors) {
    return guarded([&] {
        Canvas& canvas = drawn_canvas(given).canvas();
        const auto list = points_of(points, count);
        const std::span<const VT_RGB32> each = colors_of(colors, color_count);
        if (each.size() == 1) {
            Draw(canvas, list, each.front());
        } else {
            Draw(canvas, list, each);
        }
    });
}

template <auto& Draw, class Point>
vorna_status draw_gouraud(vorna_canvas* given, std::size_t count, const Point* points, const vorna_color* colors) {
    return guarded([&] {
        Canvas& canvas = drawn_canvas(given).canvas();
        const auto list = points_of(points, count);
        Draw(canvas, list, colors_of(colors, count));
    });
}

template <auto& Draw, class Point>
vorna_status draw_textured(vorna_canvas* given, std::size_t count, const Point* points, const vorna_color* colors,
                           const vorna_texture_point* texture_points) {
    return guarded([&] {
        Canvas& canvas = drawn_canvas(given).canvas();
        const auto list = points_of(points, count);
        const std::span<const VT_RGB32> each = colors_of(colors, count);
        require_list(texture_points, count, "texture_points");
        static_assert(sizeof(vorna_texture_point) == 2 * sizeof(VT_Parameter));
        const auto* const parameters = reinterpret_cast<const VT_Parameter*>(texture_points);
        require(are_finite(parameters, 2 * count), "texture_points: expected finite numbers");
        Draw(canvas, list, each, std::span(parameters, 2 * count));
    });
}

template <auto& Draw, class Point>
vorna_status draw_polygon(vorna_canvas* given, std::size_t count, const Point* points, const vorna_color* color) {
    return guarded([&] {
        Canvas& canvas = drawn_canvas(given).canvas();
        const auto list = points_of(points, count);
        if (color) {
            Draw(canvas, list, host_color(*color));
        } else {
            Draw(canvas, list);
        }
    });
}

template <auto& Draw>
vorna_status draw_ellipse(vorna_canvas* given, const vorna_point_i* center, const vorna_point_i* radii, double start, double end,
                          double rotation, const vorna_color* color) {
    return guarded([&] {
        Canvas& canvas = drawn_canvas(given).canvas();
        const VT_DCI_Point host_center = host_point(required(center, "center")),
                           host_radii = host_point(required(radii, "radii"));
        require_finite("start", start);
        require_finite("end", end);
        require_finite("rotation", rotation);
        if (color) {
            Draw(canvas, host_center, host_radii, host_color(*color), start, end, rotation);
        } else {
            Draw(canvas, host_center, host_radii, start, end, rotation);
        }
    });
}

template <auto& Draw, class Host, class Pixel>
vorna_status draw_rows(vorna_canvas* given, const vorna_point_i* top_left, const Pixel* pixels, std::int32_t width,
                       std::int32_t height, std::size_t stride) {
    static_assert(sizeof(Host) == sizeof(Pixel));
    return guarded([&] {
        Canvas& canvas = drawn_canvas(given).canvas();
        required(top_left, "top_left");
        constexpr auto longest = static_cast<std::int32_t>(INT32_MAX / sizeof(Pixel));
        require_range("width", width, 0, longest);
        require_range("height", height, 0, INT32_MAX);
        const std::size_t row = stride_or(stride, width, sizeof(Pixel)) / sizeof(Pixel);
        const std::size_t columns = static_cast<std::size_t>(width), rows = static_cast<std::size_t>(height);
        const std::size_t count = columns > 0 && rows > 0 ? (rows - 1) * row + columns : 0;
        require_list(pixels, count, "pixels");
        Draw(canvas, host_point(*top_left),
             Pixel_Rows<Host>{{reinterpret_cast<const Host*>(pixels), count}, {width, height}, static_cast<std::int32_t>(row)});
    });
}

VT_Int_Rectangle area_or_window(Canvas& canvas, const vorna_rectangle* area) {
    return area ? host_rectangle(*area) : canvas.window();
}

} // namespace
} // namespace vorna::c

using namespace vorna::c;

// EACH(form of the C function, form of the drawing function, type of its points).
#define FORMS(EACH)                                                                                                              \
    EACH(2d, 2D, vorna_point)                                                                                                    \
    EACH(dc, DC, vorna_point) EACH(2di, 2DI, vorna_point_i) EACH(dci, DCI, vorna_point_i) EACH(3d, 3D, vorna_point_d)

#define LISTS(form, Form, Point)                                                                                                 \
    vorna_status vorna_draw_##form##_polyline(vorna_canvas* canvas, size_t count, const Point* points) {                         \
        return draw_points<VD_Draw_##Form##_Polyline>(canvas, count, points);                                                    \
    }                                                                                                                            \
    vorna_status vorna_draw_##form##_polytriangle(vorna_canvas* canvas, size_t count, const Point* points) {                     \
        return draw_points<VD_Draw_##Form##_Polytriangle>(canvas, count, points);                                                \
    }                                                                                                                            \
    vorna_status vorna_draw_##form##_polymarker(vorna_canvas* canvas, size_t count, const Point* points) {                       \
        return draw_points<VD_Draw_##Form##_Polymarker>(canvas, count, points);                                                  \
    }
FORMS(LISTS)
#undef LISTS

#define COLORIZED(form, Form, Point)                                                                                             \
    vorna_status vorna_draw_##form##_colorized_polyline(vorna_canvas* canvas, size_t count, const Point* points,                 \
                                                        size_t color_count, const vorna_color* colors) {                         \
        return draw_colorized<VD_Draw_##Form##_Colorized_Polyline>(canvas, count, points, color_count, colors);                  \
    }                                                                                                                            \
    vorna_status vorna_draw_##form##_colorized_polytriangle(vorna_canvas* canvas, size_t count, const Point* points,             \
                                                            size_t color_count, const vorna_color* colors) {                     \
        return draw_colorized<VD_Draw_##Form##_Colorized_Polytriangle>(canvas, count, points, color_count, colors);              \
    }                                                                                                                            \
    vorna_status vorna_draw_##form##_colorized_polymarker(vorna_canvas* canvas, size_t count, const Point* points,               \
                                                          size_t color_count, const vorna_color* colors) {                       \
        return draw_colorized<VD_Draw_##Form##_Colorized_Polymarker>(canvas, count, points, color_count, colors);                \
    }
FORMS(COLORIZED)
#undef COLORIZED

#define SHADED(form, Form, Point)                                                                                                \
    vorna_status vorna_draw_##form##_gouraud_polyline(vorna_canvas* canvas, size_t count, const Point* points,                   \
                                                      const vorna_color* colors) {                                               \
        return draw_gouraud<VD_Draw_##Form##_Gouraud_Polyline>(canvas, count, points, colors);                                   \
    }                                                                                                                            \
    vorna_status vorna_draw_##form##_gouraud_polytriangle(vorna_canvas* canvas, size_t count, const Point* points,               \
                                                          const vorna_color* colors) {                                           \
        return draw_gouraud<VD_Draw_##Form##_Gouraud_Polytriangle>(canvas, count, points, colors);                               \
    }                                                                                                                            \
    vorna_status vorna_draw_##form##_textured_polytriangle(vorna_canvas* canvas, size_t count, const Point* points,              \
                                                           const vorna_color* colors,                                            \
                                                           const vorna_texture_point* texture_points) {                          \
        return draw_textured<VD_Draw_##Form##_Textured_Polytriangle>(canvas, count, points, colors, texture_points);             \
    }                                                                                                                            \
    vorna_status vorna_draw_##form##_polygon(vorna_canvas* canvas, size_t count, const Point* points,                            \
                                             const vorna_color* color) {                                                         \
        return draw_polygon<VD_Draw_##Form##_Polygon>(canvas, count, points, color);                                             \
    }
FORMS(SHADED)
#undef SHADED
#undef FORMS

vorna_status vorna_draw_dci_dot(vorna_canvas* canvas, const vorna_point_i* point, const vorna_color* color) {
    return guarded([&] {
        vorna::Canvas& drawn = drawn_canvas(canvas).canvas();
        const VT_DCI_Point place = host_point(required(point, "point"));
        if (color) {
            VD_Draw_DCI_Dot(drawn, place, host_color(*color));
        } else {
            VD_Draw_DCI_Dot(drawn, place);
        }
    });
}

vorna_status vorna_draw_dci_ellipse(vorna_canvas* canvas, const vorna_point_i* center, const vorna_point_i* radii, double start,
                                    double end, double rotation, const vorna_color* color) {
    return draw_ellipse<VD_Draw_DCI_Ellipse>(canvas, center, radii, start, end, rotation, color);
}

vorna_status vorna_draw_dci_elliptical_arc(vorna_canvas* canvas, const vorna_point_i* center, const vorna_point_i* radii,
                                           double start, double end, double rotation, const vorna_color* color) {
    return draw_ellipse<VD_Draw_DCI_Elliptical_Arc>(canvas, center, radii, start, end, rotation, color);
}

vorna_status vorna_draw_dci_index8_image(vorna_canvas* canvas, const vorna_point_i* top_left, const uint8_t* indices,
                                         int32_t width, int32_t height, size_t stride) {
    return draw_rows<VD_Draw_DCI_Index8_Image, std::uint8_t>(canvas, top_left, indices, width, height, stride);
}

vorna_status vorna_draw_dci_rgb32_image(vorna_canvas* canvas, const vorna_point_i* top_left, const vorna_color* colors,
                                        int32_t width, int32_t height, size_t stride) {
    return draw_rows<VD_Draw_DCI_RGB32_Image, VT_RGB32>(canvas, top_left, colors, width, height, stride);
}

vorna_status vorna_write_depth_rectangle(vorna_canvas* canvas, const vorna_point_i* top_left, const uint16_t* depths,
                                         int32_t width, int32_t height, size_t stride) {
    return draw_rows<VD_Write_Depth_Rectangle, std::uint16_t>(canvas, top_left, depths, width, height, stride);
}

vorna_status vorna_draw_dci_image(vorna_canvas* canvas, const vorna_point_i* point, const vorna_image* image) {
    return guarded([&] {
        VD_Draw_DCI_Image(drawn_canvas(canvas).canvas(), host_point(required(point, "point")), *required(image, "image").pixels);
    });
}

vorna_status vorna_draw_window(vorna_canvas* canvas, const vorna_rectangle* area, int32_t fill, vorna_color color) {
    return guarded([&] {
        vorna::Canvas& drawn = drawn_canvas(canvas).canvas();
        require_range("fill", fill, 0, INT32_MAX);
        const VT_RGB32 host = host_color(color);
        drawn.rendition().window = {area_or_window(drawn, area), fill, host, drawn.index_of(host)};
        VD_Draw_Window(drawn);
    });
}

vorna_status vorna_clear_depth_rectangle(vorna_canvas* canvas, const vorna_rectangle* area) {
    return guarded([&] {
        vorna::Canvas& drawn = drawn_canvas(canvas).canvas();
        if (drawn.has_depth_buffer()) {
            drawn.rendition().window.rectangle = area_or_window(drawn, area);
            VD_Clear_Depth_Rectangle(drawn);
        }
    });
}

vorna_status vorna_read_color_image(vorna_canvas* canvas, const vorna_rectangle* area, vorna_image** image) {
    return make_handle(image, "image", [&] {
        vorna::Canvas& read = required(canvas, "canvas").canvas();
        const VT_Reference<VT_Shared_Image> copy = VD_Read_Color_Image(read, area_or_window(read, area));
        if (!copy) {
            throw std::runtime_error("the renderer gave no image of its colour buffer");
        }
        return image_of(vorna::drawing::raster_of(*copy), new VT_Palette(read.palette()));
    });
}

vorna_status vorna_read_depth_image(vorna_canvas* canvas, const vorna_rectangle* area, vorna_image** image) {
    return make_handle(image, "image", [&] {
        vorna::Canvas& read = required(canvas, "canvas").canvas();
        require(read.has_depth_buffer(), "canvas: expected a depth buffer");
        return image_of(vorna::drawing::raster_of(*read.read_depth_image(area_or_window(read, area))), new VT_Palette);
    });
}
