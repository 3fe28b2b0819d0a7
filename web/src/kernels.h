// The option that chooses a kernel set.
#pragma once

#include <cstdlib>

#include "drawing/recording/session.h"
#include "web/src/options.h"

namespace vorna::web {

// The kernel set is that of all drawings from now on; without a name the renderer chooses.
inline void choose_kernels(Options& options) {
    drawing::Module_Choice choice;
    options.text("kernels", choice.kernels);
    if (choice.kernels.empty()) {
        unsetenv("KRB_KERNELS");
    }
    drawing::force_kernels(choice);
}

} // namespace vorna::web
