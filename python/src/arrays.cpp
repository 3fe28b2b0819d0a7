// numpy arrays as the libraries take them.
#include "python/src/arrays.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

#include "host/texture.h"

namespace vorna::python {
namespace {

using Type = Rows_View::Type;
using Kind = drawing::Image_Samples::Kind;

Type type_of(char kind, int size) {
    switch (kind) {
    case 'f':
        return size == 4 ? Type::float32 : size == 8 ? Type::float64 : Type::none;
    case 'i':
        return size == 4 ? Type::int32 : size == 8 ? Type::int64 : Type::none;
    case 'u':
        return size == 1 ? Type::uint8 : size == 2 ? Type::uint16 : size == 4 ? Type::uint32 : Type::none;
    default:
        return Type::none;
    }
}

// Whether the object is an array of one or two dimensions and one of the view's types, in the machine's byte order: then its
// view. Reads numpy's structs, since attributes of arrays take longer than a short line.
bool view_array(PyObject* object, Rows_View& rows) {
    if (!py::detail::npy_api::get().PyArray_Check_(object)) {
        return false;
    }
    const auto& array = *py::detail::array_proxy(object);
    const auto& number = *py::detail::array_descriptor_proxy(array.descr);
    rows.type = number.byteorder == '=' || number.byteorder == '|' ? type_of(number.kind, number.elsize) : Type::none;
    if (rows.type == Type::none || array.nd < 1 || array.nd > 2) {
        return false;
    }
    rows.data = array.data;
    rows.count = array.dimensions[0];
    rows.row_stride = array.strides[0];
    rows.columns = array.nd == 2 ? array.dimensions[1] : 1;
    rows.column_stride = array.nd == 2 ? array.strides[1] : number.elsize;
    return true;
}

// Calls visit(value of the view's type) with a null pointer of that type.
template <class Visit> void with_type(Type type, Visit visit) {
    switch (type) {
    case Type::int32:
        return visit(std::int32_t{});
    case Type::int64:
        return visit(std::int64_t{});
    case Type::uint32:
        return visit(std::uint32_t{});
    case Type::float32:
        return visit(float{});
    case Type::float64:
        return visit(double{});
    case Type::uint8:
        return visit(std::uint8_t{});
    case Type::uint16:
        return visit(std::uint16_t{});
    case Type::none:
        break;
    }
}

template <class Number> Number value_at(const Rows_View& rows, py::ssize_t row, py::ssize_t column) noexcept {
    Number number;
    std::memcpy(&number, rows.data + row * rows.row_stride + column * rows.column_stride, sizeof number);
    return number;
}

// Whether the conversion keeps whole numbers; floats take whatever there is, infinities too.
template <class Number, class From> bool can_hold(From value) noexcept {
    if constexpr (std::is_floating_point_v<Number>) {
        return true;
    } else if constexpr (std::is_floating_point_v<From>) {
        return value >= static_cast<From>(std::numeric_limits<Number>::min()) &&
               value < -2 * static_cast<From>(std::numeric_limits<std::int32_t>::min()) &&
               value <= static_cast<From>(std::numeric_limits<Number>::max());
    } else {
        return std::in_range<Number>(value);
    }
}

std::uint8_t level_of(double value) noexcept {
    return static_cast<std::uint8_t>(value > 0 ? value < 1 ? std::lround(value * 255) : 255 : 0);
}

} // namespace

void refuse(std::string_view name, const std::string& expected, const std::string& found) {
    throw py::value_error(std::string(name) + ": expected " + expected + ", found " + found);
}

py::str text_of(std::string_view text) {
    return py::reinterpret_steal<py::str>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "surrogateescape"));
}

py::list texts_of(const std::vector<std::string>& texts) {
    py::list list;
    for (const std::string& text : texts) {
        list.append(text_of(text));
    }
    return list;
}

std::string utf8_of(std::string_view name, const py::handle& value) {
    try {
        return value.cast<std::string>();
    } catch (const py::cast_error&) {
        refuse(name, "a text without surrogates", py::repr(value).cast<std::string>());
    }
}

std::string description_of(const py::array& array) {
    return py::str(array.attr("shape")).cast<std::string>() + " " + py::str(array.dtype()).cast<std::string>();
}

bool Rows_View::is_packed(Type wanted, py::ssize_t wanted_columns) const noexcept {
    const std::uintptr_t bytes = wanted == Type::float64 ? 8 : 4;
    return type == wanted && columns == wanted_columns && column_stride == static_cast<py::ssize_t>(bytes) &&
           row_stride == columns * column_stride && reinterpret_cast<std::uintptr_t>(data) % bytes == 0;
}

