// Edges of contours that meet at common ends only, in the order of a sweep.
#pragma once

#include <cstddef>
#include <vector>

#include "vorna/exact.h"

namespace vorna {

// A corner in the plane of a projection. Double precision separates crossings that single precision would merge.
struct Corner {
    double x = 0, y = 0, depth = 0;
};

// The order of the sweep: upwards, at equal heights to the right.
inline bool is_before(const Corner& a, const Corner& b) noexcept {
    return a.y != b.y ? a.y < b.y : a.x < b.x;
}

inline bool is_same(const Corner& a, const Corner& b) noexcept {
    return a.x == b.x && a.y == b.y;
}

// low precedes high.
struct Edge {
    Edge(const Corner& a, const Corner& b) noexcept : low(is_before(a, b) ? a : b), high(is_before(a, b) ? b : a) {}

    Corner low, high;
};

// Orders the edges on the sweep line from left to right. Two edges are never compared, only an edge and a corner: edges are
// inserted at a known position, and may change as long as their order stays right.
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

// Edges in the order of their low ends, and their numbers in the order of their high ends.
struct Swept_Edges {
    explicit Swept_Edges(std::vector<Edge> unordered);

    std::vector<Edge> edges;
    std::vector<std::size_t> by_high;
};

// Cuts edges where they cross or touch. Two edges that coincide are both removed, since they border nothing by the even-odd rule.
Swept_Edges meeting_in_ends_only(std::vector<Edge> edges);

} // namespace vorna
