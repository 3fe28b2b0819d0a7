// The arguments of an application's calls, copied into the form of recordings.
#pragma once

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/recording.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

// Empty when the value is the default.
template <class Value> std::optional<Value> unless(const Value& value, const Value& usual) {
    return value == usual ? std::nullopt : std::optional(value);
}

// The rows of an image without the padding between them, in the given order.
template <class Pixel>
Image_Rows<Pixel> copied_rows(const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right, std::int32_t stride,
                              const Pixel* pixels) {
    const auto [columns, rows] = corner_size(top_left, bottom_right);
    Image_Rows<Pixel> copy;
    if (columns < 1 || rows < 1) {
        return copy;
    }
    copy.row_pixels = static_cast<std::int32_t>(columns);
    copy.pixels.resize(static_cast<std::size_t>(columns * rows));
    for (std::int64_t r = 0; r < rows; ++r) {
        const auto* row = reinterpret_cast<const std::uint8_t*>(pixels) + r * stride;
        std::memcpy(copy.pixels.data() + r * columns, row, static_cast<std::size_t>(columns) * sizeof(Pixel));
    }
    return copy;
}

template <class Element> std::vector<Element> copied(const Element* list, std::size_t count) {
    return count > 0 ? std::vector<Element>(list, list + count) : std::vector<Element>();
}

inline std::optional<std::vector<VT_RGB32>> copied_or_none(const VT_RGB32* colors, std::size_t count) {
    return colors || count == 0 ? std::optional(copied(colors, count)) : std::nullopt;
}

inline std::size_t size_of(std::int32_t count) {
    return static_cast<std::size_t>(std::max(count, 0));
}

inline std::optional<VT_RGB32> value_at(const VT_RGB32* color) {
    return color ? std::optional(*color) : std::nullopt;
}

// One overload for each kind of arguments, with the parameters of its slots.

template <class Point>
Points<Point> copy(std::type_identity<Points<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                   const Point* points) {
    return made_of<Points<Point>>(copied(points, size_of(count)));
}

template <class Point>
Colorized<Point> copy(std::type_identity<Colorized<Point>>, const Call_Kind& kind, const VT_Rendition&, std::int32_t count,
                      const Point* points, const VT_RGB32* colors, bool single) {
    return made_of<Colorized<Point>>(copied(points, size_of(count)),
                                     copied_or_none(colors, colors_of(kind, size_of(count), single)), single);
}

template <class Point>
Gouraud<Point> copy(std::type_identity<Gouraud<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                    const Point* points, const VT_RGB32* colors) {
    return made_of<Gouraud<Point>>(copied(points, size_of(count)), copied(colors, colors ? size_of(count) : 0));
}

// Renderers use the first two parameters of a point; missing ones are 0.
template <class Point>
Textured<Point> copy(std::type_identity<Textured<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                     const Point* points, const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t width,
                     const float*, const VT_Vector*) {
    std::vector<VT_Parameter> pairs;
    for (std::size_t i = 0; i < size_of(count); ++i) {
        const VT_Parameter* of_point = parameters + i * size_of(width);
        pairs.push_back(width > 0 ? of_point[0] : 0);
        pairs.push_back(width > 1 ? of_point[1] : 0);
    }
    return made_of<Textured<Point>>(copied(points, size_of(count)), copied(colors, size_of(count)), std::move(pairs));
}

template <class Point>
Polygon<Point> copy(std::type_identity<Polygon<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                    const Point* points, const VT_RGB32* color) {
    return made_of<Polygon<Point>>(copied(points, size_of(count)), value_at(color));
}

inline Dot copy(std::type_identity<Dot>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* point,
                const VT_RGB32* color) {
    return made_of<Dot>(*point, value_at(color));
}

inline Ellipse copy(std::type_identity<Ellipse>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* center,
                    const VT_DCI_Point* radii, double start, double end, double rotation, const VT_RGB32* color) {
    return made_of<Ellipse>(*center, *radii, start, end, rotation, value_at(color));
}

inline Index8_Image copy(std::type_identity<Index8_Image>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* start,
                         const VT_DCI_Point* end, std::int32_t stride, const std::uint8_t* pixels) {
    return made_of<Index8_Image>(*start, *end, copied_rows(*start, *end, stride, pixels));
}

inline RGB32_Image copy(std::type_identity<RGB32_Image>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* start,
                        const VT_DCI_Point* end, std::int32_t stride, const VT_RGB32* pixels, std::int32_t, const VT_Packing*) {
    return made_of<RGB32_Image>(*start, *end, copied_rows(*start, *end, stride, pixels));
}

inline Placed_Image copy(std::type_identity<Placed_Image>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* start,
                         const VT_Shared_Image* image) {
    std::optional<Image> copy;
    if (image) {
        std::vector<std::uint8_t> bytes;
        const std::int32_t row_bytes = image->width() * vorna::bytes_per_pixel(image->format());
        for (std::int32_t r = 0; r < image->height(); ++r) {
            const std::uint8_t* row = image->row(image->bottom_up() ? r : image->height() - 1 - r);
            bytes.insert(bytes.end(), row, row + row_bytes);
        }
        copy = made_of<Image>(image->format(), image->width(), image->height(), std::move(bytes));
    }
    return made_of<Placed_Image>(*start, std::move(copy));
}

inline Window_Fill copy(std::type_identity<Window_Fill>, const Call_Kind&, const VT_Rendition& rendition) {
    const VT_Window_Attributes& window = rendition.window;
    return made_of<Window_Fill>(window.rectangle, unless(window.fill, vorna::face_pattern::solid),
                                unless(window.color, VT_RGB32{}), window.index);
}

inline Depth_Clear copy(std::type_identity<Depth_Clear>, const Call_Kind&, const VT_Rendition& rendition) {
    return made_of<Depth_Clear>(rendition.window.rectangle);
}

inline Depth_Write copy(std::type_identity<Depth_Write>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* top_left,
                        const VT_DCI_Point* bottom_right, std::int32_t stride, const std::uint16_t* depths) {
    std::optional<Image_Rows<std::uint16_t>> rows;
    if (depths) {
        rows = copied_rows(*top_left, *bottom_right, stride, depths);
    }
    return made_of<Depth_Write>(*top_left, *bottom_right, std::move(rows));
}

inline Image_Read copy(std::type_identity<Image_Read>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* top_left,
                       const VT_DCI_Point* bottom_right, const Buffer_Format* format, VT_Reference<VT_Shared_Image>&) {
    return made_of<Image_Read>(*top_left, *bottom_right, *format);
}

// What recordings cannot hold of the arguments; empty when they can hold all.
template <class Type> std::string problem_of(const Type&) {
    return {};
}

template <class Point> std::string problem_of(const Gouraud<Point>& gouraud) {
    return gouraud.colors.size() < gouraud.points.size() ? "a Gouraud primitive without colours" : "";
}

inline std::string problem_of(const Placed_Image& placed) {
    const Buffer_Format format = placed.image ? placed.image->format : Buffer_Format::index8;
    const bool is_known = format == Buffer_Format::index8 || format == Buffer_Format::rgb32 || format == Buffer_Format::depth16 ||
                          format == Buffer_Format::presentation_rgb32;
    return is_known ? "" : "an image of format " + std::to_string(static_cast<std::int32_t>(format));
}

} // namespace vorna::drawing::recording
