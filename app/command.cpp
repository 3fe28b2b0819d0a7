// The choice of the renderer module.
#include "app/command.h"

#include <CLI/CLI.hpp>

#include "vorna/module.h"

namespace app {

void add_module_options(CLI::App& application) {
    application.add_option("--module")
        ->type_name("PATH")
        ->description("Renderer module; by default the krb.vrd built or installed with this command");
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
        try {
            choice.path = vorna::Module::installed_path();
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(std::string(error.what()) + "; --module names another one");
        }
    }
    return choice;
}

} // namespace app
