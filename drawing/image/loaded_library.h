// Libraries that are loaded when they are first used: with all that they need themselves, they would take longer to load than the
// command takes to start.
#pragma once

#include <stdexcept>
#include <string>

#include <dlfcn.h>

namespace vorna::drawing {

class Loaded_Library {
public:
    // file: under which the system's loader finds it. format: for messages. It stays loaded until the program ends.
    Loaded_Library(const char* file, const char* format) : format_(format), handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}

    // Throws std::runtime_error when the library or the function is missing.
    template <class Function> void load(Function& function, const char* name) const {
        function = reinterpret_cast<Function>(handle_ ? dlsym(handle_, name) : nullptr);
        if (!function) {
            throw std::runtime_error(std::string(format_) + " files need a library that cannot be loaded: " + dlerror());
        }
    }

private:
    const char* format_;
    void* handle_;
};

} // namespace vorna::drawing
