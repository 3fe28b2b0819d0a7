// Recordings from JSON documents.
#include "drawing/recording/recording_reader.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/reader.h"

namespace vorna::drawing::recording {

namespace {

using nlohmann::json;

constexpr std::int32_t largest_side = 16384;

} // namespace

// What renditions and calls refer to by number.
struct Shared_Values {
    std::vector<Shared_List<VT_RGB32>> texels;
    std::vector<Shared_List<std::vector<VT_Point>>> complex_clips;
    std::vector<std::shared_ptr<const Rendition>> renditions;
};

namespace {

// Arrays that stand for one thing; whatever is wrong inside is told of the whole.

template <class Number, std::size_t Size> auto numbers(const char* what) {
    return [what](const Reader& reader) {
        const json& value = reader.value();
        std::array<Number, Size> result{};
        bool is_right = value.is_array() && value.size() == Size;
        for (std::size_t i = 0; is_right && i < Size; ++i) {
            const auto read = coordinate_or_none<Number>(value[i]);
            is_right = read.has_value();
            result[i] = read.value_or(Number{});
        }
        if (!is_right) {
            reader.expected(what);
        }
        return result;
    };
}

template <class Point> Point point(const Reader& reader) {
    using Number = decltype(Point::x);
    const json& value = reader.value();
    if (value.is_array() && (value.size() == 2 || value.size() == 3)) {
        const auto x = coordinate_or_none<Number>(value[0]);
        const auto y = coordinate_or_none<Number>(value[1]);
        const auto z = value.size() == 3 ? coordinate_or_none<Number>(value[2]) : Number{};
        if (x && y && z) {
            return {*x, *y, *z};
        }
    }
    reader.expected(std::is_integral_v<Number> ? "[x, y] or [x, y, z] of whole numbers of 32 bits"
                                               : "[x, y] or [x, y, z] of numbers");
}

constexpr auto dci_point = point<VT_DCI_Point>;

// Numbers in a row, width of them for each of the things that they make up.
template <class Number> std::vector<Number> flat_numbers(const Reader& reader, std::size_t width) {
    const json& value = reader.value();
    if (value.size() % width != 0) {
        reader.expected(std::to_string(width) + " numbers for each, not " + std::to_string(value.size()) + " in all");
    }
    std::vector<Number> numbers;
    numbers.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        const auto number = coordinate_or_none<Number>(value[i]);
        if (!number) {
            reader.element(i).expected(std::is_integral_v<Number> ? "a whole number of 32 bits" : "a number");
        }
        numbers.push_back(*number);
    }
    return numbers;
}

bool is_flat(const Reader& reader) {
    return reader.value().is_array() && !reader.value().empty() && reader.value()[0].is_number();
}

// A list of points, or their coordinates in a row.
template <class Point> std::vector<Point> points(const Reader& reader) {
    if (!is_flat(reader)) {
        return list_of(point<Point>)(reader);
    }
    const auto numbers = flat_numbers<decltype(Point::x)>(reader, 3);
    std::vector<Point> list;
    list.reserve(numbers.size() / 3);
    for (std::size_t i = 0; i < numbers.size(); i += 3) {
        list.push_back({numbers[i], numbers[i + 1], numbers[i + 2]});
    }
    return list;
}

constexpr int digit_value(char digit) noexcept {
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
           : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
                                          : -1;
}

// The bytes of a string of hexadecimal digits, width of them for each of the things that they make up.
std::vector<std::uint8_t> hexadecimal(const Reader& reader, std::size_t width) {
    const auto& text = reader.value().get_ref<const std::string&>();
    std::vector<std::uint8_t> bytes(text.size() / 2);
    bool is_right = text.size() % (2 * width) == 0;
    for (std::size_t i = 0; is_right && i < bytes.size(); ++i) {
        const int high = digit_value(text[2 * i]), low = digit_value(text[2 * i + 1]);
        is_right = high >= 0 && low >= 0;
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    if (!is_right) {
        reader.expected("hexadecimal digits, " + std::to_string(2 * width) + " for each");
    }
    return bytes;
}

VT_RGB32 color(const Reader& reader) {
    const json& value = reader.value();
    std::uint8_t channels[4] = {0, 0, 0, 255};
    bool is_right = value.is_array() && (value.size() == 3 || value.size() == 4);
    for (std::size_t i = 0; is_right && i < value.size(); ++i) {
        const auto channel = whole_or_none<std::uint8_t>(value[i]);
        is_right = channel.has_value();
        channels[i] = channel.value_or(0);
    }
    if (!is_right) {
        reader.expected("[r, g, b] or [r, g, b, a], each 0 to 255");
    }
    return {channels[2], channels[1], channels[0], channels[3]};
}

// A list of colours, or a string of eight digits for each.
std::vector<VT_RGB32> colors(const Reader& reader) {
    if (!reader.value().is_string()) {
        return list_of(color)(reader);
    }
    const std::vector<std::uint8_t> bytes = hexadecimal(reader, 4);
    std::vector<VT_RGB32> list;
    list.reserve(bytes.size() / 4);
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        list.push_back({bytes[i + 2], bytes[i + 1], bytes[i], bytes[i + 3]});
    }
    return list;
}

VT_RGB32 opaque_color(const Reader& reader) {
    if (reader.value().size() != 3) {
        reader.expected("[r, g, b], each 0 to 255");
    }
    return color(reader);
}

VT_Int_RGB whole_color(const Reader& reader) {
    const VT_RGB32 read = opaque_color(reader);
    return {read.red, read.green, read.blue};
}

VT_Int_Pair pair(const Reader& reader) {
    const auto [x, y] = numbers<std::int32_t, 2>("[x, y] of whole numbers of 32 bits")(reader);
    return {x, y};
}

VT_Int_Rectangle rectangle(const Reader& reader) {
    const auto [left, right, bottom, top] =
        numbers<std::int32_t, 4>("[x min, x max, y min, y max] of whole numbers of 32 bits")(reader);
    return {left, right, bottom, top};
}

constexpr auto any_int = [](const Reader& reader) { return whole<std::int32_t>()(reader); };
constexpr auto not_negative = [](const Reader& reader) { return whole<std::int32_t>(0)(reader); };
constexpr auto flag_word = [](const Reader& reader) { return whole<std::uint32_t>()(reader); };
constexpr auto byte = [](const Reader& reader) { return whole<std::uint8_t>()(reader); };
constexpr auto side = [](const Reader& reader) { return whole<std::int32_t>(1, largest_side)(reader); };
constexpr auto color_or_null = [](const Reader& reader) { return or_null(color)(reader); };

// Rows of pixels: a list of numbers, or a string of hexadecimal digits with the high digit first.
template <class Number> std::vector<Number> row_of_numbers(const Reader& reader) {
    if (!reader.value().is_string()) {
        return list_of(whole<Number>())(reader);
    }
    const std::vector<std::uint8_t> bytes = hexadecimal(reader, sizeof(Number));
    std::vector<Number> row(bytes.size() / sizeof(Number));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        Number& number = row[i / sizeof(Number)];
        number = static_cast<Number>(number << 8 | bytes[i]);
    }
    return row;
}

