// The extension module: exceptions, images and recordings.
#include "python/src/module.h"

#include <cerrno>
#include <filesystem>

#include <pybind11/stl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "drawing/files/usage_error.h"
#include "python/src/options.h"
#include "vorna/version.h"

namespace vorna::python {
namespace {

using drawing::Comparison;
using drawing::Tolerance;

std::optional<Tolerance> tolerance_of(const py::object& value) {
    if (value.is_none()) {
        return {};
    }
    try {
        if (const auto whole = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()))) {
            return Tolerance{whole.cast<std::int32_t>(), std::numeric_limits<std::int64_t>::max()};
        }
        PyErr_Clear(); // numbers of numpy are whole ones too, arrays and pairs are not
        const auto [difference, count] = value.cast<std::pair<std::int32_t, std::int64_t>>();
        return Tolerance{difference, count};
    } catch (const py::cast_error&) {
        refuse("tolerance", "a largest difference, or a pair of it and a number of pixels", py::repr(value).cast<std::string>());
    }
}

int access_error(const std::filesystem::path& path, int wanted) {
    return access(path.c_str(), wanted) == 0 ? 0 : errno;
}

// The error that opening a file gives; 0 = none. Files are written under another name in their folder first.
int error_of(const Used_File& file) {
    const std::filesystem::path path(file.name), folder = path.has_parent_path() ? path.parent_path() : ".";
    if (file.name == "-") {
        return 0;
    }
    struct stat found = {};
    const bool is_there = stat(path.c_str(), &found) == 0;
    if (is_there && S_ISDIR(found.st_mode)) {
        return EISDIR;
    }
    if (!file.is_written) {
        return access_error(path, R_OK);
    }
    if (const int error = is_there ? access_error(path, W_OK) : 0; error != 0) {
        return error;
    }
    if (stat(folder.c_str(), &found) != 0) {
        return errno;
    }
    return S_ISDIR(found.st_mode) ? access_error(folder, W_OK | X_OK) : ENOTDIR;
}

PyObject* kind_of(const File_Error& error) {
    switch (error.number) {
    case ENOENT:
        return PyExc_FileNotFoundError;
    case EISDIR:
        return PyExc_IsADirectoryError;
    case ENOTDIR:
        return PyExc_NotADirectoryError;
    case EACCES:
    case EPERM:
    case EROFS:
        return PyExc_PermissionError;
    default:
        return PyExc_OSError;
    }
}

void set_error(PyObject* kind, const std::exception& error) {
    PyErr_SetObject(kind, text_of(error.what()).ptr());
}

// (same, text, count, most)
py::tuple tuple_of(const Comparison& comparison) {
    return py::make_tuple(comparison.is_same, text_of(comparison.text), comparison.count, comparison.most);
}

// (pixels, palette, depths, report)
py::tuple tuple_of(const drawing::Replay_Image& image) {
    return py::make_tuple(array_of(image.colors), palette_array(image.colors.palette), array_of(image.depths), image.report);
}

// dpi: pixels per inch that files state; 0 = none.
drawing::Image_Samples printed_samples_of(const py::array& array, const py::object& palette, double dpi) {
    if (dpi != 0 && !(dpi >= 1 && dpi <= 10000)) {
        refuse("dpi", "0, or 1 to 10000", py::repr(py::float_(dpi)).cast<std::string>());
    }
    drawing::Image_Samples image = samples_of(array, palette);
    image.pixels_per_metre = drawing::Print_Settings{dpi, {}, {}, {}}.pixels_per_metre();
    return image;
}

} // namespace

void throw_file_error(const std::vector<Used_File>& files, const char* message) {
    for (const Used_File& file : files) {
        if (const int number = error_of(file); number != 0) {
            throw File_Error(number, message);
        }
    }
}

void add_images(py::module_& module) {
    // (width, height, dpi): of the paper, or the size; see drawing::Print_Settings.
    module.def("print_of", [](const py::dict& options) {
        const drawing::Image_Settings settings = image_settings_of(Options(options));
        const VT_Int_Pair size = drawing::size_of(settings);
        return py::make_tuple(size.x, size.y, settings.print.pixels_per_inch());
    });
    module.def("png_of", [](const py::array& array, const py::object& palette, double dpi) {
        const drawing::Image_Samples image = printed_samples_of(array, palette, dpi);
        return py::bytes(unlocked({}, [&] { return drawing::png_of(image); }));
    });
    module.def("write_image", [](const std::string& file, const py::array& array, const py::object& palette, double dpi) {
        const drawing::Image_Samples image = printed_samples_of(array, palette, dpi);
        unlocked({{file, true}}, [&] { drawing::write_samples(file, image); });
    });
    module.def("digest_of", [](const py::array& array) {
        const drawing::Image_Samples image = samples_of(array, py::none());
        return unlocked({}, [&] { return drawing::digest_of(image); });
    });
    module.def("read_image", [](const std::string& file, std::uint64_t max_memory) {
        const drawing::Image_Samples image = unlocked({{file}}, [&] { return drawing::read_samples(file, max_memory); });
        return py::make_tuple(array_of(image), palette_array(image.palette));
    });
    module.def("compare_arrays", [](const py::array& a, const py::object& palette_a, const py::array& b,
                                    const py::object& palette_b, const py::object& tolerance) {
        const drawing::Image_Samples first = samples_of(a, palette_a), second = samples_of(b, palette_b);
        const std::optional<Tolerance> allowed = tolerance_of(tolerance);
        return tuple_of(unlocked({}, [&] { return drawing::compare_samples(first, second, allowed); }));
    });
    module.def("compare_files", [](const std::string& a, const std::string& b, const py::object& tolerance) {
        const std::optional<Tolerance> allowed = tolerance_of(tolerance);
        return tuple_of(unlocked({{a}, {b}}, [&] { return drawing::compare_files(a, b, allowed); }));
    });
    module.def("write_document", [](const std::string& file, const std::string& text) {
        unlocked({{file, true}}, [&] { drawing::write_document(file, text); });
    });
    module.def("replay_file", [](const std::string& file, std::uint64_t max_memory) {
        return tuple_of(unlocked({{file}}, [&] { return drawing::replay_file(file, {max_memory, {}}); }));
    });
    module.def("replay_text", [](const std::string& name, const std::string& text, std::uint64_t max_memory) {
        return tuple_of(unlocked({}, [&] { return drawing::replay_text(name, text, {max_memory, {}}); }));
    });
}

} // namespace vorna::python

PYBIND11_MODULE(_vorna, module) {
    using namespace vorna::python;
    module.doc() = "The compiled part of the package vorna.";
    module.attr("version") = vorna::version();
    static py::exception<std::runtime_error> failure(module, "Error");
    failure.attr("__module__") = "vorna";
    failure.attr("__doc__") =
        "A failure that is no wrong input: a file that cannot be written, a canvas that cannot be drawn on.";
    py::register_exception_translator([](std::exception_ptr exception) {
        try {
            std::rethrow_exception(std::move(exception));
        } catch (const File_Error& error) {
            set_error(kind_of(error), error);
        } catch (const vorna::drawing::Usage_Error& error) {
            set_error(PyExc_ValueError, error);
        } catch (const std::length_error& error) {
            set_error(PyExc_MemoryError, error);
        } catch (const std::invalid_argument& error) {
            set_error(PyExc_ValueError, error);
        } catch (const py::builtin_exception&) {
            throw;
        } catch (const std::runtime_error& error) {
            set_error(failure.ptr(), error);
        }
    });
    add_images(module);
    add_models(module);
    add_maps(module);
    add_canvas(module);
}
