// Opens windows with the module beside the renderer module.
#include <stdexcept>

#include <dlfcn.h>

#include "app/cli/command.h"
#include "app/view/window.h"

namespace vorna::app::view {

// The module stays loaded, because window systems cannot be unloaded safely.
std::unique_ptr<Window> open_window(const std::string& command, const std::string& title, std::optional<VT_Int_Pair> size) {
    const std::string path = module_beside_renderer(window_module, "; it belongs to the package vorna-view");
    void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        throw std::runtime_error(command + ": " + dlerror());
    }
    auto* open = reinterpret_cast<Window_Opener*>(dlsym(module, window_opener));
    if (!open) {
        throw std::runtime_error(path + ": expected a function " + window_opener + ", found none");
    }
    const VT_Int_Pair wanted = size.value_or(VT_Int_Pair{});
    std::string error;
    std::unique_ptr<Window> window(open(title.c_str(), &wanted, &error));
    if (!window) {
        throw std::runtime_error(command + ": " + error);
    }
    return window;
}

} // namespace vorna::app::view