constexpr auto row_of_bytes = row_of_numbers<std::uint8_t>;
constexpr auto row_of_depths = row_of_numbers<std::uint16_t>;

// A value of its own, or the number of one that the document shares.
template <class Value, class Form>
auto own_or_shared(const std::vector<Value> Shared_Values::*list, const char* name, Form form) {
    return [=](const Reader& reader) {
        if (!reader.value().is_number()) {
            return form(reader);
        }
        const std::vector<Value>& shared = reader.shared().*list;
        const auto number = whole_or_none<std::int32_t>(reader.value(), 0);
        if (!number || static_cast<std::size_t>(*number) >= shared.size()) {
            reader.expected("the number of one of the " + std::to_string(shared.size()) + " shared " + name);
        }
        return shared[static_cast<std::size_t>(*number)];
    };
}

// Configuration.

Window window(const Reader& reader) {
    Window window;
    reader.object(key("width", window.width, side), key("height", window.height, side), key("origin", window.origin, pair),
                  key("local_coordinates", window.local_coordinates, boolean));
    return window;
}

VT_Int_RGB cube_levels(const Reader& reader) {
    const VT_Int_RGB levels = whole_color(reader);
    if (levels.red < 1 || levels.green < 1 || levels.blue < 1) {
        reader.expected("[r, g, b], each 1 to 255");
    }
    return levels;
}

