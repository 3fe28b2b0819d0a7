// Renderers of a module, wherever it comes from.
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "vorna/module.h"

namespace vorna {

Module::Module(Module&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)), maker_(other.maker_) {
}

Module& Module::operator=(Module&& other) noexcept {
    std::swap(handle_, other.handle_);
    maker_ = other.maker_;
    return *this;
}

Module::Renderer Module::create_renderer(const VT_Renderer_Data& prototype) const {
    return maker_(prototype);
}

Module::Renderer Module::Maker::operator()(const VT_Renderer_Data& prototype) const {
    const VT_Renderer_Data* const given = &prototype;
    // Exceptions thrown by the module refer to its code, and the module may be closed while they are alive.
    std::string message;
    try {
        return Renderer(create_(given), Unload{unload_});
    } catch (const std::bad_alloc&) {
    } catch (const std::exception& error) {
        message = error.what();
    }
    if (message.empty()) {
        throw std::bad_alloc();
    }
    throw std::invalid_argument(message);
}

Module::Renderer Module::create_renderer() const {
    const VT_Reference<VT_Renderer_Data> prototype(new VT_Renderer_Data);
    return create_renderer(*prototype);
}

} // namespace vorna
