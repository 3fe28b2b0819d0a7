// GDAL's readers of vector formats, loaded when a map needs them.
#include "drawing/map/gdal_library.h"

#include <stdexcept>
#include <string>
#include <type_traits>

#include <dlfcn.h>

namespace vorna::drawing::map {
namespace {

// The library's name has a number that grows with its versions: 26 is 2.4's.
constexpr int newest = 50, oldest = 26;

void* open_library() {
    for (int number = newest; number >= oldest; --number) {
        if (void* handle = dlopen(("libgdal.so." + std::to_string(number)).c_str(), RTLD_NOW | RTLD_LOCAL)) { // never unloaded
            return handle;
        }
    }
    return nullptr;
}

Gdal_Library load_library() {
    Gdal_Library library;
    library.handle = open_library();
    const auto load = [&](auto& function, const char* name) {
        function =
            reinterpret_cast<std::remove_reference_t<decltype(function)>>(library.handle ? dlsym(library.handle, name) : nullptr);
        if (!function) {
            throw std::runtime_error(
                "GDAL, which reads other maps than GeoJSON, TopoJSON and DXF, cannot be loaded; Debian's package "
                "libgdal32, in later versions libgdal36, has it");
        }
    };
#define LOAD(result, function, arguments) load(library.function, #function);
    VORNA_GDAL_FUNCTIONS(LOAD)
#undef LOAD
    return library;
}

} // namespace

void (*Gdal_Library::find_driver(const char* name) const)() {
    return reinterpret_cast<void (*)()>(dlsym(handle, (std::string("Register") + name).c_str()));
}

const Gdal_Library& gdal() {
    static const Gdal_Library library = load_library();
    return library;
}

} // namespace vorna::drawing::map
