// The values of recordings, from documents.
#include "drawing/recording/values.h"

#include <algorithm>

namespace vorna::drawing::recording {

namespace {

using nlohmann::json;

constexpr int digit_value(char digit) noexcept {
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
           : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
                                          : -1;
}

VT_Int_RGB whole_color(const Reader& reader) {
    const VT_RGB32 read = opaque_color(reader);
    return {read.red, read.green, read.blue};
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

VT_Point contour_point(const Reader& reader) {
    const auto [x, y] = numbers<float, 2>("[x, y] of numbers")(reader);
    return {x, y, 0};
}

} // namespace

bool is_flat(const Reader& reader) {
    const json& value = reader.value();
    return value.is_binary() || (value.is_array() && !value.empty() && value[0].is_number());
}

bool has_digits(const Reader& reader) {
    return reader.value().is_binary() || reader.value().is_string();
}

std::vector<std::uint8_t> hexadecimal(const Reader& reader, std::size_t width) {
    if (reader.value().is_binary()) {
        const std::vector<std::uint8_t>& bytes = reader.value().get_binary();
        if (bytes.size() % width != 0) {
            reader.expected(std::to_string(width) + " bytes for each, not " + std::to_string(bytes.size()) + " in all");
        }
        return bytes;
    }
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

VT_RGB32 opaque_color(const Reader& reader) {
    if (reader.value().size() != 3) {
        reader.expected("[r, g, b], each 0 to 255");
    }
    return color(reader);
}

std::vector<VT_RGB32> colors(const Reader& reader) {
    if (!has_digits(reader)) {
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

VT_Int_Pair pair(const Reader& reader) {
    const auto [x, y] = numbers<std::int32_t, 2>("[x, y] of whole numbers of 32 bits")(reader);
    return {x, y};
}

VT_Int_Rectangle rectangle(const Reader& reader) {
    const auto [left, right, bottom, top] =
        numbers<std::int32_t, 4>("[x min, x max, y min, y max] of whole numbers of 32 bits")(reader);
    return {left, right, bottom, top};
}

VT_Int_RGB cube_levels(const Reader& reader) {
    const VT_Int_RGB levels = whole_color(reader);
    if (levels.red < 1 || levels.green < 1 || levels.blue < 1) {
        reader.expected("[r, g, b], each 1 to 255");
    }
    return levels;
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

Line_Element line_element(const Reader& reader) {
    const json& value = reader.value();
    if (value.is_array() && value.size() == 2 && value[0].is_number()) {
        if (const auto kind = whole_or_none<std::int32_t>(value[1])) {
            return {value[0].get<double>(), *kind};
        }
    }
    reader.expected("[length, kind], a number and a whole number");
}

} // namespace vorna::drawing::recording
