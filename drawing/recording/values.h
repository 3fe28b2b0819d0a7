// The values of recordings, from JSON: forms for single values, and for lists that a document may write in a short form, as
// numbers in a row or as hexadecimal digits.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "drawing/recording/reader.h"
#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// Numbers.

// An array of Size numbers that stands for one value: errors name the whole array, as an array of `what`.
template <class Number, std::size_t Size> auto numbers(const char* what) {
    return [what](const Reader& reader) {
        const nlohmann::json& value = reader.value();
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
    const nlohmann::json& value = reader.value();
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

// Whether the value is a list in its short form.
bool is_flat(const Reader& reader);

// A list in its short form: width numbers for each element.
template <class Number> std::vector<Number> flat_numbers(const Reader& reader, std::size_t width) {
    const nlohmann::json& value = reader.value();
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

// Points, each [x, y] or [x, y, z]; in the short form x, y, z of one after the other.
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

VT_Int_Pair pair(const Reader& reader);
VT_Int_Rectangle rectangle(const Reader& reader);
VT_Matrix matrix(const Reader& reader);
Line_Element line_element(const Reader& reader);
// Texture parameters, each [u, v]; flat in the result.
std::vector<VT_Parameter> parameters(const Reader& reader);
// Points of a clip region, each [x, y].
std::vector<VT_Point> contour(const Reader& reader);

// Digits.

// The bytes of a string of hexadecimal digits: width bytes for each element.
std::vector<std::uint8_t> hexadecimal(const Reader& reader, std::size_t width);
// A string of 0 and 1.
std::string bitmap_row(const Reader& reader);

// A row of pixels: a list of numbers, or a string of hexadecimal digits, the high digit first.
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

// Colours.

VT_RGB32 color(const Reader& reader);
VT_RGB32 opaque_color(const Reader& reader);
// A list of colours, or a string of eight digits for each.
std::vector<VT_RGB32> colors(const Reader& reader);
VT_Int_RGB cube_levels(const Reader& reader);

Option_Settings option_settings(const Reader& reader);

} // namespace vorna::drawing::recording
