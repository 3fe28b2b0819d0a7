// What the commands share.
#include "app/cli/command.h"

#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "vorna/module.h"

namespace vorna::app {

drawing::Module_Choice chosen_module(const Given& given) {
    drawing::Module_Choice choice = given.module;
    if (choice.path.empty()) {
        try {
            choice.path = vorna::Module::installed_path();
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(std::string(error.what()) + "; --module names another one");
        }
    }
    return choice;
}

std::string module_beside_renderer(const std::string& name, const std::string& hint) {
    const std::filesystem::path path = std::filesystem::path(vorna::Module::installed_path()).parent_path() / name;
    if (!std::filesystem::exists(path)) {
        throw std::runtime_error("no module " + path.string() + hint);
    }
    return path.string();
}

std::filesystem::path executable_path() {
#if defined(_WIN32)
    wchar_t path[32768];
    const DWORD length = GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return {path, path + length};
#else
    return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

} // namespace vorna::app