Rows_View rows_of(std::string_view name, const py::object& values, py::object& kept) {
    Rows_View rows;
    if (view_array(values.ptr(), rows)) {
        kept = values;
        return rows;
    }
    py::array array = py::array::ensure(values);
    if (!array) {
        PyErr_Clear();
        refuse(name, "an array of numbers", py::str(py::type::handle_of(values).attr("__name__")).cast<std::string>());
    }
    const char kind = array.dtype().kind();
    if (kind != 'f' && kind != 'i' && kind != 'u' && kind != 'b') {
        refuse(name, "an array of numbers", description_of(array));
    }
    if (array.ndim() < 1 || array.ndim() > 2) {
        refuse(name, "an array of one or two dimensions", description_of(array));
    }
    if (!view_array(array.ptr(), rows)) {
        array = py::array(array.attr("astype")(kind == 'f' ? "float64" : "int64"));
        view_array(array.ptr(), rows);
    }
    kept = std::move(array);
    return rows;
}

template <class Number> void convert_rows(std::string_view name, const Rows_View& rows, py::ssize_t columns, Number* to) {
    const py::ssize_t given = std::min(columns, rows.columns);
    with_type(rows.type, [&](auto sample) {
        using From = decltype(sample);
        for (py::ssize_t r = 0; r < rows.count; ++r) {
            for (py::ssize_t c = 0; c < columns; ++c) {
                const From value = c < given ? value_at<From>(rows, r, c) : From{};
                if (!can_hold<Number>(value)) {
                    throw std::invalid_argument(std::string(name) + ": expected numbers that fit 32 bits, found " +
                                                std::to_string(value) + " in row " + std::to_string(r));
                }
                *to++ = static_cast<Number>(value);
            }
        }
    });
}

template void convert_rows(std::string_view, const Rows_View&, py::ssize_t, float*);
template void convert_rows(std::string_view, const Rows_View&, py::ssize_t, double*);
template void convert_rows(std::string_view, const Rows_View&, py::ssize_t, std::int32_t*);
template void convert_rows(std::string_view, const Rows_View&, py::ssize_t, std::uint32_t*);

bool are_colors(const Rows_View& rows) noexcept {
    const bool has_channels = rows.columns == 3 || rows.columns == 4;
    return (rows.type == Type::uint32 && rows.columns == 1) ||
           (has_channels && (rows.type == Type::uint8 || rows.type == Type::float32 || rows.type == Type::float64));
}

void convert_colors(const Rows_View& rows, VT_RGB32* to) {
    if (rows.type == Type::uint32) {
        for (py::ssize_t r = 0; r < rows.count; ++r) {
            to[r] = vorna::color_of(value_at<std::uint32_t>(rows, r, 0));
        }
        return;
    }
    const bool has_alpha = rows.columns == 4;
    with_type(rows.type, [&](auto sample) {
        using From = decltype(sample);
        const auto level = [&](py::ssize_t r, py::ssize_t c) {
            if constexpr (std::is_same_v<From, std::uint8_t>) {
                return value_at<From>(rows, r, c);
            } else {
                return level_of(static_cast<double>(value_at<From>(rows, r, c)));
            }
        };
        for (py::ssize_t r = 0; r < rows.count; ++r) {
            to[r] = {level(r, 2), level(r, 1), level(r, 0), has_alpha ? level(r, 3) : std::uint8_t{255}};
        }
    });
}

VT_RGB32 color_of(std::string_view name, const py::handle& value) {
    if (py::isinstance<py::str>(value)) {
        try {
            return drawing::parsed_color(utf8_of(name, value));
        } catch (const drawing::Usage_Error& error) {
            throw py::value_error(std::string(name) + ": " + error.what());
        }
    }
    const auto refused = [&]() -> std::uint8_t {
        refuse(name, "the name of a colour, #rrggbb, or three or four whole numbers from 0 to 255",
               py::repr(value).cast<std::string>());
    };
    if (!py::isinstance<py::sequence>(value) && !py::isinstance<py::array>(value)) {
        refused();
    }
    const py::list channels(py::reinterpret_borrow<py::object>(value));
    if (channels.size() != 3 && channels.size() != 4) {
        refused();
    }
    const auto level = [&](std::size_t c) {
        const py::object number = py::reinterpret_steal<py::object>(PyNumber_Index(py::object(channels[c]).ptr()));
        if (!number) {
            PyErr_Clear();
            return refused();
        }
        const long found = PyLong_AsLong(number.ptr());
        if (PyErr_Occurred()) {
            PyErr_Clear();
            return refused();
        }
        return found < 0 || found > 255 ? refused() : static_cast<std::uint8_t>(found);
    };
    return {level(2), level(1), level(0), channels.size() == 4 ? level(3) : std::uint8_t{255}};
}

