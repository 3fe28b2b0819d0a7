// Triangulation of contours by the even-odd rule.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <memory>

#include "renderer/host/contour.h"
#include "vorna/exact.h"

// Edges are first cut where they cross or touch, so that afterwards they meet in common ends only. A sweep over their ends, from
// low to high, then cuts the inside into pieces that are monotone in that direction and each piece into triangles. Apart from
// crossings every corner of a triangle is a corner of a contour: triangles that share an edge share its ends to the bit, and a
// renderer that draws each pixel of two adjoining triangles once does so here.

namespace {

// Two coordinates in double precision, which keeps crossings apart that single precision would merge.
struct Seen_Point {
    double x = 0, y = 0;
};

// A corner as it is given, and as it is seen along the projection.
struct Corner {
    Seen_Point seen;
    VT_Point given;
};

// The order of the sweep: upwards, and on one height to the right.
bool is_before(const Corner& a, const Corner& b) noexcept {
    return a.seen.y != b.seen.y ? a.seen.y < b.seen.y : a.seen.x < b.seen.x;
}

bool is_same(const Corner& a, const Corner& b) noexcept {
    return a.seen.x == b.seen.x && a.seen.y == b.seen.y;
}

int turn(const Corner& a, const Corner& b, const Corner& c) noexcept {
    return vorna::turn(a.seen, b.seen, c.seen);
}

// Sees the plane of the two axes that the direction is least along, turned so that their order is kept.
Corner see(const VT_Point& point, const VT_Vector& direction) noexcept {
    const float x = std::abs(direction.x);
    const float y = std::abs(direction.y);
    const float z = std::abs(direction.z);
    if (z >= x && z >= y) {
        return {{point.x, point.y}, point};
    }
    return x >= y ? Corner{{point.y, point.z}, point} : Corner{{point.z, point.x}, point};
}

bool is_finite(const VT_Point& point) noexcept {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

// low comes before high.
struct Edge {
    Corner low, high;
};

bool comes_before(const Edge& a, const Edge& b) noexcept {
    if (!is_same(a.low, b.low)) {
        return is_before(a.low, b.low);
    }
    return is_before(a.high, b.high);
}

std::vector<Edge> edges_of(const std::vector<VT_Contour_Set::Contour>& contours, const VT_Vector& direction) {
    std::vector<Edge> edges;
    std::vector<Corner> corners;
    for (const auto& contour : contours) {
        corners.clear();
        for (const VT_Point& point : contour) {
            if (is_finite(point)) {
                corners.push_back(see(point, direction));
            }
        }
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const Corner& from = corners[i];
            const Corner& to = corners[(i + 1) % corners.size()];
            if (!is_same(from, to)) {
                edges.push_back(is_before(from, to) ? Edge{from, to} : Edge{to, from});
            }
        }
    }
    return edges;
}

// Sorts the edges; of edges that lie on each other two and two make no border.
void cancel_pairs(std::vector<Edge>& edges) {
    std::sort(edges.begin(), edges.end(), comes_before);
    std::vector<Edge> kept;
    for (const Edge& edge : edges) {
        if (!kept.empty() && is_same(kept.back().low, edge.low) && is_same(kept.back().high, edge.high)) {
            kept.pop_back();
        } else {
            kept.push_back(edge);
        }
    }
    edges.swap(kept);
}

bool is_strictly_between(const Edge& edge, const Corner& corner) noexcept {
    return is_before(edge.low, corner) && is_before(corner, edge.high);
}

// How crossings are rounded. In single precision corners are given out exactly as they were computed with, so that triangles
// neither overlap nor part. Only crossings that crowd together within its last digits need more: forty bits, few enough for
// the differences and products of turn to stay exact.
enum class Precision { single, forty_bits };

double rounded(double value, double largest, Precision precision) noexcept {
    if (precision == Precision::single) {
        return static_cast<float>(value);
    }
    const double unit = std::ldexp(1.0, std::ilogb(largest) - 40);
    return std::nearbyint(value / unit) * unit;
}

Corner crossing(const Edge& a, const Edge& b, Precision precision) noexcept {
    const Seen_Point& p = a.low.seen;
    const double ax = a.high.seen.x - p.x;
    const double ay = a.high.seen.y - p.y;
    const double bx = b.high.seen.x - b.low.seen.x;
    const double by = b.high.seen.y - b.low.seen.y;
    const double t = ((b.low.seen.x - p.x) * by - (b.low.seen.y - p.y) * bx) / (ax * by - ay * bx);
    const double largest = std::max({std::abs(p.x), std::abs(p.y), std::abs(a.high.seen.x), std::abs(a.high.seen.y)});
    const auto along = [t](float from, float to) { return static_cast<float>(from + (double{to} - from) * t); };
    const VT_Point& from = a.low.given;
    const VT_Point& to = a.high.given;
    return {{rounded(p.x + ax * t, largest, precision), rounded(p.y + ay * t, largest, precision)},
            {along(from.x, to.x), along(from.y, to.y), along(from.z, to.z)}};
}

// Where an edge has to be cut.
struct Cut {
    std::size_t edge;
    Corner corner;
};

void cut_inside(std::vector<Cut>& cuts, const std::vector<Edge>& edges, std::size_t edge, const Corner& corner) {
    if (is_strictly_between(edges[edge], corner)) {
        cuts.push_back({edge, corner});
    }
}

void find_cuts(std::vector<Cut>& cuts, const std::vector<Edge>& edges, std::size_t i, std::size_t j, Precision precision) {
    const Edge& a = edges[i];
    const Edge& b = edges[j];
    const auto [a_left, a_right] = std::minmax(a.low.seen.x, a.high.seen.x);
    const auto [b_left, b_right] = std::minmax(b.low.seen.x, b.high.seen.x);
    if (a_right < b_left || b_right < a_left) {
        return;
    }
    const int b_low = turn(a.low, a.high, b.low);
    const int b_high = turn(a.low, a.high, b.high);
    if (b_low * b_high > 0) {
        return;
    }
    const int a_low = turn(b.low, b.high, a.low);
    const int a_high = turn(b.low, b.high, a.high);
    if (b_low * b_high < 0 && a_low * a_high < 0) {
        // A crossing that rounds to the end of one edge cuts only the other.
        const Corner corner = crossing(a, b, precision);
        cut_inside(cuts, edges, i, corner);
        cut_inside(cuts, edges, j, corner);
        return;
    }
    const auto touch = [&](int side, std::size_t edge, const Corner& corner) {
        if (side == 0) {
            cut_inside(cuts, edges, edge, corner);
        }
    };
    touch(b_low, i, b.low);
    touch(b_high, i, b.high);
    touch(a_low, j, a.low);
    touch(a_high, j, a.high);
}

// All cuts of sorted edges.
std::vector<Cut> find_cuts(const std::vector<Edge>& edges, Precision precision) {
    std::vector<Cut> cuts;
    std::vector<std::size_t> open; // edges that reach up to the present one's low end
    for (std::size_t i = 0; i < edges.size(); ++i) {
        std::erase_if(open, [&](std::size_t j) { return edges[j].high.seen.y < edges[i].low.seen.y; });
        for (const std::size_t j : open) {
            find_cuts(cuts, edges, i, j, precision);
        }
        open.push_back(i);
    }
    return cuts;
}

void apply_cuts(std::vector<Edge>& edges, std::vector<Cut>& cuts) {
    std::sort(cuts.begin(), cuts.end(),
              [](const Cut& a, const Cut& b) { return a.edge != b.edge ? a.edge < b.edge : is_before(a.corner, b.corner); });
    for (auto cut = cuts.begin(); cut != cuts.end();) {
        const std::size_t edge = cut->edge;
        const Corner end = edges[edge].high;
        Corner from = edges[edge].low;
        bool first = true;
        const auto add = [&](const Corner& to) {
            if (is_same(from, to)) {
                return;
            }
            if (first) {
                edges[edge].high = to;
                first = false;
            } else {
                edges.push_back({from, to});
            }
            from = to;
        };
        for (; cut != cuts.end() && cut->edge == edge; ++cut) {
            add(cut->corner);
        }
        add(end);
    }
}

// Cutting bends edges by what rounding moves a crossing, which may make a new crossing beside it; a few rounds settle that.
void meet_in_ends_only(std::vector<Edge>& edges) {
    constexpr int single_rounds = 8;
    constexpr int most_rounds = 64;
    cancel_pairs(edges);
    for (int round = 0; round < most_rounds; ++round) {
        std::vector<Cut> cuts = find_cuts(edges, round < single_rounds ? Precision::single : Precision::forty_bits);
        if (cuts.empty()) {
            return;
        }
        apply_cuts(edges, cuts);
        cancel_pairs(edges);
    }
}

class Triangle_Sink {
public:
    Triangle_Sink(VT_Triangle_Callback callback, void* context) noexcept : callback_(callback), context_(context) {}

