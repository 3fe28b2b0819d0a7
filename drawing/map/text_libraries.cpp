// HarfBuzz, FriBidi and fontconfig, loaded when a text needs them.
#include "drawing/map/text_libraries.h"

#include <optional>
#include <type_traits>

#include <dlfcn.h>

namespace vorna::drawing::map {
namespace {

// Finds each function in the library; without one of them it counts as missing.
class Function_Finder {
public:
    explicit Function_Finder(const char* file) : handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}

    template <class Function> void find(Function& function, const char* name) {
        function = reinterpret_cast<Function>(handle_ ? dlsym(handle_, name) : nullptr);
        found_all_ = found_all_ && function;
    }
    bool found_all() const noexcept { return found_all_; }

private:
    void* handle_; // never closed
    bool found_all_ = true;
};

#define FIND(result, function, arguments) finder.find(library.function, #function);

std::optional<Harfbuzz> load_harfbuzz() {
    Function_Finder finder("libharfbuzz.so.0");
    Harfbuzz library;
    VORNA_HARFBUZZ_FUNCTIONS(FIND)
    return finder.found_all() ? std::optional(library) : std::nullopt;
}

std::optional<Fribidi> load_fribidi() {
    Function_Finder finder("libfribidi.so.0");
    Fribidi library;
    VORNA_FRIBIDI_FUNCTIONS(FIND)
    return finder.found_all() ? std::optional(library) : std::nullopt;
}

std::optional<Fontconfig> load_fontconfig() {
    Function_Finder finder("libfontconfig.so.1");
    Fontconfig library;
    VORNA_FONTCONFIG_FUNCTIONS(FIND)
    return finder.found_all() && library.FcInit() ? std::optional(library) : std::nullopt;
}

#undef FIND

} // namespace

const Harfbuzz* harfbuzz() {
    static const std::optional<Harfbuzz> library = load_harfbuzz();
    return library ? &*library : nullptr;
}

const Fribidi* fribidi() {
    static const std::optional<Fribidi> library = load_fribidi();
    return library ? &*library : nullptr;
}

const Fontconfig* fontconfig() {
    static const std::optional<Fontconfig> library = load_fontconfig();
    return library ? &*library : nullptr;
}

} // namespace vorna::drawing::map
