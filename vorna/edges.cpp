// Edges cut where they cross or touch.
#include "vorna/edges.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <queue>
#include <set>

// A sweep compares only neighbours on the sweep line, since edges are neighbours before they cross. A cut edge continues from the
// cut as if it began there. Comparisons are exact, so a sweep that cuts nothing has had the right order throughout, and its edges
// meet at their ends only. A cut is rounded, which moves the edges on both sides of it by up to one unit in the last place; this
// may cause a new crossing or a wrong order next to it. Therefore the sweep is repeated after any cut.

namespace vorna {

namespace {

// Precision to which crossings are rounded. In single precision the corners of triangles are exactly those of the computation, so
// that triangles neither overlap nor leave gaps. Double precision is for crossings that single precision would merge.
enum class Precision { single_precision, double_precision };

Corner crossing(const Edge& a, const Edge& b, Precision precision) noexcept {
    const double ax = a.high.x - a.low.x;
    const double ay = a.high.y - a.low.y;
    const double bx = b.high.x - b.low.x;
    const double by = b.high.y - b.low.y;
    const double t = ((b.low.x - a.low.x) * by - (b.low.y - a.low.y) * bx) / (ax * by - ay * bx);
    const double part = std::fmin(std::fmax(t, 0.0), 1.0); // t has rounding errors, and is NaN for nearly parallel edges
    const auto along = [part, precision](double from, double to) {
        const double value = from + (to - from) * part;
        return precision == Precision::single_precision ? static_cast<float>(value) : value;
    };
    const auto [a_left, a_right] = std::minmax(a.low.x, a.high.x);
    const auto [b_left, b_right] = std::minmax(b.low.x, b.high.x);
    return {std::clamp(along(a.low.x, a.high.x), std::max(a_left, b_left), std::min(a_right, b_right)),
            std::clamp(along(a.low.y, a.high.y), std::max(a.low.y, b.low.y), std::min(a.high.y, b.high.y)),
            along(a.low.depth, a.high.depth)};
}

class Cutting_Sweep {
public:
    Cutting_Sweep(const Swept_Edges& swept, Precision precision)
        : edges_(swept.edges), by_high_(swept.by_high), precision_(precision), states_(edges_.size(), {line_.end()}) {}

    // Returns true when an edge was cut; the next sweep then takes the edges of pieces().
    bool run() {
        while (next_high_ < by_high_.size()) {
            pass(next_corner());
        }
        return changed_;
    }

    std::vector<Edge>& pieces() noexcept { return pieces_; }

private:
    // The part of an edge on the sweep line: up to its next known cut.
    struct Piece {
        mutable Corner low, high;
        mutable std::size_t edge;
    };

    using Line = std::multiset<Piece, Left_To_Right>;
    using Place = Line::iterator;

    struct State {
        Place place; // the end of the line while the edge is not on it
        bool waits_at_cut = false;
    };

    // An edge ends for now, or continues, in a corner that is not one of its ends.
    struct Cut {
        Corner corner;
        std::size_t edge;
    };

    struct Comes_Later {
        bool operator()(const Cut& a, const Cut& b) const noexcept { return is_before(b.corner, a.corner); }
    };

    Corner next_corner() const {
        Corner next = edges_[by_high_[next_high_]].high;
        if (next_low_ < edges_.size() && is_before(edges_[next_low_].low, next)) {
            next = edges_[next_low_].low;
        }
        return !cuts_.empty() && is_before(cuts_.top().corner, next) ? cuts_.top().corner : next;
    }

    bool is_on_line(std::size_t edge) const { return states_[edge].place != line_.end(); }

    // Finds the edges that begin in the corner, and those on the sweep line that end there.
    void collect(const Corner& corner) {
        beginning_.clear();
        ending_.clear();
        const auto end = [&](std::size_t edge) {
            if (is_on_line(edge) && is_same(states_[edge].place->high, corner)) {
                ending_.push_back(edge);
            }
        };
        for (; next_low_ < edges_.size() && is_same(edges_[next_low_].low, corner); ++next_low_) {
            beginning_.push_back(next_low_);
        }
        for (; next_high_ < by_high_.size() && is_same(edges_[by_high_[next_high_]].high, corner); ++next_high_) {
            end(by_high_[next_high_]);
        }
        for (; !cuts_.empty() && is_same(cuts_.top().corner, corner); cuts_.pop()) {
            const std::size_t edge = cuts_.top().edge;
            if (states_[edge].waits_at_cut && is_same(edges_[edge].low, corner)) {
                states_[edge].waits_at_cut = false;
                beginning_.push_back(edge);
            } else {
                end(edge);
            }
        }
    }

    static bool goes_through(const Piece& piece, const Corner& corner) noexcept {
        return !is_before(corner, piece.low) && !is_before(piece.high, corner) && turn(piece.low, piece.high, corner) == 0;
    }

    // The piece ends in the corner; its edge continues from there unless the corner is its end.
    void leave_line(const Piece& piece, const Corner& corner) {
        const std::size_t edge = piece.edge;
        states_[edge].place = line_.end();
        if (!is_same(piece.low, corner)) {
            pieces_.emplace_back(piece.low, corner);
        }
        if (!is_same(edges_[edge].high, corner)) {
            changed_ = changed_ || !is_same(piece.low, corner);
            edges_[edge].low = corner;
            beginning_.push_back(edge);
        }
    }