    // Counterclockwise; a triangle without an area is none.
    void emit(const Corner& a, const Corner& b, const Corner& c) const {
        const int side = turn(a, b, c);
        if (side != 0) {
            const std::array<VT_Point, 3> corners{a.given, side > 0 ? b.given : c.given, side > 0 ? c.given : b.given};
            callback_(context_, corners.data());
        }
    }

private:
    VT_Triangle_Callback callback_;
    void* context_;
};

enum class Side { left, right };

// A piece that every level line cuts once. Its corners come from low to high; what cannot be cut off yet waits on one side.
class Monotone_Piece {
public:
    explicit Monotone_Piece(const Corner& lowest) : waiting_{lowest} {}

    const Corner& last() const noexcept { return waiting_.back(); }
    Side side() const noexcept { return side_; }

    void add(const Corner& corner, Side side, const Triangle_Sink& sink) {
        if (waiting_.size() > 1 && side != side_) {
            finish(corner, sink);
            waiting_ = {waiting_.back()};
        }
        // On its own side the corner cuts off every corner before it that bulges out.
        const int bulge = side == Side::left ? -1 : 1;
        while (waiting_.size() > 1 && turn(waiting_[waiting_.size() - 2], waiting_.back(), corner) == bulge) {
            sink.emit(waiting_[waiting_.size() - 2], waiting_.back(), corner);
            waiting_.pop_back();
        }
        waiting_.push_back(corner);
        side_ = side;
    }

