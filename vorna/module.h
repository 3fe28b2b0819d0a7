// Renderer modules: loaded by path at run time.
#pragma once

#include <memory>
#include <string>

#include "host/entry_points.h"
#include "host/export.h"
#include "host/renderer_data.h"

namespace vorna {

// A loaded module. It must outlive its renderers. A module that was moved from may only be assigned to or destroyed; the one that
// it was moved to takes its place.
class VORNA_API Module {
public:
    // Opens the module and finds its entry points. path: UTF-8 on Windows. Throws std::runtime_error whose message, one line,
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

    // Creates renderers as the module does, wherever the module is moved.
    class Maker {
    public:
        Renderer operator()(const VT_Renderer_Data& prototype) const;

    private:
        friend class Module;
        VT_Create_Renderer* create_ = nullptr;
        VT_Unload_Renderer* unload_ = nullptr;
    };
    Maker maker() const noexcept { return maker_; }

    // A renderer with the options and callbacks of the prototype, or with the defaults. Throws std::bad_alloc, and
    // std::invalid_argument when the environment variable KRB_KERNELS names a kernel set that cannot run here.
    Renderer create_renderer(const VT_Renderer_Data& prototype) const;
    Renderer create_renderer() const;

    // The path of the module krb.vrd that was built or installed with this library: in the folder of the library, or in the
    // folder vorna there. Each call looks again, so that an installed tree can be moved. Throws std::runtime_error that names
    // both folders.
    static std::string installed_path();

private:
    void* handle_ = nullptr;
    Maker maker_;
};

} // namespace vorna
