// Recordings from documents.
#include "drawing/recording/recording_reader.h"

#include <algorithm>

#include "drawing/files/json_release.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/values.h"

namespace vorna::drawing::recording {

namespace {

using nlohmann::json;

constexpr std::int32_t largest_side = 16384;

} // namespace

// The lists whose elements renditions and calls refer to by number.
struct Shared_Values {
    std::vector<Shared_List<VT_RGB32>> texels;
    std::vector<Shared_List<std::vector<VT_Point>>> complex_clips;
    std::vector<std::shared_ptr<const Rendition>> renditions;
};

namespace {

// A value, or the number of one in the document's list.
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

// Members of the form Sized: rows, cut to the size that other members hold. reader: of the list of rows.

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
        const auto* const first = reinterpret_cast<const std::uint8_t*>(read.pixels.data());
        return std::vector<std::uint8_t>(first, first + read.pixels.size() * sizeof(Pixel));
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

// The keys of the group, and other keys before and behind them.
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

// Checks a rendition after all overlays. reader: of the topmost one.
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

// Calls. Checks beyond the keys: an overload for each kind of arguments that has any.

void require_count(const Reader& reader, const char* key, std::size_t given, std::size_t needed, const char* what) {
    if (given < needed) {
        reader.expected_in(key, std::to_string(needed) + ", one per " + what + ", not " + std::to_string(given));
    }
}

template <class Type> void check_arguments(const Reader&, const Call&, const Type&) {
}

// Renderers accept missing colours for markers, and for lines that are not in device coordinates.
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

Recording read_recording(std::string_view bytes, const std::function<void(std::size_t)>& take_memory) {
    const Released_Json<json> owned(parse_document(bytes, take_memory));
    const json& document = *owned;
    if (take_memory && document.is_object()) {
        // What small values become.
        constexpr std::size_t control_block = 32;
        const auto take_list = [&](const char* name, std::size_t bytes_each) {
            if (const auto list = document.find(name); list != document.end() && list->is_array()) {
                take_memory(list->size() * bytes_each);
            }
        };
        take_list("renditions", sizeof(Rendition) + sizeof(std::shared_ptr<const Rendition>) + control_block);
        take_list("calls", sizeof(Call) + sizeof(Rendition) + control_block);
    }
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
