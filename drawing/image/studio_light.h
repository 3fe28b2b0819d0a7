// The light of a photographer's studio as a table by the direction of the surface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorna::drawing {

// Light that a white surface gives back to the viewer, and the highlight that comes on top whatever colour the surface has. Of
// 65535, which is white.
struct Studio_Light {
    std::uint16_t red, green, blue, highlight;
};

class Studio_Lights {
public:
    static constexpr int side = 256;

    // x, y, z: towards the key light, in view space; not 0.
    Studio_Lights(double x, double y, double z);

    // right, up: parts of the normal, from 0 for -1 to side - 1 for 1.
    const Studio_Light& at(int right, int up) const noexcept {
        return table_[static_cast<std::size_t>(up) * side + static_cast<std::size_t>(right)];
    }

private:
    std::vector<Studio_Light> table_;
};

} // namespace vorna::drawing
