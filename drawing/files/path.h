// File names as paths.
#pragma once

#include <filesystem>
#include <string>

namespace vorna::drawing {

// Names are UTF-8 on Windows and bytes elsewhere; the path's own conversion would depend on the run-time library.
inline std::filesystem::path path_of(const std::string& name) {
    return std::u8string(name.begin(), name.end());
}

} // namespace vorna::drawing