Cube cube(const Reader& reader) {
    Cube cube;
    reader.object(required("base", cube.base, byte), required("levels", cube.levels, cube_levels));
    return cube;
}

Palette palette(const Reader& reader) {
    Palette palette;
    reader.object(key("colors", palette.colors, list_of(opaque_color, 1, 256)), key("cube", palette.cube, or_null(cube)));
    return palette;
}

Option_Setting option_setting(const Reader& reader) {
    const json& value = reader.value();
    if (value.is_boolean()) {
        return value.get<bool>();
    }
    if (value.is_array()) {
        return whole_color(reader);
    }
    const auto number = whole_or_none<std::int32_t>(value);
    if (!number) {
        reader.expected("true or false, a whole number of 32 bits, or [r, g, b]");
    }
    return *number;
}

std::vector<std::pair<std::string, Option_Setting>> option_settings(const Reader& reader) {
    if (!reader.value().is_object()) {
        reader.expected("an object");
    }
    std::vector<std::pair<std::string, Option_Setting>> settings;
    for (const auto& [name, value] : reader.value().items()) {
        settings.emplace_back(name, option_setting(reader.member(name, value)));
    }
    return settings;
}

// The keys of a configuration among others.
template <class... Keys> void read_configuration(const Reader& reader, Configuration& configuration, const Keys&... others) {
    reader.object(key("window", configuration.window, window), key("color_system", configuration.color_system, any_int),
                  key("buffer_depth", configuration.buffer_depth, any_int),
                  key("alpha_blending", configuration.alpha_blending, boolean), key("palette", configuration.palette, palette),
                  key("options", configuration.options, option_settings), others...);
}

// Rendition.

std::string bitmap_row(const Reader& reader) {
    const json& value = reader.value();
    if (!value.is_string() || value.get_ref<const std::string&>().find_first_not_of("01") != std::string::npos) {
        reader.expected("a string of 0 and 1");
    }
    return value.get<std::string>();
}

Bitmap bitmap(const Reader& reader) {
    Bitmap bitmap;
    reader.object(key("width", bitmap.width, side), key("height", bitmap.height, side),
                  key("rows", bitmap.rows, shared_list_of(bitmap_row)));
    return bitmap;
}

Shared_List<VT_RGB32> texels(const Reader& reader) {
    return std::make_shared<const std::vector<VT_RGB32>>(colors(reader));
}

VT_Matrix matrix(const Reader& reader) {
    const auto elements = numbers<double, 16>("[16 numbers], a matrix row after row")(reader);
    VT_Matrix matrix;
    std::copy(elements.begin(), elements.end(), &matrix.m[0][0]);
    return matrix;
}

Texture texture(const Reader& reader) {
    Texture texture;
    reader.object(key("width", texture.width, side), key("height", texture.height, side),
                  key("texels", texture.texels, own_or_shared(&Shared_Values::texels, "texels", texels)),
                  key("color", texture.color, color), key("matrix", texture.matrix, matrix));
    return texture;
}

Face face(const Reader& reader) {
    Face face;
    reader.object(key("color", face.color, color), key("index", face.index, byte),
                  key("contrast_color", face.contrast_color, color), key("contrast_index", face.contrast_index, byte),
                  key("pattern", face.pattern, not_negative), key("flags", face.flags, flag_word),
                  key("mode", face.mode, any_int), key("bitmap", face.bitmap, bitmap), key("texture", face.texture, texture));
    return face;
}

Line_Element line_element(const Reader& reader) {
    const json& value = reader.value();
    if (value.is_array() && value.size() == 2 && value[0].is_number()) {
        if (const auto kind = whole_or_none<std::int32_t>(value[1])) {
            return {value[0].get<double>(), *kind};
        }
    }
    reader.expected("[length, kind], a number and a whole number");
}

