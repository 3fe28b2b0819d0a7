// PROJ, loaded when a map needs it.
#include "drawing/map/proj_library.h"

#include <stdexcept>
#include <string>
#include <type_traits>

#include <dlfcn.h>

#include "drawing/files/setting_names.h"

namespace vorna::drawing::map {
namespace {

Proj_Library load_library() {
    void* const handle = dlopen(VORNA_PROJ_LIBRARY, RTLD_NOW | RTLD_LOCAL); // never unloaded
    const auto load = [handle](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(handle ? dlsym(handle, name) : nullptr);
        if (!function) {
            throw std::runtime_error(name_of(Setting::projection) +
                                     ": PROJ is needed and cannot be loaded: " + std::string(dlerror()));
        }
    };
    Proj_Library library;
#define LOAD(function) load(library.function, #function);
    VORNA_PROJ_FUNCTIONS(LOAD)
#undef LOAD
    return library;
}
} // namespace

const Proj_Library& proj() {
    static const Proj_Library library = load_library();
    return library;
}

Proj_Handle proj_from_degrees(const Proj_Context& context, const char* system) {
    const Proj_Handle raw(proj().proj_create_crs_to_crs(context.handle, "OGC:CRS84", system, nullptr));
    return Proj_Handle(raw ? proj().proj_normalize_for_visualization(context.handle, raw.get()) : nullptr);
}

} // namespace vorna::drawing::map
