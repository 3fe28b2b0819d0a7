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

// Twice the area that a ring encloses, with a sign by its direction.
double twice_area(const Path& ring) {
    double sum = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Position a = ring[i], b = ring[(i + 1) % ring.size()];
        sum += (a.x - ring[0].x) * (b.y - ring[0].y) - (b.x - ring[0].x) * (a.y - ring[0].y);
    }
    return sum;
}

// The pixels around the ring that shows most in the window, where its corners beside the window count as on its sides.
VT_Int_Rectangle largest_part(const Face& face, const VT_Int_Rectangle& window) {
    double largest = -1;
    VT_Int_Rectangle part{0, -1, 0, -1};
    for (const Path& ring : face) {
        if (ring.empty()) {
            continue;
        }
        Path seen = ring;
        for (Position& p : seen) {
            p = {std::clamp<double>(p.x, window.left, window.right + 1.0),
                 std::clamp<double>(p.y, window.bottom, window.top + 1.0)};
        }
        const double area = std::abs(twice_area(seen));
        if (area > largest) {
            largest = area;
            const auto [left, right] = std::ranges::minmax(seen, {}, &Position::x);
            const auto [bottom, top] = std::ranges::minmax(seen, {}, &Position::y);
            part = {static_cast<std::int32_t>(left.x), std::min(static_cast<std::int32_t>(right.x), window.right),
                    static_cast<std::int32_t>(bottom.y), std::min(static_cast<std::int32_t>(top.y), window.top)};
        }
    }
    return part;
}

} // namespace

double largest_area(const Face& face) {
    double largest = 0;
    for (const Path& ring : face) {
        largest = std::max(largest, ring.empty() ? 0 : std::abs(twice_area(ring)) / 2);
    }
    return largest;
}

std::optional<VT_Int_Pair> place_in_face(const Face& pixels, const VT_Int_Rectangle& window, VT_Int_Pair size) {
    const VT_Int_Rectangle part = largest_part(pixels, window);
    const std::int32_t height = part.top - part.bottom + 1;
    if (height < size.y || part.right - part.left + 1 < size.x) {
        return std::nullopt;
    }
    std::vector<Row> rows(static_cast<std::size_t>(height));
    double sum_x = 0, sum_y = 0, count = 0;
    for_each_rectangle(pixels, part, [&](const VT_Int_Rectangle& r) {
        for (std::int32_t y = r.bottom; y <= r.top; ++y) {
            rows[static_cast<std::size_t>(y - part.bottom)].push_back({r.left, r.right});
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
            const double away = std::hypot(centred + size.x * 0.5 - middle_x, part.bottom + y + size.y * 0.5 - middle_y);
            const double score = std::min<double>(width, 1.5 * size.x) - 0.5 * away;
            if (score > best_score) {
                best_score = score;
                best = VT_Int_Pair{static_cast<std::int32_t>(std::lround(centred)), part.bottom + y};
            }
        }
    }
    return best;
}

Free_Room::Free_Room(VT_Int_Pair size) : size_(size), cell_(std::max({64, size.x / 512 + 1, size.y / 512 + 1})) {
    cells_ = {size.x / cell_ + 1, size.y / cell_ + 1};
    taken_.resize(static_cast<std::size_t>(cells_.x) * static_cast<std::size_t>(cells_.y));
}

VT_Int_Rectangle Free_Room::cells_of(const VT_Int_Rectangle& box) const {
    return {std::max(box.left, 0) / cell_, std::min(box.right, size_.x - 1) / cell_, std::max(box.bottom, 0) / cell_,
            std::min(box.top, size_.y - 1) / cell_};
}

void Free_Room::block(const VT_Int_Rectangle& box) {
    if (box.left >= size_.x || box.right < 0 || box.bottom >= size_.y || box.top < 0) {
        return;
    }
    const VT_Int_Rectangle cells = cells_of(box);
    for (std::int32_t y = cells.bottom; y <= cells.top; ++y) {
        for (std::int32_t x = cells.left; x <= cells.right; ++x) {
            taken_[static_cast<std::size_t>(y) * static_cast<std::size_t>(cells_.x) + static_cast<std::size_t>(x)].push_back(box);
        }
    }
}

bool Free_Room::is_free(const VT_Int_Rectangle& box) const {
    if (box.left < 0 || box.bottom < 0 || box.right >= size_.x || box.top >= size_.y) {
        return false;
    }
    const auto overlaps = [&](const VT_Int_Rectangle& other) {
        return box.left <= other.right && other.left <= box.right && box.bottom <= other.top && other.bottom <= box.top;
    };
    const VT_Int_Rectangle cells = cells_of(box);
    for (std::int32_t y = cells.bottom; y <= cells.top; ++y) {
        for (std::int32_t x = cells.left; x <= cells.right; ++x) {
            const std::size_t cell =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(cells_.x) + static_cast<std::size_t>(x);
            if (std::ranges::any_of(taken_[cell], overlaps)) {
                return false;
            }
        }
    }
    return true;
}

bool Free_Room::take(std::span<const VT_Int_Rectangle> boxes) {
    const bool all_free = std::ranges::all_of(boxes, [this](const VT_Int_Rectangle& box) { return is_free(box); });
    if (all_free) {
        std::ranges::for_each(boxes, [this](const VT_Int_Rectangle& box) { block(box); });
    }
    return all_free;
}

} // namespace vorna::drawing::map