Line_Type line_type(const Reader& reader) {
    Line_Type type;
    reader.object(key("kind", type.kind, any_int), key("width", type.width, number), key("color", type.color, color),
                  key("mode", type.mode, any_int), key("leading", type.leading, number), key("trailing", type.trailing, number),
                  key("elements", type.elements, list_of(line_element)));
    return type;
}

Line_Type_Set line_type_set(const Reader& reader) {
    Line_Type_Set set;
    reader.object(key("per_segment", set.per_segment, boolean), key("scale", set.scale, number),
                  key("types", set.types, shared_list_of(or_null(line_type))));
    return set;
}

Line line(const Reader& reader) {
    Line line;
    reader.object(key("color", line.color, color), key("index", line.index, byte), key("weight", line.weight, any_int),
                  key("style", line.style, any_int), key("flags", line.flags, flag_word), key("mode", line.mode, any_int),
                  key("line_types", line.line_types, or_null(line_type_set)), key("cap", line.cap, any_int),
                  key("join", line.join, any_int));
    return line;
}

Marker marker(const Reader& reader) {
    Marker marker;
    reader.object(key("color", marker.color, color), key("index", marker.index, byte), key("symbol", marker.symbol, any_int),
                  key("size", marker.size, any_int), key("mode", marker.mode, any_int));
    return marker;
}

VT_Point contour_point(const Reader& reader) {
    const auto [x, y] = numbers<float, 2>("[x, y] of numbers")(reader);
    return {x, y, 0};
}

std::vector<VT_Point> contour(const Reader& reader) {
    if (!is_flat(reader)) {
        return list_of(contour_point)(reader);
    }
    const auto numbers = flat_numbers<float>(reader, 2);
    std::vector<VT_Point> contour;
    for (std::size_t i = 0; i < numbers.size(); i += 2) {
        contour.push_back({numbers[i], numbers[i + 1], 0});
    }
    return contour;
}

constexpr auto complex_clip = [](const Reader& reader) { return shared_list_of(contour)(reader); };

Rendition rendition(const Reader& reader) {
    Rendition rendition;
    reader.object(key("hard_clip", rendition.hard_clip, rectangle), key("depth_test", rendition.depth_test, boolean),
                  key("drawing_mode", rendition.drawing_mode, any_int), key("flags", rendition.flags, flag_word),
                  key("complex_clip", rendition.complex_clip,
                      or_null(own_or_shared(&Shared_Values::complex_clips, "complex_clips", complex_clip))),
                  key("window_offset", rendition.window_offset, pair), key("face", rendition.face, face),
                  key("line", rendition.line, line), key("marker", rendition.marker, marker));
    return rendition;
}

std::shared_ptr<const Rendition> own_rendition(const Reader& reader) {
    return std::make_shared<const Rendition>(rendition(reader));
}

// What can only be told of a rendition that nothing will be laid over any more. The reader is that of the last one laid.
void check_complete(const Reader& reader, const Rendition& rendition) {
    if (const auto& bitmap = rendition.face.bitmap) {
        const auto has_width = [&bitmap](const std::string& row) {
            return row.size() == static_cast<std::size_t>(*bitmap->width);
        };
        if (!bitmap->width || !bitmap->height || !bitmap->rows ||
            (*bitmap->rows)->size() != static_cast<std::size_t>(*bitmap->height) ||
            !std::all_of((*bitmap->rows)->begin(), (*bitmap->rows)->end(), has_width)) {
            reader.expected_in("face.bitmap", "width, height, and as many rows of as many cells");
        }
    }
    if (const auto& texture = rendition.face.texture) {
        const bool has_image = texture->width && texture->height && texture->texels;
        if (has_image ? (*texture->texels)->size() !=
                            static_cast<std::size_t>(*texture->width) * static_cast<std::size_t>(*texture->height)
                      : texture->width || texture->height || texture->texels) {
            reader.expected_in("face.texture", "width, height, and width times height texels");
        }
    }
}

// Calls.

template <class... Keys> void read_call(const Reader& reader, Call& call, const Keys&... keys) {
    reader.object(read_elsewhere("call"),
                  key("rendition", call.rendition, own_or_shared(&Shared_Values::renditions, "renditions", own_rendition)),
                  key("standard", call.standard, boolean), keys...);
    if (call.standard && !is_slot(*call.kind)) {
        reader.expected_in("standard", "nothing: this call goes to no slot");
    }
}

