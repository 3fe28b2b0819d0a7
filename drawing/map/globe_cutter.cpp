// Cuts what lies on a globe so that it fits on a projection's map.
#include "drawing/map/globe_cutter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/polygon_clip.h"

namespace vorna::drawing::map {
namespace {

constexpr double degree = std::numbers::pi / 180;
constexpr double longest_step = 0.5; // degrees between the places of a curve

Position between(Position a, Position b, double part) {
    return {a.x + (b.x - a.x) * part, a.y + (b.y - a.y) * part};
}

// A stretch in the one order that all paths along it agree on.
struct Stretch {
    Position low, high;
};

Stretch stretch(Position a, Position b) {
    const auto [low, high] = std::minmax(a, b);
    return {low, high};
}

// The same around the globe: a stretch over the antimeridian goes on beyond 180 degrees.
Stretch shortest_stretch(Position a, Position b) {
    if (std::abs(a.x - b.x) > 180) {
        (a.x < b.x ? a : b).x += 360;
    }
    return stretch(a, b);
}

// The path with places added where two follow far from each other; the ring's last side too.
Path with_steps(const Path& path, bool closed, Stretch stretch_of(Position, Position) = stretch) {
    Path result;
    result.reserve(path.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
        result.push_back(path[i]);
        if (i + 1 == path.size() && !closed) {
            break;
        }
        const auto [low, high] = stretch_of(path[i], path[(i + 1) % path.size()]);
        const double span = std::max(high.x - low.x, std::abs(high.y - low.y));
        const auto steps = static_cast<int>(std::ceil(span / longest_step));
        const bool upwards = std::remainder(path[i].x - low.x, 360) == 0 && path[i].y == low.y;
        for (int s = 1; s < steps; ++s) {
            result.push_back(between(low, high, static_cast<double>(upwards ? s : steps - s) / steps));
        }
    }
    return result;
}

// Turns around the globe by which a path's positions lie east of where they are written. Steps of more than half a turn go the
// other way round: they lead over the antimeridian.
std::vector<int> turns_of(const Path& path) {
    std::vector<int> turns(path.size());
    for (std::size_t i = 1; i < path.size(); ++i) {
        const double step = path[i].x - path[i - 1].x;
        turns[i] = turns[i - 1] + (step > 180 ? -1 : step < -180 ? 1 : 0);
    }
    return turns;
}

// The side of a meridian or parallel that is kept.
struct Side {
    double Position::*axis;
    double limit;
    double sign;

