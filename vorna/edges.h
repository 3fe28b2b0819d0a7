// Edges of contours that meet in common ends only, in the order of a sweep.
#pragma once

#include <cstddef>
#include <vector>

#include "vorna/exact.h"

namespace vorna {

// A corner as it is seen along a projection. Double precision keeps crossings apart that single precision would merge.
struct Corner {
    double x = 0, y = 0, depth = 0;
};

// The order of the sweep: upwards, and on one height to the right.
inline bool is_before(const Corner& a, const Corner& b) noexcept {
    return a.y != b.y ? a.y < b.y : a.x < b.x;
}

inline bool is_same(const Corner& a, const Corner& b) noexcept {
    return a.x == b.x && a.y == b.y;
}

// low comes before high.
struct Edge {
    Edge(const Corner& a, const Corner& b) noexcept : low(is_before(a, b) ? a : b), high(is_before(a, b) ? b : a) {}

    Corner low, high;
};

// Orders what the sweep line cuts, from left to right. Members keep the place that they are given and are never compared with
// each other, so they may change as long as their place stays right; a corner finds the place where it lies.
struct Left_To_Right {
    using is_transparent = void;

    template <class Cut> bool operator()(const Cut&, const Cut&) const noexcept { return false; }
    template <class Cut> bool operator()(const Cut& cut, const Corner& corner) const noexcept {
        return turn(cut.low, cut.high, corner) < 0;
    }
    template <class Cut> bool operator()(const Corner& corner, const Cut& cut) const noexcept {
        return turn(cut.low, cut.high, corner) > 0;
    }
};

// Edges in the order in which a sweep meets their low ends, and in which it meets their high ones.
struct Swept_Edges {
    explicit Swept_Edges(std::vector<Edge> unordered);

    std::vector<Edge> edges;
    std::vector<std::size_t> by_high;
};

// Cuts edges where they cross or touch. Edges that lie on each other cancel each other in pairs, as they make no border.
Swept_Edges meeting_in_ends_only(std::vector<Edge> edges);

} // namespace vorna