void require_count(const Reader& reader, const char* key, std::size_t given, std::size_t needed, const char* what) {
    if (given < needed) {
        reader.expected_in(key, std::to_string(needed) + ", one per " + what + ", not " + std::to_string(given));
    }
}

template <class Point> auto points_key(std::vector<Point>& points) {
    return required("points", points, recording::points<Point>);
}

// Renderers take colorized markers without colours, and lines that have no device coordinates with a depth.
auto colors_or_none(const Call& call) {
    const std::string_view name = call.kind->name;
    const bool needed = name.ends_with("triangle") || (name.ends_with("polyline") && name.starts_with("draw_dc"));
    return [needed](const Reader& reader) { return needed ? std::optional(colors(reader)) : or_null(colors)(reader); };
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Points<Point>& arguments) {
    read_call(reader, call, points_key(arguments.points));
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Colorized<Point>& arguments) {
    read_call(reader, call, points_key(arguments.points), key("colors", arguments.colors, colors_or_none(call)),
              key("single", arguments.single, boolean));
    const char* what = arguments.single                            ? "call with 'single'"
                       : call.kind->name.ends_with("polytriangle") ? "triangle"
                       : call.kind->name.ends_with("polyline")     ? "segment"
                                                                   : "marker";
    if (arguments.colors) {
        require_count(reader, "colors", arguments.colors->size(),
                      colors_of(*call.kind, arguments.points.size(), arguments.single), what);
    }
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Gouraud<Point>& arguments) {
    read_call(reader, call, points_key(arguments.points), key("colors", arguments.colors, colors));
    require_count(reader, "colors", arguments.colors.size(), arguments.points.size(), "point");
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Textured<Point>& arguments) {
    constexpr std::size_t width = Textured<Point>::parameter_width;
    const auto parameters = [](const Reader& list) {
        if (is_flat(list)) {
            return flat_numbers<VT_Parameter>(list, width);
        }
        std::vector<VT_Parameter> flat;
        for (const auto& of_point : list_of(numbers<VT_Parameter, width>("[u, v] of numbers"))(list)) {
            flat.insert(flat.end(), of_point.begin(), of_point.end());
        }
        return flat;
    };
    read_call(reader, call, points_key(arguments.points), key("colors", arguments.colors, colors),
              key("parameters", arguments.parameters, parameters));
    require_count(reader, "colors", arguments.colors.size(), arguments.points.size(), "point");
    require_count(reader, "parameters", arguments.parameters.size() / width, arguments.points.size(), "point");
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Polygon<Point>& arguments) {
    read_call(reader, call, points_key(arguments.points), key("color", arguments.color, color_or_null));
}

void read_arguments(const Reader& reader, Call& call, Dot& arguments) {
    read_call(reader, call, required("point", arguments.point, dci_point), key("color", arguments.color, color_or_null));
}

void read_arguments(const Reader& reader, Call& call, Ellipse& arguments) {
    read_call(reader, call, required("center", arguments.center, dci_point), required("radii", arguments.radii, dci_point),
              key("start", arguments.start, number), key("end", arguments.end, number),
              key("rotation", arguments.rotation, number), key("color", arguments.color, color_or_null));
}

// The first `columns` pixels of the first `rows` rows, which must be there.
template <class Pixel>
Image_Rows<Pixel> cut_rows(const Reader& reader, const char* key, const std::vector<std::vector<Pixel>>& given,
                           std::int64_t columns, std::int64_t rows) {
    if (columns < 1 || rows < 1) {
        return {};
    }
    if (static_cast<std::int64_t>(given.size()) < rows) {
        reader.expected_in(key, std::to_string(rows) + " rows, not " + std::to_string(given.size()));
    }
    Image_Rows<Pixel> cut;
    for (std::int64_t r = 0; r < rows; ++r) {
        const std::vector<Pixel>& row = given[static_cast<std::size_t>(r)];
        if (static_cast<std::int64_t>(row.size()) < columns) {
            reader.expected_in(std::string(key) + '[' + std::to_string(r) + ']',
                               std::to_string(columns) + " values, not " + std::to_string(row.size()));
        }
        cut.pixels.insert(cut.pixels.end(), row.begin(), row.begin() + columns);
    }
    // No row of a document is longer than this.
    cut.row_pixels = static_cast<std::int32_t>(columns);
    return cut;
}

