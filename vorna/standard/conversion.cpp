// From one coordinate form to another, and what of the window can be seen.
#include "vorna/standard/conversion.h"

#include <algorithm>

#include "renderer/host/clip.h"

namespace vorna {

namespace {

VT_Int_Rectangle intersection(const VT_Int_Rectangle& a, const VT_Int_Rectangle& b) noexcept {
    return {std::max(a.left, b.left), std::min(a.right, b.right), std::max(a.bottom, b.bottom), std::min(a.top, b.top)};
}

} // namespace

VT_Int_Rectangle window_rectangle(VT_Renderer_Data& renderer) {
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    const VT_Int_Pair origin = options.local_coordinates() ? VT_Int_Pair{} : options.window_origin();
    const VT_Int_Pair size = options.window_size();
    const auto last = [](std::int32_t first, std::int32_t length) {
        return static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{first} + length - 1, INT32_MAX));
    };
    return {origin.x, last(origin.x, size.x), origin.y, last(origin.y, size.y)};
}

VT_Int_Rectangle visible_rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    return intersection(window_rectangle(renderer), rendition.clip.hard_clip);
}

VT_Int_Rectangle clip_to_draw_in(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    const VT_Int_Rectangle window = window_rectangle(renderer);
    const VT_Int_Pair size = renderer.current_renderer_options().window_size();
    const VT_Int_Rectangle hull{std::min(window.left, 0), std::max(window.right, size.x - 1), std::min(window.bottom, 0),
                                std::max(window.top, size.y - 1)};
    return intersection(hull, rendition.clip.hard_clip);
}

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
            add({rounded(points[i].x), rounded(points[i].y), rounded(points[i].z)}, colors ? colors[i] : VT_RGB32{});
        }
        if (i < count) {
            VD_Preclip_Tail(outcode(i), guard, points + i - 1, cut, colors_at(i - 1), cut_colors);
            add(cut[0], cut_colors[0]);
        }
        draw(first, static_cast<std::int32_t>(piece.size()), piece.data(), colors ? piece_colors.data() : nullptr);
    }
}

} // namespace vorna
