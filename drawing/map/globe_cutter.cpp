// Cuts paths on a globe at the edges of a projection's map, and projects them.
#include "drawing/map/globe_cutter.h"

#include <algorithm>
#include <cmath>

#include "drawing/map/cap_cutter.h"
#include "drawing/map/edge_cutter.h"
#include "drawing/map/path_steps.h"

namespace vorna::drawing::map {
namespace {

// Whether paths need no added positions: the projection keeps lines straight, or the cap's cutter has added them.
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
