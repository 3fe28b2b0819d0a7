// Renderer modules, loaded at run time. Builds whose renderer is linked in have linked_module.cpp instead.
#include "vorna/module.h"

#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cstdint>
#include <cstring>
#include <fstream>

#include <dlfcn.h>
#include <link.h>
#endif

namespace vorna {

namespace {

constexpr const char* create_name = "VD_Renderer";
constexpr const char* unload_name = "VD_Unload_KRB_Renderer";
constexpr const char* module_file = "krb.vrd";

// The loader searches its own directories for names without a directory; here such a name is relative to the current folder.
std::filesystem::path absolute_path(const std::string& name) {
    const std::filesystem::path path = std::u8string(name.begin(), name.end());
    std::error_code ignored;
    const std::filesystem::path absolute = std::filesystem::absolute(path, ignored);
    return ignored ? path : absolute;
}

// UTF-8 on Windows, as the constructor expects.
std::string text_of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

#if defined(_WIN32)

std::string last_error() {
    std::string message = std::system_category().message(static_cast<int>(GetLastError()));
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) {
        message.pop_back();
    }
    return message;
}

void* open_library(const std::string& path) {
    return LoadLibraryExW(absolute_path(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

// The loader of this system checks the file itself.
bool is_cut_off(const std::filesystem::path&) {
    return false;
}

void close_library(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

std::filesystem::path folder_of_this_library() {
    HMODULE library = nullptr;
    wchar_t path[32768];
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&folder_of_this_library), &library);
    const DWORD length = GetModuleFileNameW(library, path, static_cast<DWORD>(std::size(path)));
    return std::filesystem::path(path, path + length).parent_path();
}

template <class Function> Function* find_entry_point(void* library, const char* name) {
    // Through a void pointer: the system declares the function with another type than it has.
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name)));
}

#else

std::string last_error() {
    const char* message = dlerror();
    return message ? message : "unknown reason";
}

// Whether the file is shorter than its headers say. The loader maps it without a check, and access beyond the end of the file
// ends the process. The loader detects all other faults.
bool is_cut_off(const std::filesystem::path& path) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(path, none)) {
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    ElfW(Ehdr) header;
    const auto read = [&file](auto& to) { return bool(file.read(reinterpret_cast<char*>(&to), sizeof to)); };
    if (!read(header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return false;
    }
    const std::uintmax_t size = std::filesystem::file_size(path, none);
    const auto fits = [size](std::uintmax_t first, std::uintmax_t count) { return first <= size && count <= size - first; };
    file.seekg(static_cast<std::streamoff>(header.e_phoff));
    for (int i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment;
        if (!read(segment) || (segment.p_type == PT_LOAD && !fits(segment.p_offset, segment.p_filesz))) {
            return true;
        }
    }
    return false;
}

void* open_library(const std::string& path) {
    return dlopen(absolute_path(path).c_str(), RTLD_NOW | RTLD_LOCAL);
}

void close_library(void* library) {
    dlclose(library);
}

std::filesystem::path folder_of_this_library() {
    Dl_info library;
    if (dladdr(reinterpret_cast<void*>(&folder_of_this_library), &library) == 0) {
        return {};
    }
    // The loader may know the library by the name of a symbolic link.
    std::error_code ignored;
    const std::filesystem::path path = std::filesystem::canonical(library.dli_fname, ignored);
    return (ignored ? absolute_path(library.dli_fname) : path).parent_path();
}

template <class Function> Function* find_entry_point(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

#endif

} // namespace

Module::Module(const std::string& path) {
    // For an empty path the loader opens the program itself.
    if (path.empty()) {
        throw std::runtime_error("\"\": not loadable as a renderer module: the path is empty");
    }
    if (is_cut_off(absolute_path(path))) {
        throw std::runtime_error(path + ": not loadable as a renderer module: the file is cut off");
    }
    handle_ = open_library(path);
    if (!handle_) {
        throw std::runtime_error(path + ": not loadable as a renderer module: " + last_error());
    }
    maker_.create_ = find_entry_point<VT_Create_Renderer>(handle_, create_name);
    maker_.unload_ = find_entry_point<VT_Unload_Renderer>(handle_, unload_name);
    if (!maker_.create_ || !maker_.unload_) {
        const std::string missing = maker_.create_ ? unload_name : create_name;
        close_library(handle_);
        throw std::runtime_error(path + ": not a renderer module: it has no entry point " + missing);
    }
}

Module::~Module() {
    if (handle_) {
        close_library(handle_);
    }
}

std::string Module::installed_path() {
    const std::filesystem::path folder = folder_of_this_library();
    const std::filesystem::path beside = folder / module_file;
    const std::filesystem::path below = folder / "vorna" / module_file;
    for (const std::filesystem::path& candidate : {beside, below}) {
        std::error_code ignored;
        if (std::filesystem::exists(candidate, ignored)) {
            return text_of(candidate);
        }
    }
    throw std::runtime_error("no renderer module: neither " + text_of(beside) + " nor " + text_of(below) + " exists");
}

} // namespace vorna
