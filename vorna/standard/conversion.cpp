// From one coordinate form to another, and what of a line can be seen.
#include "vorna/standard/conversion.h"

#include <algorithm>

#include "host/clip.h"

namespace vorna {

bool part_near(const VT_Int_Rectangle& rectangle, double margin, const VT_Point_D& from, const VT_Point_D& to, double& first,
               double& last) noexcept {
    first = 0;
    last = 1;
    const auto cut = [&](double start, double direction, double low, double high) {
        if (direction == 0) {
            return start >= low && start <= high;
        }
        const double a = (low - start) / direction;
        const double b = (high - start) / direction;
        first = std::max(first, std::min(a, b));
        last = std::min(last, std::max(a, b));
        return first <= last;
    };
    return cut(from.x, to.x - from.x, rectangle.left - margin, rectangle.right + margin) &&
           cut(from.y, to.y - from.y, rectangle.bottom - margin, rectangle.top + margin);
}

void cut_3d_polyline(std::int32_t count, const VT_Point_D* points, const VT_RGB32* colors,
                     const std::function<void(std::int32_t, std::int32_t, const VT_DCI_Point*, const VT_RGB32*)>& draw) {
    constexpr VT_Int_Rectangle guard{-farthest_coordinate, farthest_coordinate, -farthest_coordinate, farthest_coordinate};
    if (count < 2) {
        return;
    }
    std::vector<std::uint16_t> outcodes(static_cast<std::size_t>(count));
    if (VD_Clip(guard, count, points, outcodes.data()) == 0) {
        return;
    }
    const auto outcode = [&](std::int32_t i) { return outcodes[static_cast<std::size_t>(i)]; };
    const auto colors_at = [&](std::int32_t i) { return colors ? colors + i : nullptr; };
    std::vector<VT_DCI_Point> piece;
    std::vector<VT_RGB32> piece_colors;
    for (std::int32_t i = 0; i < count;) {
        VT_DCI_Point cut[2];
        VT_RGB32 cut_colors[2];
        if (outcode(i) != 0) {
            if (i + 1 < count && outcode(i + 1) != 0 && (outcode(i) & outcode(i + 1)) == 0 &&
                VD_Preclip_Ends(&outcodes[static_cast<std::size_t>(i)], guard, points + i, cut, colors_at(i), cut_colors)) {
                draw(i, 2, cut, colors ? cut_colors : nullptr);
            }
            ++i;
            continue;
        }
        // A run of points inside, with the places where the polyline enters and leaves.
        piece.clear();
        piece_colors.clear();
        const auto add = [&](const VT_DCI_Point& point, VT_RGB32 color) {
            piece.push_back(point);
            piece_colors.push_back(color);
        };
        const std::int32_t first = i > 0 ? i - 1 : 0;
        if (i > 0) {
            VD_Preclip_Head(outcode(i - 1), guard, points + i - 1, cut, colors_at(i - 1), cut_colors);
            add(cut[0], cut_colors[0]);
        }
        for (; i < count && outcode(i) == 0; ++i) {
            add({nearest_coordinate(points[i].x), nearest_coordinate(points[i].y), nearest_coordinate(points[i].z)},
                colors ? colors[i] : VT_RGB32{});
        }
        if (i < count) {
            VD_Preclip_Tail(outcode(i), guard, points + i - 1, cut, colors_at(i - 1), cut_colors);
            add(cut[0], cut_colors[0]);
        }
        draw(first, static_cast<std::int32_t>(piece.size()), piece.data(), colors ? piece_colors.data() : nullptr);
    }
}

} // namespace vorna
