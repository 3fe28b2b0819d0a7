// From light to the values that files hold, which are its roots.
#pragma once

#include <cstdint>
#include <vector>

namespace vorna::drawing {

// By light, the square of a channel from 0 to 255 * 255, the channel whose square is nearest in roots.
inline std::vector<std::uint8_t> make_light_roots() {
    std::vector<std::uint8_t> roots(255 * 255 + 1);
    std::uint32_t root = 0;
    for (std::uint32_t square = 0; square < roots.size(); ++square) {
        root += square > root * root + root; // the next one is nearer
        roots[square] = static_cast<std::uint8_t>(root);
    }
    return roots;
}

} // namespace vorna::drawing
