// Cuts paths at the meridians and parallels that bound a projection's map.
#include "drawing/map/edge_cutter.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "drawing/map/path_steps.h"
#include "host/polygon_clip.h"

namespace vorna::drawing::map {
namespace {

// For each position the number of whole turns that its longitude lies east of the number in the file.
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

// Calls place(path) for each copy of the globe that the path enters, with the path moved into the map's range of longitudes.
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

// Leads a ring that goes around a pole to the pole and back along it.
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

// False for a box around the whole globe whose sides along parallels would be taken as steps over the antimeridian.
bool has_width(const Path& ring, const std::vector<int>& turns) {
    for (std::size_t i = 0; i < ring.size(); ++i) {
        if (ring[i].x + 360.0 * turns[i] != ring[0].x + 360.0 * turns[0]) {
            return true;
        }
    }
    return false;
}

} // namespace

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

} // namespace vorna::drawing::map