template <class Pixel>
Image_Rows<Pixel> cut_to_corners(const Reader& reader, const char* key, const std::vector<std::vector<Pixel>>& given,
                                 const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right) {
    return cut_rows(reader, key, given, std::int64_t{bottom_right.x} - top_left.x + 1,
                    std::int64_t{top_left.y} - bottom_right.y + 1);
}

template <class Pixel, class Form>
void read_corner_image(const Reader& reader, Call& call, Corner_Image<Pixel>& arguments, Form row) {
    std::vector<std::vector<Pixel>> rows;
    read_call(reader, call, required("start", arguments.start, dci_point), required("end", arguments.end, dci_point),
              required("pixels", rows, list_of(row)));
    arguments.pixels = cut_to_corners(reader, "pixels", rows, arguments.start, arguments.end);
}

void read_arguments(const Reader& reader, Call& call, Index8_Image& arguments) {
    read_corner_image(reader, call, arguments, row_of_bytes);
}

void read_arguments(const Reader& reader, Call& call, RGB32_Image& arguments) {
    read_corner_image(reader, call, arguments, colors);
}

template <class Form> std::vector<std::uint8_t> image_bytes(const Reader& image, const Image& header, Form row) {
    const Reader pixels = image.member("pixels", image.value()["pixels"]);
    const auto rows = cut_rows(image, "pixels", list_of(row)(pixels), header.width, header.height);
    std::vector<std::uint8_t> bytes(rows.pixels.size() * sizeof(rows.pixels[0]));
    std::memcpy(bytes.data(), rows.pixels.data(), bytes.size());
    return bytes;
}

Image image(const Reader& reader) {
    Image image;
    std::int32_t format = 0;
    reader.object(required("format", format, any_int), required("width", image.width, side),
                  required("height", image.height, side), read_elsewhere("pixels"));
    image.format = static_cast<Buffer_Format>(format);
    switch (image.format) {
    case Buffer_Format::index8:
        image.bytes = image_bytes(reader, image, row_of_bytes);
        break;
    case Buffer_Format::depth16:
        image.bytes = image_bytes(reader, image, row_of_depths);
        break;
    case Buffer_Format::rgb32:
    case Buffer_Format::presentation_rgb32:
        image.bytes = image_bytes(reader, image, colors);
        break;
    default:
        reader.expected_in("format", "1, 2, 3 or 9");
    }
    return image;
}

void read_arguments(const Reader& reader, Call& call, Placed_Image& arguments) {
    read_call(reader, call, required("start", arguments.start, dci_point), key("image", arguments.image, or_null(image)));
}

void read_arguments(const Reader& reader, Call& call, Window_Fill& arguments) {
    read_call(reader, call, required("rectangle", arguments.rectangle, rectangle), key("fill", arguments.fill, not_negative),
              key("color", arguments.color, color), key("index", arguments.index, byte));
}

void read_arguments(const Reader& reader, Call& call, Depth_Clear& arguments) {
    read_call(reader, call, required("rectangle", arguments.rectangle, rectangle));
}

void read_arguments(const Reader& reader, Call& call, Depth_Write& arguments) {
    std::optional<std::vector<std::vector<std::uint16_t>>> rows;
    read_call(reader, call, required("top_left", arguments.top_left, dci_point),
              required("bottom_right", arguments.bottom_right, dci_point), key("depths", rows, or_null(list_of(row_of_depths))));
    if (rows) {
        arguments.depths = cut_to_corners(reader, "depths", *rows, arguments.top_left, arguments.bottom_right);
    }
}

void read_arguments(const Reader& reader, Call& call, Image_Read& arguments) {
    std::int32_t format = 0;
    read_call(reader, call, required("top_left", arguments.top_left, dci_point),
              required("bottom_right", arguments.bottom_right, dci_point), required("format", format, any_int));
    arguments.format = static_cast<Buffer_Format>(format);
}

