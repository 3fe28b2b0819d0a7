// File names as paths.
#pragma once

#include <filesystem>
#include <string>

#include "drawing/files/printable.h"

namespace vorna::drawing {

// Names are UTF-8 on Windows and bytes elsewhere; the path's own conversion would depend on the run-time library.
inline std::filesystem::path path_of(const std::string& name) {
#ifdef _WIN32
    if (!is_utf8(name)) {
        return path_of(printable(name)); // question marks, which no file's name has there
    }
#endif
    return std::u8string(name.begin(), name.end());
}

} // namespace vorna::drawing
