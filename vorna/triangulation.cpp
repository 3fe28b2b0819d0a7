// Triangulation of contours by the even-odd rule.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <set>

#include "host/contour.h"
#include "vorna/edges.h"

// Edges are cut first where they cross or touch, so that they meet at common ends only. A sweep over the ends, from low to high,
// then divides the area inside into pieces that are monotone in that direction, and each piece into triangles. Apart from
// crossings every corner of a triangle is a corner of a contour: triangles with a common edge have exactly the same ends there,
// so that a renderer draws each of their pixels once.

namespace {

using vorna::Corner;
using vorna::Edge;
using vorna::is_same;
using vorna::turn;

// Projects to the two axes along which the direction is shortest, in the orientation that keeps their order.
class Projection {
public:
    explicit Projection(const VT_Vector& direction) noexcept {
        const float x = std::abs(direction.x);
        const float y = std::abs(direction.y);
        const float z = std::abs(direction.z);
        along_ = z >= x && z >= y ? Axis::z : x >= y ? Axis::x : Axis::y;
    }

    Corner see(const VT_Point& point) const noexcept {
        switch (along_) {
        case Axis::x:
            return {point.y, point.z, point.x};
        case Axis::y:
            return {point.z, point.x, point.y};
        default:
            return {point.x, point.y, point.z};
        }
    }

    VT_Point give(const Corner& corner) const noexcept {
        const auto x = static_cast<float>(corner.x);
        const auto y = static_cast<float>(corner.y);
        const auto depth = static_cast<float>(corner.depth);
        switch (along_) {
        case Axis::x:
            return {depth, x, y};
        case Axis::y:
            return {y, depth, x};
        default:
            return {x, y, depth};
        }
    }

private:
    enum class Axis { x, y, z };

    Axis along_;
};

bool is_finite(const VT_Point& point) noexcept {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

std::vector<Edge> edges_of(const std::vector<VT_Contour_Set::Contour>& contours, const Projection& projection) {
    std::vector<Edge> edges;
    std::vector<Corner> corners;
    for (const auto& contour : contours) {
        corners.clear();
        for (const VT_Point& point : contour) {
            if (is_finite(point)) {
                corners.push_back(projection.see(point));
            }
        }
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const Corner& to = corners[i + 1 < corners.size() ? i + 1 : 0];
            if (!is_same(corners[i], to)) {
                edges.emplace_back(corners[i], to);
            }
        }
    }
    return edges;
}

// Corners that are not yet cut off, in chains from the highest to the lowest.
struct Waiting_Corner {
    Corner corner;
    std::uint32_t below;
};

// The callback, and the corners of triangles that remain.
struct Output {
    // Counter-clockwise; triangles without area are left out.
    void emit(const Corner& a, const Corner& b, const Corner& c) const {
        const int side = turn(a, b, c);
        if (side != 0) {
            const std::array<VT_Point, 3> corners{projection.give(a), projection.give(side > 0 ? b : c),
                                                  projection.give(side > 0 ? c : b)};
            callback(context, corners.data());
        }
    }

    Projection projection;
    VT_Triangle_Callback callback;
    void* context;
    std::vector<Waiting_Corner> waiting = {};
};

enum class Side { left, right };

// A piece that every level line crosses in one segment. Its corners come from low to high; those not cut off yet wait on one
// side.
class Monotone_Piece {
public:
    Monotone_Piece(const Corner& lowest, Output& out) { wait(lowest, nothing, out); }

    Corner last(const Output& out) const { return out.waiting[top_].corner; }
    Side side() const noexcept { return side_; }

    void add(const Corner& corner, Side side, Output& out) {
        if (side != side_ && out.waiting[top_].below != nothing) {
            finish(corner, out);
            wait(last(out), nothing, out);
        }
        // On its own side, the corner cuts off every preceding corner that is convex.
        const int bulge = side == Side::left ? -1 : 1;
        for (std::uint32_t below = out.waiting[top_].below; below != nothing; below = out.waiting[top_].below) {
            if (turn(out.waiting[below].corner, out.waiting[top_].corner, corner) != bulge) {
                break;
            }
            out.emit(out.waiting[below].corner, out.waiting[top_].corner, corner);
            top_ = below;
        }
        wait(corner, top_, out);
        side_ = side;
    }

    // The corner sees all that wait: it is the highest one, or on the opposite side.
    void finish(const Corner& corner, const Output& out) const {
        for (std::uint32_t i = top_; out.waiting[i].below != nothing; i = out.waiting[i].below) {
            out.emit(out.waiting[out.waiting[i].below].corner, out.waiting[i].corner, corner);
        }
    }

private:
    static constexpr std::uint32_t nothing = UINT32_MAX;

    void wait(const Corner& corner, std::uint32_t below, Output& out) {
        top_ = static_cast<std::uint32_t>(out.waiting.size());
        out.waiting.push_back({corner, below});
    }

    std::uint32_t top_ = nothing;
    Side side_ = Side::left;
};

// The area inside between two neighbouring edges of the sweep: one piece, or two pieces that have met in a corner where the edges
// between them end. The next corner visible from there decides where they are joined.
class Region {
public:
    explicit Region(const Monotone_Piece& piece) : left_(piece) {}

