// Checks of what a module exports.
#include <filesystem>
#include <string>
#include <system_error>

#include "app/check/checks.h"
#include "drawing/files/path.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace vorna::app::check {

namespace {

// Opens with the system's loader, because the host's loader requires all entry points. Libraries stay open.
#if defined(_WIN32)

void* open_library(const std::string& path) {
    return LoadLibraryExW(std::filesystem::absolute(drawing::path_of(path)).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

std::string last_error() {
    return std::system_category().message(static_cast<int>(GetLastError()));
}

void* find_symbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

#else

void* open_library(const std::string& path) {
    return dlopen(std::filesystem::absolute(drawing::path_of(path)).c_str(), RTLD_NOW | RTLD_LOCAL);
}

std::string last_error() {
    const char* const message = dlerror();
    return message ? message : "unknown reason";
}

void* find_symbol(void* library, const char* name) {
    return dlsym(library, name);
}

#endif

template <class Function> Function* entry_point(const std::string& path, const char* name) {
    void* const library = open_library(path);
    return library ? reinterpret_cast<Function*>(find_symbol(library, name)) : nullptr;
}

} // namespace

void check_loads(Trial& trial) {
    if (!open_library(trial.path())) {
        trial.fail(last_error());
    }
}

void check_entry_points(Trial& trial) {
    trial.expect(entry_point<VT_Create_Renderer>(trial.path(), "VD_Renderer"), "no entry point VD_Renderer");
    trial.expect(entry_point<VT_Unload_Renderer>(trial.path(), "VD_Unload_KRB_Renderer"),
                 "no entry point VD_Unload_KRB_Renderer");
    // VD_Renderer under the name that hosts of krb.vrd look up.
    trial.expect(trial.profile() != Profile::krb || entry_point<VT_Create_Renderer>(trial.path(), "VD_KRB_Renderer"),
                 "no entry point VD_KRB_Renderer");
}

void check_unload_null(Trial& trial) {
    entry_point<VT_Unload_Renderer>(trial.path(), "VD_Unload_KRB_Renderer")(nullptr);
}

void check_renderer(Trial& trial) {
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name));
        const Tried_Renderer renderer(trial, configuration);
    }
    if (trial.profile() == Profile::krb) {
        trial.at("VD_KRB_Renderer");
        const VT_Renderer_Data prototype;
        const VT_Renderer_Data* const given = &prototype;
        VT_Renderer_Data* const renderer = entry_point<VT_Create_Renderer>(trial.path(), "VD_KRB_Renderer")(given);
        trial.expect(renderer, "no renderer was made");
        entry_point<VT_Unload_Renderer>(trial.path(), "VD_Unload_KRB_Renderer")(renderer);
    }
}

} // namespace vorna::app::check
