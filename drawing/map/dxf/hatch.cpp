// Boundaries of hatches, and what is drawn in them.
#include "drawing/map/dxf/hatch.h"

#include <algorithm>
#include <cmath>

#include "drawing/map/dxf/curves.h"
#include "drawing/map/dxf/placement.h"
#include "drawing/map/dxf/polylines.h"
#include "host/rendition.h"

namespace vorna::drawing::map::dxf {
namespace {

// Reads a hatch's groups one after the other.
struct Walk {
    const Values& values;
    const Entity& entity;
    const std::string& file;
    Load_Limits& limits;
    std::size_t next = 0;

    // Skips groups up to the next one of this code.
    const Group& to(int code) {
        while (next < entity.groups.size() && entity.groups[next].code != code) {
            ++next;
        }
        if (next == entity.groups.size()) {
            values.fail(entity.line, "a group " + std::to_string(code) + " in this HATCH, found none");
        }
        return entity.groups[next++];
    }
    double number(int code) { return values.number(to(code)); }
    std::int64_t integer(int code) { return values.integer(to(code)); }
    Position position(int code) {
        const double x = number(code);
        return {x, number(code + 10)};
    }
    void take(std::size_t positions) {
        limits.take_memory(file, positions * sizeof(Position));
        limits.take_work(file, positions);
    }
};

struct Ring {
    std::int64_t flags;
    Path path;
};

Path polyline_of(Walk& walk) {
    const bool has_bulges = walk.integer(72) != 0;
    std::vector<Vertex> vertices;
    for (std::int64_t count = walk.integer(93); count > 0; --count) {
        Vertex& vertex = vertices.emplace_back();
        vertex.place = walk.position(10);
        vertex.bulge = has_bulges ? walk.number(42) : 0;
    }
    walk.take(position_count(vertices));
    return path_of(vertices, true);
}

Path spline_of(Walk& walk) {
    const Group& start = walk.to(94);
    const std::int64_t degree = walk.values.integer(start);
    const bool is_rational = walk.integer(73) != 0;
    std::int64_t knots = walk.integer(95), points = walk.integer(96);
    Spline spline{static_cast<std::size_t>(std::clamp<std::int64_t>(degree, 0, highest_degree + 1)), {}, {}, {}};
    for (; knots > 0; --knots) {
        spline.knots.push_back(walk.number(40));
    }
    for (; points > 0; --points) {
        spline.points.push_back(walk.position(10));
        if (is_rational) {
            spline.weights.push_back(walk.number(42));
        }
    }
    if (!spline.is_whole()) {
        walk.values.fail(start.line,
                         "a spline of degree 1 to 32 with rising knots, as many as points + degree + 1, in this HATCH");
    }
    walk.limits.take_work(walk.file, spline.work());
    walk.take(spline.position_count());
    Path path;
    spline.add_to(path);
    return path;
}

Path edge_of(Walk& walk) {
    const Group& kind_group = walk.to(72);
    const std::int64_t kind = walk.values.integer(kind_group);
    Path path;
    if (kind == 1) {
        path.push_back(walk.position(10));
        path.push_back(walk.position(11));
    } else if (kind == 2 || kind == 3) {
        const Position center = walk.position(10);
        const Position major = kind == 2 ? Position{walk.number(40), 0} : walk.position(11);
        const double ratio = kind == 2 ? 1 : walk.number(40);
        const double from = walk.number(50) * degree, to = walk.number(51) * degree;
        // Angles of clockwise arcs are counted clockwise.
        const double sign = walk.integer(73) != 0 ? 1 : -1;
        walk.take(721);
        add_arc(center, major, {-major.y * ratio, major.x * ratio}, sign * from, sign * to, path);
    } else if (kind == 4) {
        path = spline_of(walk);
    } else {
        walk.values.fail(kind_group.line, "the kind of an edge from 1 to 4, found '" + std::string(kind_group.value) + "'");
    }
    return path;
}

double distance(Position a, Position b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

// Edges may run in either direction.
Path edges_of(Walk& walk) {
    Path ring;
    bool is_single = true;
    for (std::int64_t count = walk.integer(93); count > 0; --count) {
        Path edge = edge_of(walk);
        if (!ring.empty() && !edge.empty()) {
            const auto gap = [&](Position end) { return std::min(distance(end, edge.front()), distance(end, edge.back())); };
            if (is_single && gap(ring.front()) < gap(ring.back())) {
                std::ranges::reverse(ring);
            }
            is_single = false;
            if (distance(ring.back(), edge.back()) < distance(ring.back(), edge.front())) {
                std::ranges::reverse(edge);
            }
        }
        ring.insert(ring.end(), edge.begin(), edge.end());
    }
    return ring;
}

// The rings between which the hatch lies, even-odd.
Face face_of(std::vector<Ring> rings, std::int64_t islands) {
    constexpr std::int64_t external = 1, outermost = 16; // flags of rings
    constexpr std::int64_t only_outermost = 1, no_islands = 2;
    const std::int64_t used = islands == only_outermost ? external | outermost : islands == no_islands ? external : -1;
    const auto is_used = [=](const Ring& ring) { return used < 0 || (ring.flags & used) != 0; };
    const bool none = std::ranges::none_of(rings, is_used);
    Face face;
    for (Ring& ring : rings) {
        if (none || is_used(ring)) {
            face.push_back(std::move(ring.path));
        }
    }
    return face;
}

Line_Family family_of(Walk& walk) {
    const double angle = walk.number(53) * degree;
    Line_Family family{
        {std::cos(angle), std::sin(angle)}, {walk.number(43), walk.number(44)}, {walk.number(45), walk.number(46)}, {}};
    for (std::int64_t count = walk.integer(79); count > 0; --count) {
        family.dashes.push_back(walk.number(49));
    }
    return family;
}

} // namespace

Form hatch_form(const Entity& hatch, const Values& values, const std::string& file, Load_Limits& limits) {
    Walk walk{values, hatch, file, limits};
    std::vector<Ring> rings;
    for (std::int64_t paths = walk.integer(91); paths > 0; --paths) {
        constexpr std::int64_t polyline = 2;
        const std::int64_t flags = walk.integer(92);
        rings.push_back({flags, (flags & polyline) != 0 ? polyline_of(walk) : edges_of(walk)});
    }
    const Face face = face_of(std::move(rings), values.integer(hatch, 75, 0));
    Form form;
    if (values.integer(hatch, 70, 0) == 1) {
        form.shape.faces = {face};
        return form;
    }
    for (std::int64_t families = hatch.find(78) ? walk.integer(78) : 0; families > 0; --families) {
        add_pattern(face, family_of(walk), file, limits, form.shape);
    }
    form.is_solid_line = true;
    form.shape.marker_symbol = vorna::marker_symbol::dot;
    form.shape.marker_size = 1;
    return form;
}

} // namespace vorna::drawing::map::dxf