py::object array_of(const drawing::Image_Samples& image) {
    if (!image.bytes) {
        return py::none();
    }
    using Holder = std::shared_ptr<std::uint8_t[]>;
    const py::capsule owner(new Holder(image.bytes), [](void* holder) { delete static_cast<Holder*>(holder); });
    std::vector<py::ssize_t> shape{image.height, image.width};
    if (image.kind == Kind::colors) {
        shape.push_back(4);
    }
    const py::dtype type = image.kind == Kind::depths  ? py::dtype::of<std::uint16_t>()
                           : image.kind == Kind::faces ? py::dtype::of<std::int32_t>()
                                                       : py::dtype::of<std::uint8_t>();
    return py::array(type, shape, image.bytes.get(), owner);
}

drawing::Image_Samples samples_of(const py::array& array, const py::object& palette) {
    const auto is = [&](char kind, py::ssize_t size) { return array.dtype().kind() == kind && array.itemsize() == size; };
    const bool is_flat = array.ndim() == 2, has_channels = array.ndim() == 3 && (array.shape(2) == 3 || array.shape(2) == 4);
    drawing::Image_Samples image;
    if (has_channels && is('u', 1)) {
        image.kind = Kind::colors;
    } else if (is_flat && is('u', 1)) {
        image.kind = Kind::indices;
    } else if (is_flat && is('u', 2)) {
        image.kind = Kind::depths;
    } else if (is_flat && is('i', 4)) {
        image.kind = Kind::faces;
    } else {
        refuse("image", "(height, width, 3 or 4) or (height, width) of uint8, or (height, width) of uint16",
               description_of(array));
    }
    if (array.shape(0) < 1 || array.shape(1) < 1 || std::max(array.shape(0), array.shape(1)) > 1 << 18) {
        refuse("image", "sides from 1 to 262144", description_of(array));
    }
    py::array packed = in_own_byte_order(array);
    if (has_channels && array.shape(2) == 3) {
        const py::module_ numpy = py::module_::import("numpy");
        packed = py::array(numpy.attr("concatenate")(
            py::make_tuple(array, numpy.attr("full")(py::make_tuple(array.shape(0), array.shape(1), 1), 255, array.dtype())), 2));
    }
    packed = py::array::ensure(packed, py::array::c_style | int{py::detail::npy_api::NPY_ARRAY_ALIGNED_});
    image.height = static_cast<std::int32_t>(array.shape(0));
    image.width = static_cast<std::int32_t>(array.shape(1));
    auto* data = static_cast<std::uint8_t*>(const_cast<void*>(packed.data()));
    image.bytes = {data, [kept = packed.release().ptr()](std::uint8_t*) {
                       const py::gil_scoped_acquire acquired;
                       Py_DECREF(kept);
                   }};
    if (image.kind == Kind::indices && palette.is_none()) {
        for (int level = 0; level < 256; ++level) {
            const auto grey = static_cast<std::uint8_t>(level);
            image.palette.push_back({grey, grey, grey, 255});
        }
    } else if (image.kind == Kind::indices) {
        py::object kept;
        const Rows_View rows = rows_of("palette", palette, kept);
        if (!are_colors(rows) || rows.count < 1 || rows.count > 256) {
            refuse("palette", "(1 to 256, 3) of uint8", description_of(kept));
        }
        image.palette.resize(static_cast<std::size_t>(rows.count));
        convert_colors(rows, image.palette.data());
    }
    return image;
}

drawing::Image_Samples texture_samples_of(const py::array& image) {
    const drawing::Image_Samples samples = samples_of(image, py::none());
    if (samples.kind != Kind::colors || std::max(samples.width, samples.height) > largest_texture_side) {
        refuse("texture", "(height, width, 3 or 4) of uint8 with sides of up to " + std::to_string(largest_texture_side),
               description_of(image));
    }
    return samples;
}

py::array in_own_byte_order(const py::array& array) {
    const py::object type = array.dtype();
    return type.attr("isnative").cast<bool>() ? array : py::array(array.attr("astype")(type.attr("newbyteorder")("=")));
}

py::object palette_array(const std::vector<VT_RGB32>& palette) {
    if (palette.empty()) {
        return py::none();
    }
    py::array_t<std::uint8_t> array({static_cast<py::ssize_t>(palette.size()), py::ssize_t{3}});
    auto rows = array.mutable_unchecked<2>();
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const auto r = static_cast<py::ssize_t>(i);
        rows(r, 0) = palette[i].red;
        rows(r, 1) = palette[i].green;
        rows(r, 2) = palette[i].blue;
    }
    return array;
}

} // namespace vorna::python
