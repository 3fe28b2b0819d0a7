// The choice of the renderer module.
#include "app/command.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace app {

namespace {

namespace fs = std::filesystem;

fs::path executable_folder() {
#if defined(_WIN32)
    wchar_t path[32768];
    const DWORD length = GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return fs::path(path, path + length).parent_path();
#else
    return fs::read_symlink("/proc/self/exe").parent_path();
#endif
}

} // namespace

std::string module_beside(const std::string& name, const std::string& hint) {
    const fs::path beside = executable_folder() / name;
    const fs::path installed = executable_folder() / VORNA_INSTALLED_MODULES / name;
    for (const fs::path& candidate : {beside, installed}) {
        if (fs::exists(candidate)) {
            return candidate.string();
        }
    }
    throw std::runtime_error("no module " + name + ": neither " + beside.string() + " nor " +
                             installed.lexically_normal().string() + " exists" + hint);
}

void add_module_options(CLI::App& application) {
    application.add_option("--module")
        ->type_name("PATH")
        ->description("Renderer module; krb.vrd beside this command or installed");
    application.add_option("--kernels")
        ->type_name("NAME")
        ->description("Instruction set to draw with: portable, baseline, avx2 or avx512; by default the best that runs here");
}

Module_Choice chosen_module(const CLI::App& application) {
    const auto value = [&application](const char* name) {
        const CLI::Option& option = *application.get_option(name);
        return option.count() ? option.as<std::string>() : std::string();
    };
    Module_Choice choice{value("--module"), value("--kernels")};
    if (choice.path.empty()) {
        choice.path = module_beside("krb.vrd", "; --module names another one");
    }
    return choice;
}

} // namespace app
