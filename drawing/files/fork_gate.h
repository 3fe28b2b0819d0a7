// Libraries with locks of their own, and processes that are copied.
#pragma once

#include <shared_mutex>

namespace vorna::drawing {

// Held shared around calls of libraries that lock something, and alone around fork: a copy of the process has no thread that
// would open what another one had locked.
inline std::shared_mutex& fork_gate() {
    static std::shared_mutex gate;
    return gate;
}

} // namespace vorna::drawing
