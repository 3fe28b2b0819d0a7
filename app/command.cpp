// What the commands share.
#include "app/command.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "vorna/module.h"

namespace app {

std::string footer(std::initializer_list<Example> examples, const std::string& more, const std::string& statuses) {
    std::string text = "Examples:";
    for (const Example& example : examples) {
        text += std::string("\n  ") + example.command + "\n      " + example.meaning;
    }
    if (!more.empty()) {
        text += "\n\n" + more;
    }
    return text + "\n\nExit status:\n  " + statuses;
}

void group_options(CLI::App& command, const char* heading, const std::string& names) {
    std::istringstream stream(names);
    for (std::string name; stream >> name;) {
        command.get_option(name)->group(heading);
    }
}

CLI::Validator values(const std::vector<std::string>& names) {
    return CLI::Validator("{" + CLI::detail::join(names, ",") + "}").application_index(0);
}

void add_module_options(CLI::App& application) {
    application.add_option("--module")
        ->type_name("MODULE")
        ->description("Renderer module; by default the krb.vrd built or installed with this command");
    application.add_option("--kernels")
        ->type_name("NAME")
        ->description("Instruction set to draw with; by default the best that runs here")
        ->check(values({"portable", "baseline", "avx2", "avx512"}));
    group_options(application, "All commands", "--module --kernels --help --version");
}

Module_Choice chosen_module(const CLI::App& application) {
    const auto value = [&application](const char* name) {
        const CLI::Option& option = *application.get_option(name);
        return option.count() ? option.as<std::string>() : std::string();
    };
    Module_Choice choice{value("--module"), value("--kernels")};
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

// The module reads the variable when it creates a renderer.
void force_kernels(const Module_Choice& choice) {
    if (!choice.kernels.empty()) {
#if defined(_WIN32)
        _putenv_s("KRB_KERNELS", choice.kernels.c_str());
#else
        setenv("KRB_KERNELS", choice.kernels.c_str(), 1);
#endif
    }
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

} // namespace app
