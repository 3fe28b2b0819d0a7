// Places for labels.
#include "drawing/map/labels.h"

#include <algorithm>
#include <cmath>

#include "drawing/map/polygon_rows.h"

namespace vorna::drawing::map {
namespace {

struct Stretch {
    std::int32_t first, last;
};
using Row = std::vector<Stretch>; // from left to right

Row common(const Row& a, const Row& b) {
    Row result;
    for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
        const Stretch both{std::max(a[i].first, b[j].first), std::min(a[i].last, b[j].last)};
        if (both.first <= both.last) {
            result.push_back(both);
        }
        ++(a[i].last < b[j].last ? i : j);
    }
    return result;
}

} // namespace

std::optional<VT_Int_Pair> place_in_face(const Face& pixels, const VT_Int_Rectangle& window, VT_Int_Pair size) {
    const std::int32_t height = window.top - window.bottom + 1;
    std::vector<Row> rows(static_cast<std::size_t>(height));
    double sum_x = 0, sum_y = 0, count = 0;
    for_each_rectangle(pixels, window, [&](const VT_Int_Rectangle& r) {
        for (std::int32_t y = r.bottom; y <= r.top; ++y) {
            rows[static_cast<std::size_t>(y - window.bottom)].push_back({r.left, r.right});
        }
        const double area = (r.right - r.left + 1.0) * (r.top - r.bottom + 1.0);
        sum_x += area * (r.left + r.right) / 2;
        sum_y += area * (r.bottom + r.top) / 2;
        count += area;
    });
    if (count < static_cast<double>(size.x) * size.y) {
        return std::nullopt;
    }
    const double middle_x = sum_x / count, middle_y = sum_y / count;
    std::optional<VT_Int_Pair> best;
    double best_score = -INFINITY;
    for (std::int32_t y = 0; y + size.y <= height; ++y) {
        Row room = rows[static_cast<std::size_t>(y)];
        for (std::int32_t above = y + 1; above < y + size.y && !room.empty(); ++above) {
            room = common(room, rows[static_cast<std::size_t>(above)]);
        }
        for (const Stretch& stretch : room) {
            const std::int32_t width = stretch.last - stretch.first + 1;
            if (width < size.x) {
                continue;
            }
            const double centred = std::clamp(middle_x - size.x * 0.5, static_cast<double>(stretch.first),
                                              static_cast<double>(stretch.last - size.x + 1));
            const double away = std::hypot(centred + size.x * 0.5 - middle_x, window.bottom + y + size.y * 0.5 - middle_y);
            const double score = std::min<double>(width, 1.5 * size.x) - 0.5 * away;
            if (score > best_score) {
                best_score = score;
                best = VT_Int_Pair{static_cast<std::int32_t>(std::lround(centred)), window.bottom + y};
            }
        }
    }
    return best;
}

bool Free_Room::take(const VT_Int_Rectangle& box) {
    const bool is_free = std::ranges::none_of(taken_, [&](const VT_Int_Rectangle& other) {
        return box.left <= other.right && other.left <= box.right && box.bottom <= other.top && other.bottom <= box.top;
    });
    if (is_free) {
        taken_.push_back(box);
    }
    return is_free;
}

} // namespace vorna::drawing::map