    double distance(Position p) const { return (p.*axis - limit) * sign; }
    Position crossing(Position a, Position b) const {
        const auto [low, high] = stretch(a, b);
        Position p = between(low, high, (limit - low.*axis) / (high.*axis - low.*axis));
        p.*axis = limit;
        return p;
    }
};

Path cut_ring(const Path& ring, const Side& side) {
    Path kept;
    clip_polygon_at_side(
        ring, ring.size(), [&side](Position p) { return side.distance(p); },
        [&side](Position from, double, Position to, double) { return side.crossing(from, to); },
        [&kept](Position corner) { kept.push_back(corner); });
    return kept;
}

void cut_line(const Path& line, const Side& side, std::vector<Path>& pieces) {
    Path piece;
    const auto finish = [&] {
        if (piece.size() > 1) {
            pieces.push_back(std::move(piece));
        }
        piece.clear();
    };
    for (std::size_t i = 0; i < line.size(); ++i) {
        const double here = side.distance(line[i]);
        const double before = i > 0 ? side.distance(line[i - 1]) : here;
        if ((here < 0 && before > 0) || (here > 0 && before < 0)) {
            piece.push_back(side.crossing(line[i - 1], line[i]));
        }
        if (here < 0) {
            finish();
        } else {
            piece.push_back(line[i]);
        }
    }
    finish();
}

// The map's four edges.
std::vector<Side> sides_of(const Domain& domain) {
    return {{&Position::x, domain.center - domain.half_width, 1},
            {&Position::x, domain.center + domain.half_width, -1},
            {&Position::y, domain.south, 1},
            {&Position::y, domain.north, -1}};
}

// Calls place(path) with the path as it lies on each copy of the globe that the map shows a part of. A position that is written
// where the map has it keeps its bits.
template <class Place_Copy>
void for_each_copy(const Path& path, const std::vector<int>& turns, const Domain& domain, Place_Copy place) {
    if (path.empty()) {
        return;
    }
    double west = INFINITY, east = -INFINITY;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const double x = path[i].x + 360.0 * turns[i];
        west = std::min(west, x);
        east = std::max(east, x);
    }
    const auto copy_of = [&](double x) { return static_cast<int>(std::floor((x - domain.center + 180) / 360)); };
    for (int copy = copy_of(west); copy <= copy_of(east); ++copy) {
        Path moved = path;
        for (std::size_t i = 0; i < path.size(); ++i) {
            moved[i].x += 360.0 * (turns[i] - copy);
        }
        place(std::move(moved));
    }
}

// A ring that goes around a pole goes on to the pole and back along it.
void close_around_pole(Path& ring, std::vector<int>& turns) {
    const double back = ring.front().x - ring.back().x;
    const int winding = turns.back() + (back > 180 ? -1 : back < -180 ? 1 : 0);
    if (winding == 0) {
        return;
    }
    double sum = 0;
    for (const Position& p : ring) {
        sum += p.y;
    }
    const double pole = sum < 0 ? -90 : 90;
    const Position first = ring.front();
    for (const auto& [y, turn] : {std::pair(first.y, winding), {pole, winding}, {pole, 0}}) {
        ring.push_back({first.x, y});
        turns.push_back(turn);
    }
}

// A box around the whole globe: its sides along parallels are no steps over the antimeridian.
bool has_width(const Path& ring, const std::vector<int>& turns) {
    for (std::size_t i = 0; i < ring.size(); ++i) {
        if (ring[i].x + 360.0 * turns[i] != ring[0].x + 360.0 * turns[0]) {
            return true;
        }
    }
    return false;
}

void cut_ring_at_edges(Path ring, const Domain& domain, Face& pieces) {
    std::vector<int> turns = turns_of(ring);
    if (!has_width(ring, turns)) {
        turns.assign(ring.size(), 0);
    } else {
        close_around_pole(ring, turns);
    }
    for_each_copy(ring, turns, domain, [&](Path piece) {
        for (const Side& side : sides_of(domain)) {
            piece = cut_ring(piece, side);
        }
        if (piece.size() > 2) {
            pieces.push_back(std::move(piece));
        }
    });
}

std::vector<Path> cut_line_at_edges(const Path& line, const Domain& domain) {
    std::vector<Path> pieces;
    for_each_copy(line, turns_of(line), domain, [&](Path copy) {
        std::vector<Path> here{std::move(copy)};
        for (const Side& side : sides_of(domain)) {
            std::vector<Path> cut;
            for (const Path& piece : here) {
                cut_line(piece, side, cut);
            }
            here = std::move(cut);
        }
        std::ranges::move(here, std::back_inserter(pieces));
    });
    return pieces;
}

// The part of the globe around a centre.
class Cap_Cutter {
public:
    explicit Cap_Cutter(const Domain::Cap& cap) : cap_(cap), limit_(std::cos(cap.radius * degree)) {}

    bool contains(Position p) const { return height(p) >= 0; }