    // Both edges begin in one corner and have the same direction.
    void cancel(std::size_t a, std::size_t b) {
        changed_ = true;
        if (is_same(edges_[a].high, edges_[b].high)) {
            return;
        }
        const bool a_is_longer = is_before(edges_[b].high, edges_[a].high);
        const std::size_t longer = a_is_longer ? a : b;
        edges_[longer].low = edges_[a_is_longer ? b : a].high;
        states_[longer].waits_at_cut = true;
        cuts_.push({edges_[longer].low, longer});
    }

    void sort_beginning(const Corner& corner) {
        const auto side = [&](std::size_t a, std::size_t b) { return turn(corner, edges_[a].high, edges_[b].high); };
        std::sort(beginning_.begin(), beginning_.end(), [&](std::size_t a, std::size_t b) { return side(a, b) < 0; });
        std::size_t kept = 0;
        for (const std::size_t edge : beginning_) {
            if (kept > 0 && side(beginning_[kept - 1], edge) == 0) {
                cancel(beginning_[--kept], edge);
            } else {
                beginning_[kept++] = edge;
            }
        }
        beginning_.resize(kept);
    }

    void pass(const Corner& corner) {
        collect(corner);
        Place first = ending_.empty() ? line_.lower_bound(corner) : states_[ending_.front()].place;
        Place last = first;
        while (first != line_.begin() && goes_through(*std::prev(first), corner)) {
            --first;
        }
        for (; last != line_.end() && goes_through(*last, corner); ++last) {
        }
        for (Place place = first; place != last; ++place) {
            leave_line(*place, corner);
        }
        for (const std::size_t edge : ending_) {
            if (is_on_line(edge)) { // not adjacent to the others, because rounding has disturbed the order
                const Place place = states_[edge].place;
                leave_line(*place, corner);
                last = place == last ? line_.erase(place) : (line_.erase(place), last);
            }
        }
        sort_beginning(corner);

        Place place = first;
        for (const std::size_t edge : beginning_) {
            if (place != last) {
                place->low = corner;
                place->high = edges_[edge].high;
                place->edge = edge;
                states_[edge].place = place++;
            } else {
                states_[edge].place = line_.insert(last, {corner, edges_[edge].high, edge});
            }
        }
        line_.erase(place, last);
        if (!beginning_.empty()) {
            cut_neighbours(states_[beginning_.front()].place);
        }
        cut_neighbours(last);
    }

    // Cuts the piece and its left neighbour where they cross. That they touch is noticed in the corner in which they do.
    void cut_neighbours(Place right) {
        if (right == line_.begin() || right == line_.end()) {
            return;
        }
        const Place left = std::prev(right);
        const Edge a(left->low, left->high);
        const Edge b(right->low, right->high);
        if (is_before(a.high, b.high) ? turn(b.low, b.high, a.high) >= 0 : turn(a.low, a.high, b.high) <= 0) {
            return;
        }
        if (turn(a.low, a.high, b.low) * turn(a.low, a.high, b.high) < 0 &&
            turn(b.low, b.high, a.low) * turn(b.low, b.high, a.high) < 0) {
            const Corner corner = crossing(a, b, precision_);
            cut(left, corner);
            cut(right, corner);
        }
    }

    // A crossing that rounds to an end of one edge cuts only the other one; the two have no common end.
    void cut(Place place, const Corner& corner) {
        if (is_same(place->low, corner) || is_same(place->high, corner)) {
            return;
        }
        changed_ = true;
        const std::size_t edge = place->edge;
        if (is_before(place->low, corner) && is_before(corner, place->high)) {
            place->high = corner;
            cuts_.push({corner, edge});
        } else {
            // A rounded cut may lie before the low end of an almost level edge, or after its high end. This sweep cannot continue
            // there.
            pieces_.emplace_back(place->low, corner);
            pieces_.emplace_back(corner, edges_[edge].high);
            line_.erase(place);
            states_[edge].place = line_.end();
        }
    }

    std::vector<Edge> edges_; // low is the last cut
    const std::vector<std::size_t>& by_high_;
    Precision precision_;
    Line line_;
    std::vector<State> states_;
    std::priority_queue<Cut, std::vector<Cut>, Comes_Later> cuts_;
    std::size_t next_low_ = 0;
    std::size_t next_high_ = 0;
    std::vector<std::size_t> beginning_, ending_; // in the current corner
    std::vector<Edge> pieces_;
    bool changed_ = false;
};

} // namespace

Swept_Edges::Swept_Edges(std::vector<Edge> unordered) : edges(std::move(unordered)), by_high(edges.size()) {
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return is_before(a.low, b.low); });
    std::iota(by_high.begin(), by_high.end(), std::size_t{0});
    std::sort(by_high.begin(), by_high.end(),
              [this](std::size_t a, std::size_t b) { return is_before(edges[a].high, edges[b].high); });
}

Swept_Edges meeting_in_ends_only(std::vector<Edge> edges) {
    constexpr int single_rounds = 8;
    constexpr int most_rounds = 64;
    Swept_Edges swept(std::move(edges));
    for (int round = 0; round < most_rounds; ++round) {
        Cutting_Sweep sweep(swept, round < single_rounds ? Precision::single_precision : Precision::double_precision);
        if (!sweep.run()) {
            break;
        }
        swept = Swept_Edges(std::move(sweep.pieces()));
    }
    return swept;
}

} // namespace vorna
