// The pixels of polygons, row by row.
#include "drawing/map/polygon_rows.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace vorna::drawing::map {
namespace {

// A crossing of a side and a row: the first pixel whose centre is not to the left of it.
struct Crossing {
    std::int32_t row, column;

    friend bool operator<(Crossing a, Crossing b) { return a.row < b.row || (a.row == b.row && a.column < b.column); }
};

// Crossings are kept for a bounded number of rows at a time: sides may run up and down the window any number of times.
constexpr std::int64_t most_crossings = 1 << 22;

// The first row or column from first to last + 1 whose centre is at or beyond the value. NaN, from infinite sides, counts as the
// lowest value.
std::int32_t first_centre(double value, std::int32_t first, std::int32_t last) {
    const double centre = std::ceil(value - 0.5);
    return !(centre > first) ? first : centre > last ? last + 1 : static_cast<std::int32_t>(centre);
}

// Calls visit with both ends of each side.
template <class Visit> void for_each_side(const Face& face, Visit visit) {
    for (const Path& ring : face) {
        for (std::size_t i = 0; i < ring.size(); ++i) {
            visit(ring[i], ring[(i + 1) % ring.size()]);
        }
    }
}

std::int64_t count_crossings(const Face& face, const VT_Int_Rectangle& window) {
    std::int64_t count = 0;
    for_each_side(face, [&](Position a, Position b) {
        count += std::abs(first_centre(a.y, window.bottom, window.top) - first_centre(b.y, window.bottom, window.top));
    });
    return count;
}

// A side covers the rows whose centres lie at or above its lower end and below its upper end: a row through a corner crosses it
// once.
void add_crossings(Position a, Position b, const VT_Int_Rectangle& window, std::vector<Crossing>& crossings) {
    const Position low = a.y <= b.y ? a : b, high = a.y <= b.y ? b : a;
    const std::int32_t end = first_centre(high.y, window.bottom, window.top);
    const double slope = (high.x - low.x) / (high.y - low.y); // unused for horizontal sides, which cover no row
    for (std::int32_t row = first_centre(low.y, window.bottom, window.top); row < end; ++row) {
        const double x = low.x + slope * (row + 0.5 - low.y);
        crossings.push_back({row, first_centre(x, window.left, window.right)});
    }
}

} // namespace

void for_each_rectangle(const Face& face, const VT_Int_Rectangle& window,
                        const std::function<void(const VT_Int_Rectangle&)>& draw) {
    const std::int64_t count = count_crossings(face, window);
    if (count > most_crossings && window.bottom < window.top) {
        VT_Int_Rectangle lower = window, upper = window;
        lower.top = (window.bottom + window.top) / 2;
        upper.bottom = lower.top + 1;
        for_each_rectangle(face, lower, draw);
        for_each_rectangle(face, upper, draw);
        return;
    }
    std::vector<Crossing> crossings;
    crossings.reserve(static_cast<std::size_t>(count));
    for_each_side(face, [&](Position a, Position b) { add_crossings(a, b, window, crossings); });
    std::sort(crossings.begin(), crossings.end());
    // Consecutive rows with one span of the same columns make one rectangle.
    VT_Int_Rectangle open{0, -1, 0, -1};
    const auto finish = [&] {
        if (open.left <= open.right) {
            draw(open);
        }
        open.right = open.left - 1;
    };
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
        const auto [row, first] = crossings[i];
        const std::int32_t last = crossings[i + 1].column - 1;
        if (first > last) {
            continue;
        }
        if (open.left == first && open.right == last && open.top + 1 == row) {
            open.top = row;
        } else {
            finish();
            open = {first, last, row, row};
        }
    }
    finish();
}

} // namespace vorna::drawing::map