    // The corner sees all that wait: the highest corner, or one across the piece.
    void finish(const Corner& corner, const Triangle_Sink& sink) const {
        for (std::size_t i = 1; i < waiting_.size(); ++i) {
            sink.emit(waiting_[i - 1], waiting_[i], corner);
        }
    }

private:
    std::vector<Corner> waiting_;
    Side side_ = Side::left;
};

// The inside between two neighbouring edges of the sweep: one piece, or two side by side that met in a corner below which no edge
// parts them any more. The next corner seen decides where that gap closes.
class Region {
public:
    explicit Region(const Corner& lowest) { pieces_.emplace_back(lowest); }
    explicit Region(Monotone_Piece piece) { pieces_.push_back(std::move(piece)); }

    void touch(const Corner& corner, Side side, const Triangle_Sink& sink) {
        if (pieces_.size() == 2) {
            Monotone_Piece& near = side == Side::left ? pieces_.front() : pieces_.back();
            near.finish(corner, sink);
            pieces_.erase(side == Side::left ? pieces_.begin() : pieces_.begin() + 1);
        }
        pieces_.front().add(corner, side, sink);
    }

    void finish(const Corner& corner, const Triangle_Sink& sink) {
        for (const Monotone_Piece& piece : pieces_) {
            piece.finish(corner, sink);
        }
    }

    // The corner lies inside: what is left of it stays here, what is right of it is returned.
    std::unique_ptr<Region> split(const Corner& corner, const Triangle_Sink& sink) {
        if (pieces_.size() == 1) {
            // The last corner and this one see each other, and a new piece begins on the side where the last corner lies.
            const Monotone_Piece begun(pieces_.front().last());
            pieces_.insert(pieces_.front().side() == Side::left ? pieces_.begin() : pieces_.end(), begun);
        }
        pieces_.front().add(corner, Side::right, sink);
        pieces_.back().add(corner, Side::left, sink);
        auto right = std::make_unique<Region>(std::move(pieces_.back()));
        pieces_.pop_back();
        return right;
    }

    // Both regions have been touched by the corner in which the edges between them end.
    void join(Region& right) { pieces_.push_back(std::move(right.pieces_.front())); }

private:
    std::vector<Monotone_Piece> pieces_;
};

// The edges that the sweep line cuts, from left to right. Inside lies between the first and the second of them, the third and the
// fourth, and so on; the left one of each two holds the region.
class Sweep {
public:
    explicit Sweep(const Triangle_Sink& sink) noexcept : sink_(sink) {}

