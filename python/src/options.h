// Keyword arguments as members of settings.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "python/src/arrays.h"

namespace vorna::python {

template <class Value> struct Choice {
    const char* name;
    Value value;
};

// Throws what the object throws that has no truth.
inline bool truth_of(const py::object& value) {
    const int truth = PyObject_IsTrue(value.ptr());
    if (truth < 0) {
        throw py::error_already_set();
    }
    return truth == 1;
}

// A dictionary of arguments. Those that are absent or None leave the member as it is. All throw ValueError that names the
// argument.
class Options {
public:
    explicit Options(py::dict values) : values_(std::move(values)) {}

    py::object operator[](const char* name) const {
        return values_.contains(name) ? py::object(values_[name]) : py::object(py::none());
    }

    template <class Number> void number(const char* name, Number& member) const {
        if (const py::object value = (*this)[name]; !value.is_none()) {
            member = number_of<Number>(name, value);
        }
    }
    void flag(const char* name, bool& member) const {
        if (const py::object value = (*this)[name]; !value.is_none()) {
            member = truth_of(value);
        }
    }
    void text(const char* name, std::string& member) const {
        if (const py::object value = (*this)[name]; !value.is_none()) {
            if (!py::isinstance<py::str>(value) && !py::isinstance<py::bytes>(value)) { // bytes: of a path
                refuse(name, "a text", py::repr(value).cast<std::string>());
            }
            member = utf8_of(name, value);
        }
    }
    template <class Color> void color(const char* name, Color& member) const {
        if (const py::object value = (*this)[name]; !value.is_none()) {
            const VT_RGB32 found = color_of(name, value);
            member = found;
        }
    }
    template <class Value, std::size_t count>
    void choice(const char* name, Value& member, const Choice<Value> (&choices)[count]) const {
        if (const py::object value = (*this)[name]; !value.is_none()) {
            member = chosen(name, value, choices);
        }
    }
    // Calls take(number...) for as many numbers as it takes.
    template <std::size_t count> std::optional<std::array<double, count>> numbers(const char* name) const {
        const py::object value = (*this)[name];
        if (value.is_none()) {
            return {};
        }
        py::object kept;
        const Rows_View rows = rows_of(name, value, kept);
        if (rows.count != static_cast<py::ssize_t>(count) || rows.columns != 1) {
            refuse(name, std::to_string(count) + " numbers", py::repr(value).cast<std::string>());
        }
        std::array<double, count> found;
        convert_rows(name, rows, 1, found.data());
        return found;
    }

    // expected: for messages; null = a number.
    template <class Number> static Number number_of(const char* name, const py::object& value, const char* expected = nullptr) {
        try {
            return value.cast<Number>();
        } catch (const py::cast_error&) {
            const char* const usual = std::is_floating_point_v<Number> ? "a number" : "a whole number that fits";
            refuse(name, expected ? expected : usual, py::repr(value).cast<std::string>());
        }
    }
    template <class Value, std::size_t count>
    static Value chosen(const char* name, const py::object& value, const Choice<Value> (&choices)[count]) {
        const std::string text = py::isinstance<py::str>(value) ? utf8_of(name, value) : std::string();
        std::string names;
        for (const Choice<Value>& choice : choices) {
            if (text == choice.name) {
                return choice.value;
            }
            names += (names.empty() ? "" : ", ") + std::string(choice.name);
        }
        refuse(name, "one of " + names, py::repr(value).cast<std::string>());
    }

private:
    py::dict values_;
};

// max_memory, outside_of_folder, threads, allow_empty, crease, section and input_format.
drawing::Reading reading_of(const Options& options);
// size, dpi, paper, scale, unit, threads, max_memory, supersample, background, smooth_lines, colors and allow_empty.
drawing::Image_Settings image_settings_of(const Options& options);

} // namespace vorna::python
