// The values of recordings, from documents: forms for single values, and for lists that a document may write in a short form: in
// JSON as numbers in a row or as hexadecimal digits, in CBOR as bytes.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
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

// Little-endian numbers in a row of bytes, width of them for each element. Whole numbers count from those of the element before.
template <class Number> std::vector<Number> numbers_of_bytes(const Reader& reader, std::size_t width) {
    std::vector<std::uint8_t> bytes = reader.value().get_binary();
    if (bytes.size() % sizeof(Number) != 0) {
        reader.expected("numbers of " + std::to_string(sizeof(Number)) + " bytes, not " + std::to_string(bytes.size()) +
                        " bytes in all");
    }
    if constexpr (std::endian::native == std::endian::big) {
        for (std::size_t i = 0; i < bytes.size(); i += sizeof(Number)) {
            std::reverse(bytes.data() + i, bytes.data() + i + sizeof(Number));
        }
    }
    std::vector<Number> numbers(bytes.size() / sizeof(Number));
    std::ranges::copy(bytes, reinterpret_cast<std::uint8_t*>(numbers.data()));
    if constexpr (std::is_integral_v<Number>) {
        for (std::size_t i = width; i < numbers.size(); ++i) {
            using Unsigned = std::make_unsigned_t<Number>;
            numbers[i] = static_cast<Number>(static_cast<Unsigned>(numbers[i]) + static_cast<Unsigned>(numbers[i - width]));
        }
    } else {
        if (!std::ranges::all_of(numbers, [](Number number) { return std::isfinite(number); })) {
            reader.expected("finite numbers");
        }
    }
    return numbers;
}

// A list in its short form: width numbers for each element.
template <class Number> std::vector<Number> flat_numbers(const Reader& reader, std::size_t width) {
    const nlohmann::json& value = reader.value();
    std::vector<Number> numbers = value.is_binary() ? numbers_of_bytes<Number>(reader, width) : std::vector<Number>();
    if (const std::size_t given = value.is_binary() ? numbers.size() : value.size(); given % width != 0) {
        reader.expected(std::to_string(width) + " numbers for each, not " + std::to_string(given) + " in all");
    }
    if (value.is_binary()) {
        return numbers;
    }
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

// Whether the value is bytes, or a string of digits that stands for some.
bool has_digits(const Reader& reader);
// The bytes, width of them for each element.
std::vector<std::uint8_t> hexadecimal(const Reader& reader, std::size_t width);
// A string of 0 and 1.
std::string bitmap_row(const Reader& reader);

// A row of pixels: a list of numbers, or digits, the high one first.
template <class Number> std::vector<Number> row_of_numbers(const Reader& reader) {
    if (!has_digits(reader)) {
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