    // ending: how many edges end in the corner; starting: those that begin there, in any order. False when the edges do not lie
    // in order, which takes crossings that the coordinates' precision cannot keep apart.
    bool pass(const Corner& corner, std::size_t ending, std::vector<Edge>& starting) {
        const std::size_t at = first_not_left_of(corner);
        if (!end_in(corner, at, ending)) {
            return false;
        }
        std::sort(starting.begin(), starting.end(), [](const Edge& a, const Edge& b) { return turn(a.low, a.high, b.high) < 0; });

        const bool inside_before = at % 2 == 1;
        const bool inside_after = (at + ending) % 2 == 1;
        std::unique_ptr<Region> after; // the region right of the corner, whose left edge changes here
        Region* const before = inside_before ? cut_[at - 1].region.get() : nullptr;
        if (inside_before && ending == 0) {
            after = before->split(corner, sink_);
        } else {
            if (before) {
                before->touch(corner, Side::right, sink_);
            }
            for (std::size_t i = at + (inside_before ? 1 : 0); i + 1 < at + ending; i += 2) {
                cut_[i].region->finish(corner, sink_);
            }
            if (inside_after) {
                after = std::move(cut_[at + ending - 1].region);
                after->touch(corner, Side::left, sink_);
            }
        }
        if (before && after && starting.empty()) {
            before->join(*after);
        }

        const auto place = cut_.begin() + static_cast<std::ptrdiff_t>(at);
        cut_.erase(place, place + static_cast<std::ptrdiff_t>(ending));
        std::vector<Cut_Edge> begun;
        for (const Edge& edge : starting) {
            begun.push_back({edge, nullptr});
            const bool is_left = (at + begun.size()) % 2 == 1;
            if (is_left && begun.size() == starting.size()) {
                begun.back().region = std::move(after);
            } else if (is_left) {
                begun.back().region = std::make_unique<Region>(corner);
            }
        }
        cut_.insert(cut_.begin() + static_cast<std::ptrdiff_t>(at), std::make_move_iterator(begun.begin()),
                    std::make_move_iterator(begun.end()));
        return true;
    }

private:
    struct Cut_Edge {
        Edge edge;
        std::unique_ptr<Region> region;
    };

    std::size_t first_not_left_of(const Corner& corner) const {
        const auto is_left = [&corner](const Cut_Edge& cut) { return turn(cut.edge.low, cut.edge.high, corner) < 0; };
        return static_cast<std::size_t>(std::partition_point(cut_.begin(), cut_.end(), is_left) - cut_.begin());
    }

    bool end_in(const Corner& corner, std::size_t at, std::size_t count) const {
        for (std::size_t i = at; i < at + count; ++i) {
            if (i >= cut_.size() || !is_same(cut_[i].edge.high, corner)) {
                return false;
            }
        }
        return true;
    }

    std::vector<Cut_Edge> cut_;
    const Triangle_Sink& sink_;
};

} // namespace

void VT_Contour_Set::triangulate(VT_Triangle_Callback callback, void* context) const {
    std::vector<Edge> edges = edges_of(contours_, projection_);
    meet_in_ends_only(edges);
    std::vector<Corner> highs;
    highs.reserve(edges.size());
    for (const Edge& edge : edges) {
        highs.push_back(edge.high);
    }
    std::sort(highs.begin(), highs.end(), is_before);

    const Triangle_Sink sink(callback, context);
    Sweep sweep(sink);
    std::vector<Edge> starting;
    auto edge = edges.begin();
    auto high = highs.begin();
    while (high != highs.end()) {
        const Corner corner = edge != edges.end() && is_before(edge->low, *high) ? edge->low : *high;
        starting.clear();
        for (; edge != edges.end() && is_same(edge->low, corner); ++edge) {
            starting.push_back(*edge);
        }
        std::size_t ending = 0;
        for (; high != highs.end() && is_same(*high, corner); ++high) {
            ++ending;
        }
        if (!sweep.pass(corner, ending, starting)) {
            return;
        }
    }
}
