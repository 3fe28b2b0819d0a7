// Shapes cut at a rectangle.
#include "drawing/map/dxf/clip.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vorna::drawing::map::dxf {
namespace {

// How far a position lies inside of each side.
std::array<double, 4> depths(const Extent& box, Position p) {
    return {p.x - box.west, box.east - p.x, p.y - box.south, box.north - p.y};
}

Position between(Position a, Position b, double share) {
    return {a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share};
}

bool is_inside(const Extent& box, Position p) {
    return std::ranges::none_of(depths(box, p), [](double depth) { return depth < 0; });
}

bool is_inside(const Extent& box, const Path& path) {
    return std::ranges::all_of(path, [&](Position p) { return is_inside(box, p); });
}

// The part of a segment in the box, as shares of it; the first above the second when there is none.
std::pair<double, double> part_inside(const Extent& box, Position a, Position b) {
    const std::array<double, 4> from = depths(box, a), to = depths(box, b);
    double first = 0, last = 1;
    for (std::size_t side = 0; side < from.size(); ++side) {
        if (from[side] < 0 && to[side] < 0) {
            return {1, 0};
        }
        if (from[side] < 0) {
            first = std::max(first, from[side] / (from[side] - to[side]));
        } else if (to[side] < 0) {
            last = std::min(last, from[side] / (from[side] - to[side]));
        }
    }
    return {first, last};
}

void clip_line(const Extent& box, const Path& line, std::vector<Path>& pieces) {
    bool is_open = false; // the last piece ends where the next segment starts
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        const auto [first, last] = part_inside(box, line[i], line[i + 1]);
        if (first > last) {
            is_open = false;
            continue;
        }
        if (!is_open || first > 0) {
            pieces.push_back({first > 0 ? between(line[i], line[i + 1], first) : line[i]});
        }
        pieces.back().push_back(last < 1 ? between(line[i], line[i + 1], last) : line[i + 1]);
        is_open = !(last < 1);
    }
}

Path clip_ring(const Extent& box, Path ring) {
    for (std::size_t side = 0; side < 4; ++side) {
        Path kept;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Position a = ring[i], b = ring[(i + 1) % ring.size()];
            const double from = depths(box, a)[side], to = depths(box, b)[side];
            if (from >= 0) {
                kept.push_back(a);
            }
            if ((from < 0) != (to < 0)) {
                kept.push_back(between(a, b, from / (from - to)));
            }
        }
        ring = std::move(kept);
    }
    return ring;
}

} // namespace

void clip_to(const Extent& box, Shape& shape) {
    bool is_whole = true;
    for_each_path(shape, [&](const Path& path) { is_whole = is_whole && is_inside(box, path); });
    if (is_whole) {
        return;
    }
    std::vector<Path> lines;
    for (const Path& line : shape.lines) {
        clip_line(box, line, lines);
    }
    shape.lines = std::move(lines);
    for (Face& face : shape.faces) {
        for (Path& ring : face) {
            ring = clip_ring(box, std::move(ring));
        }
        std::erase_if(face, [](const Path& ring) { return ring.empty(); });
    }
    std::erase_if(shape.faces, [](const Face& face) { return face.empty(); });
    std::erase_if(shape.points, [&](Position p) { return !is_inside(box, p); });
}

} // namespace vorna::drawing::map::dxf
