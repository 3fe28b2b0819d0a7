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

// Arrays that stand for one value; errors name the whole array.

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

VT_Int_RGB cube_levels(const Reader& reader) {
    const VT_Int_RGB levels = whole_color(reader);
    if (levels.red < 1 || levels.green < 1 || levels.blue < 1) {
        reader.expected("[r, g, b], each 1 to 255");
    }
    return levels;
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

Option_Settings option_settings(const Reader& reader) {
    if (!reader.value().is_object()) {
        reader.expected("an object");
    }
    Option_Settings settings;
    for (const auto& [name, value] : reader.value().items()) {
        settings.emplace_back(name, option_setting(reader.member(name, value)));
    }
    return settings;
}

std::string bitmap_row(const Reader& reader) {
    const json& value = reader.value();
    if (!value.is_string() || value.get_ref<const std::string&>().find_first_not_of("01") != std::string::npos) {
        reader.expected("a string of 0 and 1");
    }
    return value.get<std::string>();
}

VT_Matrix matrix(const Reader& reader) {
    const auto elements = numbers<double, 16>("[16 numbers], a matrix row after row")(reader);
    VT_Matrix matrix;
    std::copy(elements.begin(), elements.end(), &matrix.m[0][0]);
    return matrix;
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

// Pairs of texture parameters, or the parameters in a row.
std::vector<VT_Parameter> parameters(const Reader& reader) {
    if (is_flat(reader)) {
        return flat_numbers<VT_Parameter>(reader, parameter_width);
    }
    std::vector<VT_Parameter> flat;
    for (const auto& of_point : list_of(numbers<VT_Parameter, parameter_width>("[u, v] of numbers"))(reader)) {
        flat.insert(flat.end(), of_point.begin(), of_point.end());
    }
    return flat;
}

// The value of each type and form.

template <class Value> struct As {};

template <Keyed Group> Group read_as(As<Group>, form::Plain, const Reader& reader);

bool read_as(As<bool>, form::Plain, const Reader& reader) {
    return boolean(reader);
}

template <std::integral Integer> Integer read_as(As<Integer>, form::Plain, const Reader& reader) {
    return whole<Integer>()(reader);
}

std::int32_t read_as(As<std::int32_t>, form::Side, const Reader& reader) {
    return whole<std::int32_t>(1, largest_side)(reader);
}

std::int32_t read_as(As<std::int32_t>, form::Not_Negative, const Reader& reader) {
    return whole<std::int32_t>(0)(reader);
}

std::int32_t read_as(As<std::int32_t>, form::Byte, const Reader& reader) {
    return whole<std::uint8_t>()(reader);
}

double read_as(As<double>, form::Plain, const Reader& reader) {
    return number(reader);
}

Buffer_Format read_as(As<Buffer_Format>, form::Plain, const Reader& reader) {
    return static_cast<Buffer_Format>(whole<std::int32_t>()(reader));
}

VT_RGB32 read_as(As<VT_RGB32>, form::Plain, const Reader& reader) {
    return color(reader);
}

VT_Int_RGB read_as(As<VT_Int_RGB>, form::Cube_Levels, const Reader& reader) {
    return cube_levels(reader);
}

VT_Int_Pair read_as(As<VT_Int_Pair>, form::Plain, const Reader& reader) {
    return pair(reader);
}

VT_Int_Rectangle read_as(As<VT_Int_Rectangle>, form::Plain, const Reader& reader) {
    return rectangle(reader);
}

VT_DCI_Point read_as(As<VT_DCI_Point>, form::Plain, const Reader& reader) {
    return point<VT_DCI_Point>(reader);
}

VT_Matrix read_as(As<VT_Matrix>, form::Plain, const Reader& reader) {
    return matrix(reader);
}

template <class Point> std::vector<Point> read_as(As<std::vector<Point>>, form::Plain, const Reader& reader) {
    return points<Point>(reader);
}

std::vector<VT_RGB32> read_as(As<std::vector<VT_RGB32>>, form::Plain, const Reader& reader) {
    return colors(reader);
}

std::vector<VT_RGB32> read_as(As<std::vector<VT_RGB32>>, form::Opaque_Colors, const Reader& reader) {
    return list_of(opaque_color, 1, 256)(reader);
}

std::vector<VT_Parameter> read_as(As<std::vector<VT_Parameter>>, form::Plain, const Reader& reader) {
    return parameters(reader);
}

std::vector<Line_Element> read_as(As<std::vector<Line_Element>>, form::Plain, const Reader& reader) {
    return list_of(line_element)(reader);
}

Option_Settings read_as(As<Option_Settings>, form::Plain, const Reader& reader) {
    return option_settings(reader);
}

Shared_List<std::string> read_as(As<Shared_List<std::string>>, form::Plain, const Reader& reader) {
    return shared_list_of(bitmap_row)(reader);
}

Shared_List<VT_RGB32> texels(const Reader& reader) {
    return std::make_shared<const std::vector<VT_RGB32>>(colors(reader));
}

Shared_List<VT_RGB32> read_as(As<Shared_List<VT_RGB32>>, form::Plain, const Reader& reader) {
    return own_or_shared(&Shared_Values::texels, "texels", texels)(reader);
}

Shared_List<std::vector<VT_Point>> complex_clip(const Reader& reader) {
    return shared_list_of(contour)(reader);
}

Shared_List<std::vector<VT_Point>> read_as(As<Shared_List<std::vector<VT_Point>>>, form::Plain, const Reader& reader) {
    return own_or_shared(&Shared_Values::complex_clips, "complex_clips", complex_clip)(reader);
}

Shared_List<std::optional<Line_Type>> read_as(As<Shared_List<std::optional<Line_Type>>>, form::Plain, const Reader& reader) {
    return shared_list_of(or_null([](const Reader& type) { return read_as(As<Line_Type>(), form::Plain(), type); }))(reader);
}

template <class Value, class Form> std::optional<Value> read_as(As<std::optional<Value>>, Form form, const Reader& reader) {
    return read_as(As<Value>(), form, reader);
}

template <class Value> std::optional<Value> read_as(As<std::optional<Value>>, form::Nullable, const Reader& reader) {
    return or_null([](const Reader& value) { return read_as(As<Value>(), form::Plain(), value); })(reader);
}

template <class Value>
std::optional<std::optional<Value>> read_as(As<std::optional<std::optional<Value>>>, form::Plain, const Reader& reader) {
    return read_as(As<std::optional<Value>>(), form::Nullable(), reader);
}

// Members whose form is Sized: rows that are cut to the size that the other members tell. reader: of the list of rows.

template <class Pixel> std::vector<Pixel> read_row(As<Pixel>, const Reader& reader) {
    return row_of_numbers<Pixel>(reader);
}

std::vector<VT_RGB32> read_row(As<VT_RGB32>, const Reader& reader) {
    return colors(reader);
}

template <class Pixel> Image_Rows<Pixel> read_rows(const Reader& reader, const Corner_Size& size) {
    const auto given = list_of([](const Reader& row) { return read_row(As<Pixel>(), row); })(reader);
    if (size.columns < 1 || size.rows < 1) {
        return {};
    }
    if (static_cast<std::int64_t>(given.size()) < size.rows) {
        reader.expected(std::to_string(size.rows) + " rows, not " + std::to_string(given.size()));
    }
    Image_Rows<Pixel> cut;
    for (std::int64_t r = 0; r < size.rows; ++r) {
        const auto& row = given[static_cast<std::size_t>(r)];
        if (static_cast<std::int64_t>(row.size()) < size.columns) {
            const std::string found = std::to_string(row.size());
            reader.element(static_cast<std::size_t>(r)).expected(std::to_string(size.columns) + " values, not " + found);
        }
        cut.pixels.insert(cut.pixels.end(), row.begin(), row.begin() + size.columns);
    }
    // No row of a document is longer than this.
    cut.row_pixels = static_cast<std::int32_t>(size.columns);
    return cut;
}

template <class Pixel> Image_Rows<Pixel> read_sized(const Reader&, const Reader& rows, const Corner_Image<Pixel>& image) {
    return read_rows<Pixel>(rows, corner_size(image.start, image.end));
}

std::optional<Image_Rows<std::uint16_t>> read_sized(const Reader&, const Reader& rows, const Depth_Write& write) {
    return or_null([&](const Reader& depths) {
        return read_rows<std::uint16_t>(depths, corner_size(write.top_left, write.bottom_right));
    })(rows);
}

std::vector<std::uint8_t> read_sized(const Reader& reader, const Reader& rows, const Image& image) {
    const auto bytes_of = [&]<class Pixel>(As<Pixel>) {
        const auto read = read_rows<Pixel>(rows, {image.width, image.height});
        std::vector<std::uint8_t> bytes(read.pixels.size() * sizeof(Pixel));
        std::memcpy(bytes.data(), read.pixels.data(), bytes.size());
        return bytes;
    };
    switch (image.format) {
    case Buffer_Format::index8:
        return bytes_of(As<std::uint8_t>());
    case Buffer_Format::depth16:
        return bytes_of(As<std::uint16_t>());
    case Buffer_Format::rgb32:
    case Buffer_Format::presentation_rgb32:
        return bytes_of(As<VT_RGB32>());
    default:
        reader.expected_in("format", "1, 2, 3 or 9");
    }
}

// Groups of keys.

template <class Field, class Form> constexpr bool has_form = std::is_same_v<std::remove_cvref_t<decltype(Field::form)>, Form>;

// A key for each field, and those of inlined groups.
template <Keyed Group> auto keys_into(Group& group) {
    const auto keys_of = [&group]<class Field>(const Field& field) {
        auto& member = group.*field.member;
        if constexpr (has_form<Field, form::Inlined>) {
            return keys_into(member);
        } else if constexpr (has_form<Field, form::Sized>) {
            return std::tuple(read_elsewhere(field.name, field.presence == Presence::required));
        } else {
            const auto read = [&member, form = field.form](const Reader& value) {
                member = read_as(As<typename Field::Value>(), form, value);
            };
            return std::tuple(Key<decltype(read)>{field.name, field.presence == Presence::required, read});
        }
    };
    return std::apply([&](const auto&... field) { return std::tuple_cat(keys_of(field)...); }, Group::keys);
}

// The keys of the group and others, which stand before and behind them.
template <Keyed Group, class... Before, class... Behind>
void read_group(const Reader& reader, std::tuple<Before...> before, Group& group, std::tuple<Behind...> behind = {}) {
    std::apply([&](const auto&... key) { reader.object(key...); }, std::tuple_cat(before, keys_into(group), behind));
    for_each_field<Group>([&]<class Field>(const Field& field) {
        if constexpr (has_form<Field, form::Sized>) {
            if (const auto value = reader.value().find(field.name); value != reader.value().end()) {
                group.*field.member = read_sized(reader, reader.member(field.name, *value), group);
            }
        }
    });
}

template <Keyed Group> Group read_as(As<Group>, form::Plain, const Reader& reader) {
    Group group;
    read_group(reader, std::tuple(), group);
    return group;
}

Rendition rendition(const Reader& reader) {
    return read_as(As<Rendition>(), form::Plain(), reader);
}

std::shared_ptr<const Rendition> own_rendition(const Reader& reader) {
    return std::make_shared<const Rendition>(rendition(reader));
}

// Checks a rendition that nothing is laid over any more. reader: of the topmost one.
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

// Calls. What a call needs besides its keys: an overload for each kind of arguments that needs something.

void require_count(const Reader& reader, const char* key, std::size_t given, std::size_t needed, const char* what) {
    if (given < needed) {
        reader.expected_in(key, std::to_string(needed) + ", one per " + what + ", not " + std::to_string(given));
    }
}

template <class Type> void check_arguments(const Reader&, const Call&, const Type&) {
}

// Renderers take colorized markers without colours, and lines that have no device coordinates with a depth.
template <class Point> void check_arguments(const Reader& reader, const Call& call, const Colorized<Point>& arguments) {
    const std::string_view name = call.kind->name;
    const bool needs_colors = name.ends_with("triangle") || (name.ends_with("polyline") && name.starts_with("draw_dc"));
    if (!arguments.colors) {
        if (needs_colors) {
            reader.expected_in("colors", "a list");
        }
        return;
    }
    const char* what = arguments.single                 ? "call with 'single'"
                       : name.ends_with("polytriangle") ? "triangle"
                       : name.ends_with("polyline")     ? "segment"
                                                        : "marker";
    require_count(reader, "colors", arguments.colors->size(), colors_of(*call.kind, arguments.points.size(), arguments.single),
                  what);
}

template <class Point> void check_arguments(const Reader& reader, const Call&, const Gouraud<Point>& arguments) {
    require_count(reader, "colors", arguments.colors.size(), arguments.points.size(), "point");
}

template <class Point> void check_arguments(const Reader& reader, const Call&, const Textured<Point>& arguments) {
    require_count(reader, "colors", arguments.colors.size(), arguments.points.size(), "point");
    require_count(reader, "parameters", arguments.parameters.size() / parameter_width, arguments.points.size(), "point");
}

template <class Type> void read(const Reader& reader, Call& call) {
    Type arguments;
    if constexpr (std::is_same_v<Type, Establish>) {
        read_group(reader, std::tuple(read_elsewhere("call")), arguments);
    } else {
        const auto rendition = own_or_shared(&Shared_Values::renditions, "renditions", own_rendition);
        read_group(reader,
                   std::tuple(read_elsewhere("call"), key("rendition", call.rendition, rendition),
                              key("standard", call.standard, boolean)),
                   arguments);
        if (call.standard && !is_slot(*call.kind)) {
            reader.expected_in("standard", "nothing: this call goes to no slot");
        }
        check_arguments(reader, call, arguments);
    }
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
    auto& [configuration, zbuffer_write, zbuffer_test, output, own, calls] = recording;
    read_group(reader, std::tuple(), configuration,
               std::tuple(required_key("picture", version, only_version), key("zbuffer_write", zbuffer_write, boolean),
                          key("zbuffer_test", zbuffer_test, whole<std::int32_t>()), key("output", output, rectangle),
                          key("rendition", own, rendition), read_elsewhere("texels", false),
                          read_elsewhere("complex_clips", false), read_elsewhere("renditions", false),
                          required_key("calls", calls, list_of(call))));

    if (document.contains("rendition")) {
        check_complete(reader.member("rendition", document["rendition"]), recording.rendition);
    }
    for (std::size_t i = 0; i < shared.renditions.size(); ++i) {
        const Reader renditions = reader.member("renditions", document["renditions"]);
        check_complete(renditions.element(i), overlaid(recording.rendition, *shared.renditions[i]));
    }
    const Reader call_list = reader.member("calls", document["calls"]);
    for (std::size_t i = 0; i < recording.calls.size(); ++i) {
        const json& call = document["calls"][i];
        if (recording.calls[i].rendition && call["rendition"].is_object()) {
            const Reader reader_of_call = call_list.element(i);
            check_complete(reader_of_call.member("rendition", call["rendition"]),
                           overlaid(recording.rendition, *recording.calls[i].rendition));
        }
    }
    return recording;
}

} // namespace vorna::drawing::recording
