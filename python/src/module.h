// The parts of the extension module.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "drawing/files/usage_error.h"
#include "python/src/arrays.h"

namespace vorna::python {

void add_images(py::module_& module);
void add_models(py::module_& module);
void add_maps(py::module_& module);
void add_canvas(py::module_& module);

// An input file that is not there.
struct File_Not_Found : drawing::Usage_Error {
    using drawing::Usage_Error::Usage_Error;
};

// Calls work() without the interpreter's lock. Its wrong input is a missing file when one of the files does not exist.
template <class Work> auto unlocked(const std::vector<std::string>& files, const Work& work) {
    const py::gil_scoped_release released;
    try {
        return work();
    } catch (const drawing::Usage_Error& error) {
        for (const std::string& file : files) {
            std::error_code unknown;
            if (file != "-" && !std::filesystem::exists(file, unknown)) {
                throw File_Not_Found(error.what());
            }
        }
        throw;
    }
}

} // namespace vorna::python
