// Polygons of any shape as triangles.
#include "drawing/model/polygon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>
#include <vector>

#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

struct Flat_Point {
    double x, y;
};

// Above 0 when c lies to the left of the way from a to b.
double turn(const Flat_Point& a, const Flat_Point& b, const Flat_Point& c) noexcept {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// As long as twice the area of the polygon's shadow along it.
VT_Vector_D mean_normal(std::span<const VT_Vector> places) {
    VT_Vector_D normal;
    for (std::size_t i = 2; i < places.size(); ++i) {
        const VT_Vector_D origin = widened(places[0]);
        normal = normal + cross(widened(places[i - 1]) - origin, widened(places[i]) - origin);
    }
    return normal;
}

// No corner turns the other way.
bool is_convex(std::span<const VT_Vector> places, const VT_Vector_D& normal) {
    VT_Vector_D before = widened(places.front()) - widened(places.back());
    for (std::size_t i = 0; i < places.size(); ++i) {
        const VT_Vector_D after = widened(places[i + 1 == places.size() ? 0 : i + 1]) - widened(places[i]);
        if (dot(cross(before, after), normal) < 0) {
            return false;
        }
        before = after;
    }
    return true;
}

// Seen so that the polygon runs counter-clockwise: along the axis that is nearest to its mean normal.
std::vector<Flat_Point> flattened(std::span<const VT_Vector> corners, const VT_Vector_D& normal) {
    const double x = std::abs(normal.x), y = std::abs(normal.y), z = std::abs(normal.z);
    const auto flat = [&](const VT_Vector& p) -> Flat_Point {
        if (z >= x && z >= y) {
            return normal.z < 0 ? Flat_Point{p.y, p.x} : Flat_Point{p.x, p.y};
        }
        if (x >= y) {
            return normal.x < 0 ? Flat_Point{p.z, p.y} : Flat_Point{p.y, p.z};
        }
        return normal.y < 0 ? Flat_Point{p.x, p.z} : Flat_Point{p.z, p.x};
    };
    std::vector<Flat_Point> points(corners.size());
    std::ranges::transform(corners, points.begin(), flat);
    return points;
}

constexpr std::uint32_t none = 0xFFFFFFFF;

// Finds corners inside of triangles: a tree of boxes that are halved along either side in turn. Corners at one place count as
// one.
class Corner_Tree {
public:
    explicit Corner_Tree(const std::vector<Flat_Point>& points) : place_of_(points.size()) {
        std::vector<std::uint32_t> order(points.size());
        std::iota(order.begin(), order.end(), 0U);
        const auto key = [&](std::uint32_t i) { return std::pair(points[i].x, points[i].y); };
        std::ranges::sort(order, {}, key);
        for (std::size_t i = 0; i < order.size(); ++i) {
            if (i == 0 || key(order[i]) != key(order[i - 1])) {
                places_.push_back({points[order[i]]});
            }
            place_of_[order[i]] = static_cast<std::uint32_t>(places_.size() - 1);
            ++places_.back().corners;
        }
        std::vector<std::uint32_t> list(places_.size());
        std::iota(list.begin(), list.end(), 0U);
        root_ = build(list, true);
    }

    std::uint32_t place_of(std::uint32_t corner) const noexcept { return place_of_[corner]; }

    // Whether it was the last one at its place.
    bool remove(std::uint32_t corner) noexcept {
        std::uint32_t place = place_of_[corner];
        if (--places_[place].corners > 0) {
            return false;
        }
        for (; place != none; place = places_[place].above) {
            --places_[place].alive;
        }
        return true;
    }

    // A place with corners in the triangle or on its sides, but for its own three; none for none. Adds to steps what it looks at.
    std::uint32_t find_in(const Flat_Point& a, const Flat_Point& b, const Flat_Point& c, std::uint64_t& steps) const {
        return find(root_, {{a, b, c}}, steps);
    }

private:
    struct Place {
        Flat_Point point;
        std::uint32_t corners = 0;                           // that are left
        std::uint32_t alive = 1;                             // places with corners from here down
        std::uint32_t below[2] = {none, none}, above = none; // in the tree
        Flat_Point low{}, high{};                            // around all from here down
    };
    using Triangle = std::array<Flat_Point, 3>;

    std::uint32_t build(std::span<std::uint32_t> list, bool across) {
        if (list.empty()) {
            return none;
        }
        const std::size_t half = list.size() / 2;
        std::ranges::nth_element(list, list.begin() + static_cast<std::ptrdiff_t>(half), {},
                                 [&](std::uint32_t i) { return across ? places_[i].point.x : places_[i].point.y; });
        const std::uint32_t middle = list[half];
        const std::uint32_t below[2] = {build(list.first(half), !across), build(list.subspan(half + 1), !across)};
        Place& place = places_[middle];
        place.low = place.high = place.point;
        for (const std::uint32_t child : below) {
            if (child != none) {
                Place& other = places_[child];
                other.above = middle;
                place.alive += other.alive;
                place.low = {std::min(place.low.x, other.low.x), std::min(place.low.y, other.low.y)};
                place.high = {std::max(place.high.x, other.high.x), std::max(place.high.y, other.high.y)};
            }
        }
        std::ranges::copy(below, place.below);
        return middle;
    }

    static bool holds(const Triangle& t, const Flat_Point& p) {
        const auto same = [&](const Flat_Point& q) { return p.x == q.x && p.y == q.y; };
        return !same(t[0]) && !same(t[1]) && !same(t[2]) && turn(t[0], t[1], p) >= 0 && turn(t[1], t[2], p) >= 0 &&
               turn(t[2], t[0], p) >= 0;
    }

    // False when the whole box lies beyond one side of the triangle or of the box around it.
    static bool may_meet(const Triangle& t, const Flat_Point& low, const Flat_Point& high) {
        const auto [left, right] = std::minmax({t[0].x, t[1].x, t[2].x});
        const auto [bottom, top] = std::minmax({t[0].y, t[1].y, t[2].y});
        if (high.x < left || low.x > right || high.y < bottom || low.y > top) {
            return false;
        }
        for (std::size_t i = 0; i < 3; ++i) {
            const Flat_Point &a = t[i], &b = t[(i + 1) % 3];
            // The corner of the box that lies farthest to the left of the side.
            const Flat_Point inmost{b.y > a.y ? low.x : high.x, b.x > a.x ? high.y : low.y};
            if (turn(a, b, inmost) < 0) {
                return false;
            }
        }
        return true;
    }

    std::uint32_t find(std::uint32_t at, const Triangle& triangle, std::uint64_t& steps) const {
        if (at == none || places_[at].alive == 0) {
            return none;
        }
        ++steps;
        const Place& place = places_[at];
        if (!may_meet(triangle, place.low, place.high)) {
            return none;
        }
        if (place.corners > 0 && holds(triangle, place.point)) {
            return at;
        }
        const std::uint32_t found = find(place.below[0], triangle, steps);
        return found != none ? found : find(place.below[1], triangle, steps);
    }

    std::vector<Place> places_;
    std::vector<std::uint32_t> place_of_; // by corner
    std::uint32_t root_ = none;
};

// Always cuts the ear with the lowest number.
class Ear_Cutter {
public:
    explicit Ear_Cutter(std::vector<Flat_Point> points)
        : points_(std::move(points)), before_(points_.size()), after_(points_.size()), tree_(points_), waiting_(points_.size()) {
        const auto count = static_cast<std::uint32_t>(points_.size());
        for (std::uint32_t i = 0; i < count; ++i) {
            before_[i] = (i + count - 1) % count;
            after_[i] = (i + 1) % count;
        }
    }

    // Calls triangle(a, b, c) with numbers of corners, and work(steps) from time to time.
    template <class Triangle, class Work> void cut(Triangle triangle, Work work) {
        auto left = static_cast<std::uint32_t>(points_.size());
        for (std::uint32_t i = 0; i < left; ++i) {
            open_.insert(open_.end(), i);
        }
        std::uint32_t first = 0;
        while (left > 3 && !open_.empty()) {
            work(std::exchange(steps_, 0));
            const std::uint32_t ear = *open_.begin(), a = before_[ear], c = after_[ear];
            open_.erase(open_.begin());
            if (!is_ear(ear)) {
                continue;
            }
            triangle(a, ear, c);
            after_[a] = c;
            before_[c] = a;
            after_[ear] = ear; // gone
            first = ear == first ? c : first;
            --left;
            open_.insert({a, c});
            if (tree_.remove(ear)) {
                for (const std::uint32_t corner : std::exchange(waiting_[tree_.place_of(ear)], {})) {
                    if (after_[corner] != corner) {
                        open_.insert(corner);
                    }
                }
            }
        }
        for (std::uint32_t b = after_[first]; left > 2; --left, b = after_[b]) {
            triangle(first, b, after_[b]);
        }
    }

private:
    // An outer corner whose triangle holds no other one. Others wait for the corner in their way to be cut off.
    bool is_ear(std::uint32_t corner) {
        const Flat_Point &a = points_[before_[corner]], &b = points_[corner], &c = points_[after_[corner]];
        ++steps_;
        if (!(turn(a, b, c) > 0)) {
            return false;
        }
        const std::uint32_t found = tree_.find_in(a, b, c, steps_);
        if (found != none) {
            waiting_[found].push_back(corner);
        }
        return found == none;
    }

    std::vector<Flat_Point> points_;
    std::vector<std::uint32_t> before_, after_; // of the corners that are left
    Corner_Tree tree_;
    std::vector<std::vector<std::uint32_t>> waiting_; // corners, by the place in their way
    std::set<std::uint32_t> open_; // that may be ears: new ones, and those that have got other neighbours or room
    std::uint64_t steps_ = 0;
};

} // namespace

void append_large_polygon(Mesh& mesh, std::span<const std::uint32_t> corners, std::span<const VT_Vector> places,
                          const std::string& file, Load_Limits& limits) {
    const auto count = static_cast<std::uint32_t>(corners.size());
    if (count > 3) {
        mesh.diagonals.resize(mesh.triangle_count());
    }
    const auto append = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        mesh.triangles.insert(mesh.triangles.end(), {corners[a], corners[b], corners[c]});
        if (count > 3) {
            const auto inner = [=](std::uint32_t from, std::uint32_t to) { return (from + 1) % count != to; };
            mesh.diagonals.push_back(static_cast<std::uint8_t>(inner(a, b) | inner(b, c) << 1 | inner(c, a) << 2));
        }
    };
    if (count > 3) {
        const VT_Vector_D normal = mean_normal(places);
        if (!is_convex(places, normal)) {
            Ear_Cutter(flattened(places, normal)).cut(append, [&](std::uint64_t steps) { limits.take_work(file, steps); });
            return;
        }
    }
    for (std::uint32_t i = 2; i < count; ++i) {
        append(0, i - 1, i);
    }
}

} // namespace vorna::drawing::model
