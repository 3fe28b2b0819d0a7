// What tables that share equal values begin with.
#pragma once

#include <cstdint>
#include <random>

namespace vorna::drawing {

// Another one in each process, so that no file can be made whose values all fall into one place of a table. What tables give does
// not depend on it: they count values as they come.
inline std::uint64_t hash_seed() {
    static const std::uint64_t seed = std::uint64_t{std::random_device()()} << 32 | std::random_device()();
    return seed;
}

} // namespace vorna::drawing
