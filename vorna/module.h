// Renderer modules: loaded by path at run time.
#pragma once

#include <memory>
#include <string>

#include "host/entry_points.h"
#include "host/export.h"
#include "host/renderer_data.h"

namespace vorna {

// A loaded module. Renderers must be destroyed before it, or before the one that it was moved into; one that was moved from can
// only be given another one, or go.
class VORNA_API Module {
public:
    // Opens the module and finds its entry points. The path is UTF-8 on Windows. Throws std::runtime_error with one line that
    // names the file and the reason.
    explicit Module(const std::string& path);
    Module(Module&& other) noexcept;
    Module& operator=(Module&& other) noexcept;
    ~Module();

    struct Unload {
        VT_Unload_Renderer* function = nullptr;
        void operator()(VT_Renderer_Data* renderer) const noexcept { function(renderer); }
    };
    using Renderer = std::unique_ptr<VT_Renderer_Data, Unload>;

    // A renderer made from the prototype, or from one with the host's own callbacks. Throws std::bad_alloc, and
    // std::invalid_argument when the environment asks for what the module lacks (see entry_points.h).
    Renderer create_renderer(const VT_Renderer_Data& prototype) const;
    Renderer create_renderer() const;

    // The path of the module krb.vrd that was built or installed with this library: beside it, or in the folder vorna below. It
    // is looked for at each call, so that an installation may move as a whole. Throws std::runtime_error that names both places.
    static std::string installed_path();

private:
    void* library_ = nullptr;
    VT_Create_Renderer* create_ = nullptr;
    VT_Unload_Renderer* unload_ = nullptr;
};

} // namespace vorna
