// The header of a PLY file: its elements and their properties.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/model/ply_values.h"
#include "drawing/model/text_cursor.h"

namespace vorna::drawing::model {

struct Ply_Property {
    std::string name;
    Scalar scalar = Scalar::float32;
    std::optional<Scalar> count; // of a list
};

struct Ply_Element {
    std::string name;
    std::int64_t count = 0;
    std::vector<Ply_Property> properties;

    std::size_t find(std::string_view property) const {
        const auto found = std::ranges::find(properties, property, &Ply_Property::name);
        return static_cast<std::size_t>(found - properties.begin());
    }
    bool has(std::string_view property) const { return find(property) < properties.size(); }
};

enum class Ply_Encoding { text, little_endian, big_endian };

struct Ply_Header {
    Ply_Encoding encoding = Ply_Encoding::text;
    std::vector<std::string> textures; // names of images
    std::vector<Ply_Element> elements;
};

// The cursor is at the beginning of the file and behind the header afterwards. Throws Model_Error.
Ply_Header read_ply_header(Text_Cursor& cursor);

} // namespace vorna::drawing::model
