// Points of a drawing call, with their colours and texture coordinates.
#pragma once

#include <initializer_list>

#include "python/src/arrays.h"

namespace vorna::python {

// Keeps the arrays that it has views of.
struct Call_Arrays {
    // Throw ValueError for arrays of other shapes and types. None = no colours, no coordinates.
    Call_Arrays(const py::object& given_points, const py::object& given_colors, const py::object& given_parameters = py::none());
    // Throws ValueError unless the number of colours is one of these.
    void require_colors(std::initializer_list<py::ssize_t> counts) const;

    py::object kept_points, kept_colors, kept_parameters;
    Rows_View points, colors, parameters;
    bool has_colors = false, has_parameters = false;
};

} // namespace vorna::python
