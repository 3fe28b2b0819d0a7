// The renderer that is linked into the program, for systems that load no modules at run time. Its path is its name.
#include <stdexcept>
#include <string>

#include "vorna/module.h"

namespace vorna {

namespace {

constexpr const char* linked_name = "krb.vrd";

} // namespace

Module::Module(const std::string& path) {
    if (path != linked_name) {
        throw std::runtime_error(path + ": not loadable as a renderer module: this program has only " + linked_name +
                                 ", which is linked in");
    }
    maker_.create_ = VD_Renderer;
    maker_.unload_ = VD_Unload_KRB_Renderer;
}

Module::~Module() = default;

std::string Module::installed_path() {
    return linked_name;
}

} // namespace vorna
