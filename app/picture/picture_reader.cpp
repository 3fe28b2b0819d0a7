// Pictures from JSON documents.
#include "app/picture/picture_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "app/picture/call_kinds.h"
#include "app/picture/reader.h"

namespace app::picture {

namespace {

using nlohmann::json;

constexpr std::int32_t largest_side = 16384;

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

std::int32_t texture_side(const Reader& reader) {
    const std::int32_t size = side(reader);
    if (!std::has_single_bit(static_cast<std::uint32_t>(size))) {
        reader.expected("a power of two");
    }
    return size;
}

Texture texture(const Reader& reader) {
    Texture texture;
    reader.object(key("width", texture.width, texture_side), key("height", texture.height, texture_side),
                  key("texels", texture.texels, shared_list_of(color)));
    return texture;
}

Face face(const Reader& reader) {
    Face face;
    reader.object(key("color", face.color, color), key("index", face.index, byte),
                  key("contrast_color", face.contrast_color, color), key("contrast_index", face.contrast_index, byte),
                  key("pattern", face.pattern, not_negative), key("flags", face.flags, flag_word),
                  key("bitmap", face.bitmap, bitmap), key("texture", face.texture, texture));
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
                  key("style", line.style, any_int), key("flags", line.flags, flag_word),
                  key("line_types", line.line_types, or_null(line_type_set)), key("cap", line.cap, any_int),
                  key("join", line.join, any_int));
    return line;
}

Marker marker(const Reader& reader) {
    Marker marker;
    reader.object(key("color", marker.color, color), key("index", marker.index, byte), key("symbol", marker.symbol, any_int),
                  key("size", marker.size, any_int));
    return marker;
}

VT_Point contour_point(const Reader& reader) {
    const auto [x, y] = numbers<float, 2>("[x, y] of numbers")(reader);
    return {x, y, 0};
}

Rendition rendition(const Reader& reader) {
    Rendition rendition;
    reader.object(key("hard_clip", rendition.hard_clip, rectangle), key("depth_test", rendition.depth_test, boolean),
                  key("drawing_mode", rendition.drawing_mode, any_int), key("flags", rendition.flags, flag_word),
                  key("complex_clip", rendition.complex_clip, or_null(shared_list_of(list_of(contour_point)))),
                  key("window_offset", rendition.window_offset, pair), key("face", rendition.face, face),
                  key("line", rendition.line, line), key("marker", rendition.marker, marker));
    return rendition;
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
        if (!texture->width || !texture->height || !texture->texels ||
            (*texture->texels)->size() !=
                static_cast<std::size_t>(*texture->width) * static_cast<std::size_t>(*texture->height)) {
            reader.expected_in("face.texture", "width, height, and width times height texels");
        }
    }
}

// Calls.

template <class... Keys> void read_call(const Reader& reader, Call& call, const Keys&... keys) {
    reader.object(read_elsewhere("call"), key("rendition", call.rendition, rendition), key("standard", call.standard, boolean),
                  keys...);
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
    return required("points", points, list_of(point<Point>));
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Points<Point>& arguments) {
    read_call(reader, call, points_key(arguments.points));
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Colorized<Point>& arguments) {
    read_call(reader, call, points_key(arguments.points), key("colors", arguments.colors, list_of(color)),
              key("single", arguments.single, boolean));
    const auto [what, fewer] = call.kind->name.ends_with("polytriangle") ? std::pair("triangle", std::size_t{2})
                               : call.kind->name.ends_with("polyline")   ? std::pair("segment", std::size_t{1})
                                                                         : std::pair("marker", std::size_t{0});
    const std::size_t count = arguments.points.size() - std::min(arguments.points.size(), fewer);
    if (arguments.single) {
        require_count(reader, "colors", arguments.colors.size(), std::min<std::size_t>(count, 1), "call with 'single'");
    } else {
        require_count(reader, "colors", arguments.colors.size(), count, what);
    }
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Gouraud<Point>& arguments) {
    read_call(reader, call, points_key(arguments.points), key("colors", arguments.colors, list_of(color)));
    require_count(reader, "colors", arguments.colors.size(), arguments.points.size(), "point");
}

