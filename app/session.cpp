// A renderer ready to draw.
#include "app/session.h"

#include <cstdlib>
#include <stdexcept>

namespace app {

namespace {

// The module reads the variable when it creates a renderer.
const std::string& with_kernels_forced(const Module_Choice& choice) {
    if (!choice.kernels.empty()) {
#if defined(_WIN32)
        _putenv_s("KRB_KERNELS", choice.kernels.c_str());
#else
        setenv("KRB_KERNELS", choice.kernels.c_str(), 1);
#endif
    }
    return choice.path;
}

} // namespace

Session::Session(const Module_Choice& choice) try : module_(with_kernels_forced(choice)), canvas_(module_) {
} catch (const std::invalid_argument& error) {
    throw Usage_Error(error.what());
}

void Session::set_window(const VT_Int_Rectangle& window) {
    options().set_window_origin({window.left, window.bottom});
    options().set_window_size({window.right - window.left + 1, window.top - window.bottom + 1});
}

} // namespace app
