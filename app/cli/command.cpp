// What the commands share.
#include "app/cli/command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <type_traits>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "app/cli/nearest_name.h"
#include "app/cli/page.h"
#include "drawing/files/path.h"
#include "vorna/module.h"

namespace vorna::app {
namespace {

std::string value_of(const CLI::App& application, const char* name) {
    const CLI::Option& option = *application.get_option(name);
    return option.count() ? option.as<std::string>() : std::string();
}

} // namespace

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

std::string list_of(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? "" : i + 1 < names.size() ? ", " : " or ") + names[i];
    }
    return text;
}

CLI::Validator values(const std::vector<std::string>& names) {
    return CLI::Validator("{" + CLI::detail::join(names, ",") + "}").application_index(0);
}

CLI::Validator one_of(const std::vector<std::string>& names) {
    CLI::Validator validator = values(names);
    validator.operation([names](const std::string& text) {
        return std::ranges::find(names, text) != names.end()
                   ? std::string()
                   : "expected " + list_of(names) + ", found '" + text + "'" + nearest_name(text, names);
    });
    return validator;
}

template <class Number> CLI::Validator between(Number least, Number most) {
    const auto text_of = [](Number number) {
        std::array<char, 32> text;
        return std::string(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
    };
    const std::string from = text_of(least), to = text_of(most);
    const auto refuse = [=](const std::string& text) -> std::string {
        const char* const end = text.data() + text.size();
        Number number{};
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc{} && stop == end && number >= least && number <= most) {
            return {};
        }
        return std::string("expected a ") + (std::is_integral_v<Number> ? "whole " : "") + "number from " + from + " to " + to +
               ", found '" + text + "'";
    };
    return {refuse, "N in [" + from + " - " + to + "]"};
}

template CLI::Validator between(int, int);
template CLI::Validator between(std::int64_t, std::int64_t);
template CLI::Validator between(double, double);

void add_memory_option(CLI::App& command, std::string& text) {
    command
        .add_option(
            "--max-memory", text,
            "Memory to get along with, such as 512M or 2G; bytes without K, M, G or T. By default 1G, or 64 times what the "
            "files have if that is more")
        ->type_name("SIZE");
}

CLI::Validator written_as(const std::vector<std::string>& endings) {
    static const std::vector<std::string> known{
        "png",  "jpg", "jpeg", "gif", "bmp",  "tif", "tiff", "webp", "svg", "pdf", "ps",  "eps",  "ppm",     "pgm",
        "pnm",  "tga", "exr",  "hdr", "avif", "jxl", "heic", "ico",  "qoi", "gz",  "zip", "json", "geojson", "topojson",
        "gltf", "glb", "obj",  "ply", "stl",  "dxf", "mtl",  "dae",  "fbx", "3ds", "xml", "txt"};
    const auto refuse = [endings](const std::string& text) -> std::string {
        std::string ending = drawing::path_of(text).extension().string();
        ending.erase(0, 1); // the dot
        std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        const auto has = [&ending](const auto& names) { return std::ranges::find(names, ending) != names.end(); };
        std::vector<std::string> shown = endings;
        std::ranges::for_each(shown, [](std::string& name) { name.insert(0, "."); });
        return !has(known) || has(endings) ? std::string()
                                           : "expected a name that ends in " + list_of(shown) + ", found '" + text + "'";
    };
    return CLI::Validator(refuse, "");
}

void add_module_options(CLI::App& application) {
    application.add_option("--module")
        ->type_name("MODULE")
        ->description("Renderer module; by default the krb.vrd built or installed with this command");
    application.add_option("--kernels")
        ->type_name("NAME")
        ->description("Instruction set to draw with; by default the best that runs here")
        ->check(one_of({"portable", "baseline", "avx2", "avx512"}));
    group_options(application, "All commands", "--module --kernels --help --version");
}

std::string chosen_kernels(const CLI::App& application) {
    return value_of(application, "--kernels");
}

drawing::Module_Choice chosen_module(const CLI::App& application) {
    drawing::Module_Choice choice{value_of(application, "--module"), chosen_kernels(application)};
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
