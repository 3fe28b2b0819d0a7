// Polygons of any shape as triangles.
#include "app/scene/polygon.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "app/scene/vectors.h"

namespace app::scene {
namespace {

constexpr std::size_t most_cut_corners = 1024;

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

class Ear_Cutter {
public:
    explicit Ear_Cutter(std::vector<Flat_Point> points) : points_(std::move(points)), left_(points_.size()) {
        std::iota(left_.begin(), left_.end(), 0U);
    }

    // Calls triangle(a, b, c) with numbers of corners.
    template <class Triangle> void cut(Triangle triangle) {
        while (left_.size() > 3) {
            std::size_t ear = 0;
            while (ear < left_.size() && !is_ear(ear)) {
                ++ear;
            }
            if (ear == left_.size()) {
                break;
            }
            triangle(left_[(ear + left_.size() - 1) % left_.size()], left_[ear], left_[(ear + 1) % left_.size()]);
            left_.erase(left_.begin() + static_cast<std::ptrdiff_t>(ear));
        }
        for (std::size_t i = 2; i < left_.size(); ++i) {
            triangle(left_[0], left_[i - 1], left_[i]);
        }
    }

private:
    const Flat_Point& at(std::size_t i) const { return points_[left_[i]]; }
    const Flat_Point& before(std::size_t i) const { return at((i + left_.size() - 1) % left_.size()); }
    const Flat_Point& after(std::size_t i) const { return at((i + 1) % left_.size()); }

    // An outer corner whose triangle holds no other one.
    bool is_ear(std::size_t i) const {
        const Flat_Point &a = before(i), &b = at(i), &c = after(i);
        if (!(turn(a, b, c) > 0)) {
            return false;
        }
        return std::ranges::none_of(left_, [&](std::uint32_t corner) {
            const Flat_Point& p = points_[corner];
            const auto same = [&](const Flat_Point& q) { return p.x == q.x && p.y == q.y; };
            return !same(a) && !same(b) && !same(c) && turn(a, b, p) >= 0 && turn(b, c, p) >= 0 && turn(c, a, p) >= 0;
        });
    }

    std::vector<Flat_Point> points_;
    std::vector<std::uint32_t> left_;
};

} // namespace

void append_polygon(Mesh& mesh, std::span<const std::uint32_t> corners, std::span<const VT_Vector> places) {
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
    if (count > 3 && count <= most_cut_corners) {
        const VT_Vector_D normal = mean_normal(places);
        if (!is_convex(places, normal)) {
            Ear_Cutter(flattened(places, normal)).cut(append);
            return;
        }
    }
    for (std::uint32_t i = 2; i < count; ++i) {
        append(0, i - 1, i);
    }
}

} // namespace app::scene
