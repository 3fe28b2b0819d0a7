// Builds without libseccomp.
#include "app/scene/system_calls.h"

namespace app::scene {

void allow_only_computing() noexcept {
}

} // namespace app::scene