    void touch(const Corner& corner, Side side, Output& out) {
        if (right_) {
            (side == Side::left ? left_ : *right_).finish(corner, out);
            if (side == Side::left) {
                left_ = *right_;
            }
            right_.reset();
        }
        left_.add(corner, side, out);
    }

    void finish(const Corner& corner, const Output& out) const {
        left_.finish(corner, out);
        if (right_) {
            right_->finish(corner, out);
        }
    }

    // The corner lies inside: the area left of it stays here, the area right of it is returned.
    Region split(const Corner& corner, Output& out) {
        if (!right_) {
            // The last corner sees this one, and a new piece begins on the side where the last corner lies.
            right_.emplace(left_.last(out), out);
            if (left_.side() == Side::left) {
                std::swap(left_, *right_);
            }
        }
        left_.add(corner, Side::right, out);
        right_->add(corner, Side::left, out);
        const Region right(*right_);
        right_.reset();
        return right;
    }

    // Both regions touch the corner in which the edges between them end.
    void join(const Region& right) { right_ = right.left_; }

private:
    Monotone_Piece left_;
    std::optional<Monotone_Piece> right_;
};

// The edges on the sweep line, from left to right. Inside lies between the first and the second of them, the third and the
// fourth, and so on; the left edge of each pair holds the region.
class Sweep {
public:
    Sweep(std::size_t edges, Output& out) : places_(edges, line_.end()), out_(out) {}

    // The numbers of the edges that end and that begin in the corner, in any order. Returns false when the edges are not in
    // order, which happens for crossings that the precision of the coordinates cannot separate.
    bool pass(const Corner& corner, const std::vector<std::size_t>& ending, std::vector<std::size_t>& beginning,
              const std::vector<Edge>& edges) {
        Place first = ending.empty() ? line_.lower_bound(corner) : places_[ending.front()];
        while (!ending.empty() && first != line_.begin() && is_same(std::prev(first)->high, corner)) {
            --first;
        }
        Place last = first;
        for (std::size_t i = 0; i < ending.size(); ++i, ++last) {
            if (last == line_.end() || !is_same(last->high, corner)) {
                return false;
            }
        }
        std::sort(beginning.begin(), beginning.end(),
                  [&](std::size_t a, std::size_t b) { return turn(corner, edges[a].high, edges[b].high) < 0; });

        Region* const before = first != line_.begin() && std::prev(first)->region ? &*std::prev(first)->region : nullptr;
        std::optional<Region> after = end_regions(corner, before, first, last);
        if (before && after && beginning.empty()) {
            before->join(*after);
        }

        Place place = first;
        bool inside = before != nullptr;
        for (const std::size_t edge : beginning) {
            if (place == last) {
                place = line_.insert(last, {corner, corner, std::nullopt});
            }
            inside = !inside;
            place->low = corner;
            place->high = edges[edge].high;
            if (!inside) {
                place->region.reset();
            } else if (edge == beginning.back()) {
                place->region = after;
            } else {
                place->region.emplace(Monotone_Piece(corner, out_));
            }
            places_[edge] = place++;
        }
        line_.erase(place, last);
        return true;
    }

private:
    struct Cut_Edge {
        mutable Corner low, high;
        mutable std::optional<Region> region;
    };

    using Line = std::multiset<Cut_Edge, vorna::Left_To_Right>;
    using Place = Line::iterator;

    // Adds the corner to the regions around it; returns the region on its right, whose left edge changes here.
    std::optional<Region> end_regions(const Corner& corner, Region* before, Place first, Place last) {
        if (before && first == last) {
            return before->split(corner, out_);
        }
        if (before) {
            before->touch(corner, Side::right, out_);
        }
        std::optional<Region> after;
        for (Place place = first; place != last; ++place) {
            if (!place->region) {
                continue;
            }
            if (std::next(place) == last) {
                after = place->region;
                after->touch(corner, Side::left, out_);
            } else {
                place->region->finish(corner, out_);
            }
        }
        return after;
    }

    Line line_;
    std::vector<Place> places_;
    Output& out_;
};

} // namespace

void VT_Contour_Set::triangulate(VT_Triangle_Callback callback, void* context) const {
    const Projection projection(projection_);
    const vorna::Swept_Edges swept = vorna::meeting_in_ends_only(edges_of(contours_, projection));
    const std::vector<Edge>& edges = swept.edges;
    Output out{projection, callback, context};
    Sweep sweep(edges.size(), out);
    std::vector<std::size_t> ending;
    std::vector<std::size_t> beginning;
    std::size_t next = 0;
    for (auto high = swept.by_high.begin(); high != swept.by_high.end();) {
        const bool begins = next < edges.size() && vorna::is_before(edges[next].low, edges[*high].high);
        const Corner corner = begins ? edges[next].low : edges[*high].high;
        ending.clear();
        beginning.clear();
        for (; next < edges.size() && is_same(edges[next].low, corner); ++next) {
            beginning.push_back(next);
        }
        for (; high != swept.by_high.end() && is_same(edges[*high].high, corner); ++high) {
            ending.push_back(*high);
        }
        if (!sweep.pass(corner, ending, beginning, edges)) {
            return;
        }
    }
}