void read_arguments(const Reader& reader, Call& call, ZBuffer_Write& arguments) {
    read_call(reader, call, required("value", arguments.value, boolean));
}

void read_arguments(const Reader& reader, Call& call, ZBuffer_Test& arguments) {
    read_call(reader, call, required("value", arguments.value, any_int));
}

void read_arguments(const Reader& reader, Call&, Establish& arguments) {
    read_configuration(reader, arguments.configuration, read_elsewhere("call"));
}

void read_arguments(const Reader& reader, Call& call, Present& arguments) {
    read_call(reader, call, required("rectangle", arguments.rectangle, rectangle));
}

template <class Type> void read(const Reader& reader, Call& call) {
    Type arguments;
    read_arguments(reader, call, arguments);
    call.arguments = std::move(arguments);
}

// In the order of call_kinds.
constexpr void (*argument_readers[])(const Reader&, Call&) = {
#define VT_ACTION(slot, name, ...) read<Slot_Arguments<&VT_Action_Table::slot>::Type>,
#include "host/action_list.inc"
#undef VT_ACTION
    read<ZBuffer_Write>,
    read<ZBuffer_Test>,
    read<Establish>,
    read<Present>,
};
static_assert(std::size(argument_readers) == std::size(call_kinds));

const Call_Kind& call_kind(const Reader& reader) {
    if (!reader.value().is_string()) {
        reader.expected("the name of a call");
    }
    const auto& name = reader.value().get_ref<const std::string&>();
    const Call_Kind* kind = find_call_kind(name);
    if (!kind) {
        reader.fail("there is no call '" + name + "'");
    }
    return *kind;
}

Call call(const Reader& reader) {
    const json& value = reader.value();
    if (!value.is_object() || !value.contains("call")) {
        reader.expected("an object with the key 'call'");
    }
    Call call;
    call.kind = &call_kind(reader.member("call", value["call"]));
    argument_readers[position_of(*call.kind)](reader, call);
    return call;
}

} // namespace

Recording read_recording(std::string_view text) {
    const json document = parse_document(text);
    Shared_Values shared;
    const Reader reader(document, shared);
    const auto read_shared = [&](const char* name, auto& list, auto form) {
        if (document.is_object() && document.contains(name)) {
            list = list_of(form)(reader.member(name, document[name]));
        }
    };
    read_shared("texels", shared.texels, texels);
    read_shared("complex_clips", shared.complex_clips, complex_clip);
    read_shared("renditions", shared.renditions, own_rendition);
    Recording recording;
    std::int32_t version = 0;
    const auto only_version = [](const Reader& value) {
        if (!value.value().is_number_integer() || value.value() != 1) {
            value.expected("1, the version of the format");
        }
        return 1;
    };
    read_configuration(reader, recording.configuration, required("picture", version, only_version),
                       key("zbuffer_write", recording.zbuffer_write, boolean),
                       key("zbuffer_test", recording.zbuffer_test, any_int), key("output", recording.output, rectangle),
                       key("rendition", recording.rendition, rendition), read_elsewhere("texels", false),
                       read_elsewhere("complex_clips", false), read_elsewhere("renditions", false),
                       required("calls", recording.calls, list_of(call)));

    if (document.contains("rendition")) {
        check_complete(reader.member("rendition", document["rendition"]), recording.rendition);
    }
    for (std::size_t i = 0; i < shared.renditions.size(); ++i) {
        const Reader renditions = reader.member("renditions", document["renditions"]);
        check_complete(renditions.element(i), overlaid(recording.rendition, *shared.renditions[i]));
    }
    const Reader calls = reader.member("calls", document["calls"]);
    for (std::size_t i = 0; i < recording.calls.size(); ++i) {
        const json& call = document["calls"][i];
        if (recording.calls[i].rendition && call["rendition"].is_object()) {
            const Reader own = calls.element(i);
            check_complete(own.member("rendition", call["rendition"]),
                           overlaid(recording.rendition, *recording.calls[i].rendition));
        }
    }
    return recording;
}

} // namespace vorna::drawing::recording
