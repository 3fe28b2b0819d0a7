// Hatches, and renditions whose faces renderers draw.
#include "vorna/standard/faces.h"

#include <array>
#include <vector>

namespace vorna {

namespace {

constexpr std::int32_t first_hatch = face_pattern::last_drawn_by_renderers + 1;
constexpr std::int32_t directions = 6;
constexpr std::int32_t distances[] = {8, 16, 32};
constexpr std::int32_t hatch_count = directions * static_cast<std::int32_t>(std::size(distances));

bool is_on_line(std::int32_t direction, std::int32_t distance, std::int32_t a, std::int32_t b) noexcept {
    const bool level = b % distance == 0;
    const bool upright = a % distance == 0;
    const bool rising = (a - b) % distance == 0;
    const bool falling = (a + b) % distance == 0;
    switch (direction) {
    case 0:
        return level;
    case 1:
        return upright;
    case 2:
        return rising;
    case 3:
        return falling;
    case 4:
        return level || upright;
    default:
        return rising || falling;
    }
}

std::array<VT_Reference<const VT_Pattern_Bitmap>, hatch_count> make_hatches() {
    std::array<VT_Reference<const VT_Pattern_Bitmap>, hatch_count> hatches;
    for (std::int32_t i = 0; i < hatch_count; ++i) {
        const std::int32_t distance = distances[i / directions];
        std::vector<std::uint8_t> cells;
        for (std::int32_t b = 0; b < distance; ++b) {
            for (std::int32_t a = 0; a < distance; ++a) {
                cells.push_back(is_on_line(i % directions, distance, a, b) ? 1 : 0);
            }
        }
        hatches[static_cast<std::size_t>(i)] = new VT_Pattern_Bitmap(distance, distance, std::move(cells));
    }
    return hatches;
}

} // namespace

VT_Reference<const VT_Pattern_Bitmap> hatch(std::int32_t pattern) {
    static const auto hatches = make_hatches();
    return hatches[static_cast<std::size_t>((pattern - first_hatch) % hatch_count)];
}

VT_Reference<const VT_Rendition> with_plain_face(const VT_Rendition& rendition) {
    VT_Reference<VT_Rendition> plain(new VT_Rendition(rendition));
    if (plain->face.pattern >= first_hatch) {
        plain->face.bitmap = hatch(plain->face.pattern);
        plain->face.pattern = face_pattern::bitmap;
    }
    plain->face.flags &= ~face_flag::special_shading;
    return plain;
}

} // namespace vorna