    Path ring(const Path& ring) const {
        const Path path = with_steps(ring, true, shortest_stretch);
        Path kept;
        std::optional<Position> left; // where the ring has left the cap
        std::optional<Position> entered_first;
        for (std::size_t i = 0; i < path.size(); ++i) {
            const Position& from = path[i];
            const Position& to = path[(i + 1) % path.size()];
            const double here = height(from), there = height(to);
            if (here >= 0) {
                kept.push_back(from);
            }
            if ((here < 0) == (there < 0)) {
                continue;
            }
            const Position p = crossing(from, to);
            if (there >= 0) {
                if (left) {
                    add_arc(*left, p, kept);
                } else {
                    entered_first = p;
                }
            }
            left = here >= 0 ? std::optional(p) : std::nullopt;
            kept.push_back(p);
        }
        if (left && entered_first) {
            add_arc(*left, *entered_first, kept);
        }
        return kept;
    }

    std::vector<Path> line(const Path& line) const {
        const Path path = with_steps(line, false, shortest_stretch);
        std::vector<Path> pieces(1);
        for (std::size_t i = 0; i < path.size(); ++i) {
            const double here = height(path[i]), before = i > 0 ? height(path[i - 1]) : here;
            if ((here < 0) != (before < 0)) {
                pieces.back().push_back(crossing(path[i - 1], path[i]));
            }
            if (here >= 0) {
                pieces.back().push_back(path[i]);
            } else if (!pieces.back().empty()) {
                pieces.emplace_back();
            }
        }
        return pieces;
    }

    Path outline() const {
        Path circle;
        for (double angle = 0; angle < 360; angle += longest_step) {
            circle.push_back(on_circle(angle * degree));
        }
        return circle;
    }

private:
    // Above zero inside, along the axis through the centre.
    double height(Position p) const {
        const double y = p.y * degree, y0 = cap_.center.y * degree;
        return std::sin(y) * std::sin(y0) + std::cos(y) * std::cos(y0) * std::cos((p.x - cap_.center.x) * degree) - limit_;
    }

    Position crossing(Position a, Position b) const {
        const auto [low, high] = shortest_stretch(a, b);
        const double first = height(low), last = height(high);
        return between(low, high, first / (first - last));
    }

    // The direction from the centre, counted from the north to the east.
    double bearing(Position p) const {
        const double y = p.y * degree, y0 = cap_.center.y * degree, x = (p.x - cap_.center.x) * degree;
        return std::atan2(std::sin(x) * std::cos(y), std::cos(y0) * std::sin(y) - std::sin(y0) * std::cos(y) * std::cos(x));
    }

    Position on_circle(double bearing) const {
        const double y0 = cap_.center.y * degree, radius = cap_.radius * degree;
        const double sine = std::sin(y0) * std::cos(radius) + std::cos(y0) * std::sin(radius) * std::cos(bearing);
        const double x = std::atan2(std::sin(bearing) * std::sin(radius),
                                    std::cos(y0) * std::cos(radius) - std::sin(y0) * std::sin(radius) * std::cos(bearing));
        return {cap_.center.x + x / degree, std::asin(std::clamp(sine, -1.0, 1.0)) / degree};
    }

    // Along the edge of the cap, the shorter way.
    void add_arc(Position from, Position to, Path& path) const {
        const double start = bearing(from), turn = std::remainder(bearing(to) - start, 2 * std::numbers::pi);
        const int steps = static_cast<int>(std::abs(turn) / degree / longest_step) + 1;
        for (int s = 1; s < steps; ++s) {
            path.push_back(on_circle(start + turn * s / steps));
        }
    }

    Domain::Cap cap_;
    double limit_;
};

// A path whose curves have places enough already.
bool is_fine(const Projection& projection) {
    return projection.keeps_straight() || projection.domain()->cap;
}

Path projected_ring(const Path& ring, const Projection& projection) {
    Path result;
    for (const Position& p : is_fine(projection) ? ring : with_steps(ring, true)) {
        if (const auto place = projection.place_of(p)) {
            result.push_back(*place);
        }
    }
    return result;
}

void add_projected_line(const Path& line, const Projection& projection, std::vector<Path>& pieces) {
    Path piece;
    const auto finish = [&] {
        if (piece.size() > 1) {
            pieces.push_back(std::move(piece));
        }
        piece.clear();
    };
    for (const Position& p : is_fine(projection) ? line : with_steps(line, false)) {
        if (const auto place = projection.place_of(p)) {
            piece.push_back(*place);
        } else {
            finish();
        }
    }
    finish();
}

} // namespace

