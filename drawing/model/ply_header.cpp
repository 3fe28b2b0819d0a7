// The header of a PLY file.
#include "drawing/model/ply_header.h"

#include <array>
#include <utility>

namespace vorna::drawing::model {
namespace {

struct Scalar_Name {
    std::string_view name;
    Scalar scalar;
};

constexpr std::array scalar_names{
    Scalar_Name{"char", Scalar::int8},       Scalar_Name{"int8", Scalar::int8},       Scalar_Name{"uchar", Scalar::uint8},
    Scalar_Name{"uint8", Scalar::uint8},     Scalar_Name{"short", Scalar::int16},     Scalar_Name{"int16", Scalar::int16},
    Scalar_Name{"ushort", Scalar::uint16},   Scalar_Name{"uint16", Scalar::uint16},   Scalar_Name{"int", Scalar::int32},
    Scalar_Name{"int32", Scalar::int32},     Scalar_Name{"uint", Scalar::uint32},     Scalar_Name{"uint32", Scalar::uint32},
    Scalar_Name{"float", Scalar::float32},   Scalar_Name{"float32", Scalar::float32}, Scalar_Name{"double", Scalar::float64},
    Scalar_Name{"float64", Scalar::float64}, Scalar_Name{"int8_t", Scalar::int8},     Scalar_Name{"uint8_t", Scalar::uint8},
    Scalar_Name{"int16_t", Scalar::int16},   Scalar_Name{"uint16_t", Scalar::uint16}, Scalar_Name{"int32_t", Scalar::int32},
    Scalar_Name{"uint32_t", Scalar::uint32}};

Scalar read_scalar_name(Text_Cursor& cursor) {
    cursor.skip_blanks();
    Text_Cursor before = cursor;
    const auto found = std::ranges::find(scalar_names, cursor.word(), &Scalar_Name::name);
    if (found == scalar_names.end()) {
        before.fail("a property type");
    }
    return found->scalar;
}

Ply_Property read_property(Text_Cursor& cursor) {
    Ply_Property property;
    Text_Cursor before = cursor;
    if (cursor.word() == "list") {
        property.count = read_scalar_name(cursor);
    } else {
        cursor = before;
    }
    property.scalar = read_scalar_name(cursor);
    property.name = cursor.word();
    return property;
}

} // namespace

// Lines that begin with another word are comments: old exporters write some without saying so.
Ply_Header read_ply_header(Text_Cursor& cursor) {
    Ply_Header header;
    if (Text_Cursor before = cursor; cursor.word() != "ply") {
        before.fail("'ply'");
    }
    for (cursor.next_line(); !cursor.at_end(); cursor.next_line()) {
        cursor.skip_blanks();
        Text_Cursor before = cursor;
        const std::string_view keyword = cursor.word();
        if (keyword == "end_header") {
            cursor.next_line();
            return header;
        }
        if (keyword == "format") {
            Text_Cursor at_format = cursor;
            const std::string_view format = cursor.word();
            if (format == "ascii") {
                header.encoding = Ply_Encoding::text;
            } else if (format == "binary_little_endian") {
                header.encoding = Ply_Encoding::little_endian;
            } else if (format == "binary_big_endian") {
                header.encoding = Ply_Encoding::big_endian;
            } else {
                at_format.fail("'ascii', 'binary_little_endian' or 'binary_big_endian'");
            }
        } else if (keyword == "element") {
            Ply_Element element;
            element.name = cursor.word();
            Text_Cursor at_count = cursor;
            element.count = cursor.integer("a count");
            if (element.count < 0) {
                at_count.fail("a count");
            }
            if (element.name == "vertex" &&
                std::ranges::find(header.elements, element.name, &Ply_Element::name) != header.elements.end()) {
                before.fail("a single element 'vertex'"); // lists of attributes must be as long as that of positions
            }
            header.elements.push_back(std::move(element));
        } else if (keyword == "property") {
            if (header.elements.empty()) {
                before.fail("'element' before the first property");
            }
            header.elements.back().properties.push_back(read_property(cursor));
        } else if (Text_Cursor words = cursor; keyword == "comment" && words.word() == "TextureFile") {
            header.textures.emplace_back(words.rest_of_line());
        }
    }
    cursor.fail("'end_header'");
}

} // namespace vorna::drawing::model