template <class Point> void read_arguments(const Reader& reader, Call& call, Textured<Point>& arguments) {
    std::vector<std::array<VT_Parameter, Textured<Point>::parameter_width>> parameters;
    read_call(
        reader, call, points_key(arguments.points), key("colors", arguments.colors, list_of(color)),
        key("parameters", parameters, list_of(numbers<VT_Parameter, Textured<Point>::parameter_width>("[u, v] of numbers"))));
    require_count(reader, "colors", arguments.colors.size(), arguments.points.size(), "point");
    require_count(reader, "parameters", parameters.size(), arguments.points.size(), "point");
    for (const auto& of_point : parameters) {
        arguments.parameters.insert(arguments.parameters.end(), of_point.begin(), of_point.end());
    }
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
void read_corner_image(const Reader& reader, Call& call, Corner_Image<Pixel>& arguments, Form pixel) {
    std::vector<std::vector<Pixel>> rows;
    read_call(reader, call, required("start", arguments.start, dci_point), required("end", arguments.end, dci_point),
              required("pixels", rows, list_of(list_of(pixel))));
    arguments.pixels = cut_to_corners(reader, "pixels", rows, arguments.start, arguments.end);
}

void read_arguments(const Reader& reader, Call& call, Index8_Image& arguments) {
    read_corner_image(reader, call, arguments, byte);
}

void read_arguments(const Reader& reader, Call& call, RGB32_Image& arguments) {
    read_corner_image(reader, call, arguments, color);
}

template <class Form> std::vector<std::uint8_t> image_bytes(const Reader& image, const Image& header, Form pixel) {
    const Reader pixels = image.member("pixels", image.value()["pixels"]);
    const auto rows = cut_rows(image, "pixels", list_of(list_of(pixel))(pixels), header.width, header.height);
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
        image.bytes = image_bytes(reader, image, byte);
        break;
    case Buffer_Format::depth16:
        image.bytes = image_bytes(reader, image, whole<std::uint16_t>());
        break;
    case Buffer_Format::rgb32:
    case Buffer_Format::presentation_rgb32:
        image.bytes = image_bytes(reader, image, color);
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
              required("bottom_right", arguments.bottom_right, dci_point),
              key("depths", rows, or_null(list_of(list_of(whole<std::uint16_t>())))));
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
#define VT_ACTION(slot, name, ...) read<Slot_Arguments<&Action_Table::slot>::Type>,
#include "renderer/host/action_list.inc"
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

Picture read_picture(std::string_view text) {
    const json document = parse_document(text);
    const Reader reader(document);
    Picture picture;
    std::int32_t version = 0;
    const auto only_version = [](const Reader& value) {
        if (!value.value().is_number_integer() || value.value() != 1) {
            value.expected("1, the version of the format");
        }
        return 1;
    };
    read_configuration(reader, picture.configuration, required("picture", version, only_version),
                       key("zbuffer_write", picture.zbuffer_write, boolean), key("zbuffer_test", picture.zbuffer_test, any_int),
                       key("rendition", picture.rendition, rendition), required("calls", picture.calls, list_of(call)));

    if (document.contains("rendition")) {
        check_complete(reader.member("rendition", document["rendition"]), picture.rendition);
    }
    const Reader calls = reader.member("calls", document["calls"]);
    for (std::size_t i = 0; i < picture.calls.size(); ++i) {
        if (const auto& own = picture.calls[i].rendition) {
            const Reader call = calls.element(i);
            check_complete(call.member("rendition", call.value()["rendition"]), overlaid(picture.rendition, *own));
        }
    }
    return picture;
}

} // namespace app::picture