Face project_face(const Face& face, const Projection& projection) {
    Face pieces, result;
    for (const Path& ring : face) {
        if (ring.size() < 3) {
            continue;
        }
        if (!projection.domain()) {
            pieces.push_back(ring);
        } else if (projection.domain()->cap) {
            pieces.push_back(Cap_Cutter(*projection.domain()->cap).ring(ring));
        } else {
            cut_ring_at_edges(ring, *projection.domain(), pieces);
        }
    }
    for (const Path& piece : pieces) {
        Path ring = projected_ring(piece, projection);
        if (ring.size() > 2) {
            result.push_back(std::move(ring));
        }
    }
    return result;
}

std::vector<Path> project_line(const Path& line, const Projection& projection) {
    std::vector<Path> pieces, result;
    if (!projection.domain()) {
        pieces = {line};
    } else if (projection.domain()->cap) {
        pieces = Cap_Cutter(*projection.domain()->cap).line(line);
    } else {
        pieces = cut_line_at_edges(line, *projection.domain());
    }
    for (const Path& piece : pieces) {
        add_projected_line(piece, projection, result);
    }
    return result;
}

std::optional<Position> project_point(Position point, const Projection& projection) {
    if (const std::optional<Domain>& domain = projection.domain()) {
        if (domain->cap) {
            return Cap_Cutter(*domain->cap).contains(point) ? projection.place_of(point) : std::nullopt;
        }
        point.x = domain->center + std::remainder(point.x - domain->center, 360);
        if (std::abs(point.x - domain->center) > domain->half_width || point.y < domain->south || point.y > domain->north) {
            return std::nullopt;
        }
    }
    return projection.place_of(point);
}

Projecting_Cost projecting_cost(const Path& path, bool closed, const Projection& projection) {
    constexpr std::uint64_t plain_steps = 2, curved_steps = 40; // for each position
    const std::uint64_t size = path.size();
    if (!projection.domain() || path.empty()) {
        return {size, size};
    }
    const bool has_steps = projection.domain()->cap || !projection.keeps_straight();
    std::uint64_t positions = size;
    double west = path[0].x, east = west, turned = 0;
    for (std::size_t i = 0; i + (closed ? 0 : 1) < size; ++i) {
        const Position &a = path[i], &b = path[i + 1 == size ? 0 : i + 1];
        const auto [low, high] = shortest_stretch(a, b);
        positions +=
            has_steps ? static_cast<std::uint64_t>(std::max(high.x - low.x, std::abs(high.y - low.y)) / longest_step) : 0;
        turned += b.x - a.x > 180 ? -360 : b.x - a.x < -180 ? 360 : 0;
        west = std::min(west, b.x + turned);
        east = std::max(east, b.x + turned);
    }
    // The whole path lies on every copy of the globe that it comes to.
    const auto copies = projection.domain()->cap ? 1 : static_cast<std::uint64_t>((east - west) / 360) + 1;
    return {positions + size, copies * size * plain_steps + positions * (has_steps ? curved_steps : plain_steps)};
}

Face project_outline(const Projection& projection) {
    if (!projection.domain()) {
        return {};
    }
    const Domain& domain = *projection.domain();
    if (domain.cap) {
        return {projected_ring(Cap_Cutter(*domain.cap).outline(), projection)};
    }
    const double west = domain.center - domain.half_width, east = domain.center + domain.half_width;
    return {projected_ring({{west, domain.south}, {east, domain.south}, {east, domain.north}, {west, domain.north}}, projection)};
}

} // namespace vorna::drawing::map
