// numpy arrays as the libraries take them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "drawing/drawing.h"

namespace vorna::python {

namespace py = pybind11;

// Throws ValueError: "NAME: expected EXPECTED, found FOUND".
[[noreturn]] void refuse(std::string_view name, const std::string& expected, const std::string& found);
// A text of the library as Python's. Bytes of file names that are not UTF-8 become what os.fsdecode makes of them.
py::str text_of(std::string_view text);
py::list texts_of(const std::vector<std::string>& texts);

// A text of Python's, or bytes, for the library. Throws ValueError for texts that UTF-8 cannot hold.
std::string utf8_of(std::string_view name, const py::handle& value);

// The shape and the type of an array for messages: "(3, 2) float64".
std::string description_of(const py::array& array);

// Numbers in rows, in the memory of an array that the caller keeps.
struct Rows_View {
    enum class Type { int32, int64, uint32, float32, float64, uint8, uint16, none };

    const char* data = nullptr;
    py::ssize_t count = 0, columns = 0; // of an array of one dimension one column
    py::ssize_t row_stride = 0, column_stride = 0;
    Type type = Type::none;

    // Rows of `columns` numbers of that type without gaps.
    bool is_packed(Type wanted, py::ssize_t wanted_columns) const noexcept;
};

// The array as rows. Numbers of other types are converted to the nearest of these, byte order too, into *kept, which holds the
// array from then on. Throws ValueError for anything but one or two dimensions of numbers.
Rows_View rows_of(std::string_view name, const py::object& values, py::object& kept);

// The numbers as another type, whatever the view's. Throws std::invalid_argument for those that the type cannot hold.
template <class Number> void convert_rows(std::string_view name, const Rows_View& rows, py::ssize_t columns, Number* to);

// Red, green, blue and perhaps alpha, bytes or floats from 0 to 1; or words 0xAARRGGBB.
bool are_colors(const Rows_View& rows) noexcept;
void convert_colors(const Rows_View& rows, VT_RGB32* to);

// #rgb, #rrggbb, a name, or three or four numbers from 0 to 255.
VT_RGB32 color_of(std::string_view name, const py::handle& value);

// Samples as an array that shares their memory: (height, width, 4) or (height, width). Null samples are None.
py::object array_of(const drawing::Image_Samples& image);
// An array as samples that share its memory where it is contiguous. colors: what (height, width) of uint8 is the index of; None =
// greys.
drawing::Image_Samples samples_of(const py::array& array, const py::object& palette);
// The colours of a texture. Throws ValueError for others, and for sides that the renderer does not draw.
drawing::Image_Samples texture_samples_of(const py::array& image);
// The array itself where its numbers have the machine's byte order, else a copy that has.
py::array in_own_byte_order(const py::array& array);
py::object palette_array(const std::vector<VT_RGB32>& palette);

} // namespace vorna::python
