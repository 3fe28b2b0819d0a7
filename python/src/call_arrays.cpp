// Points of a drawing call.
#include "python/src/call_arrays.h"

#include <algorithm>

namespace vorna::python {

Call_Arrays::Call_Arrays(const py::object& given_points, const py::object& given_colors, const py::object& given_parameters) {
    points = rows_of("points", given_points, kept_points);
    if (points.count > 0 && points.columns != 2 && points.columns != 3) {
        refuse("points", "(n, 2 or 3) numbers", description_of(py::array(kept_points)));
    }
    if (points.count > INT32_MAX) {
        refuse("points", "fewer than 2147483648", std::to_string(points.count));
    }
    if (has_colors = !given_colors.is_none(); has_colors) {
        colors = rows_of("colors", given_colors, kept_colors);
        if (!are_colors(colors)) {
            refuse("colors", "(n, 3 or 4) of uint8 or of floats from 0 to 1, or (n,) of uint32",
                   description_of(py::array(kept_colors)));
        }
    }
    if (has_parameters = !given_parameters.is_none(); has_parameters) {
        parameters = rows_of("uv", given_parameters, kept_parameters);
        if (parameters.columns != 2 || parameters.count != points.count) {
            refuse("uv", "(" + std::to_string(points.count) + ", 2) numbers", description_of(py::array(kept_parameters)));
        }
    }
}

void Call_Arrays::require_colors(std::initializer_list<py::ssize_t> counts) const {
    if (!has_colors || std::ranges::find(counts, colors.count) != counts.end()) {
        return;
    }
    std::string expected;
    for (const py::ssize_t count : counts) {
        expected += (expected.empty() ? "" : " or ") + std::to_string(std::max<py::ssize_t>(count, 0));
    }
    refuse("colors", expected + " of them", std::to_string(colors.count));
}

} // namespace vorna::python
