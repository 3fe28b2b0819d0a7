// A map's shapes on a projection's plane.
#include "drawing/map/map_layer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "drawing/files/setting_names.h"
#include "drawing/map/globe_cutter.h"

namespace vorna::drawing::map {
namespace {

// Tolerance for rounding errors beyond the poles.
constexpr double farthest_north = 90 + 1e-6, farthest_east = 720;

void check_degrees(const std::string& file, const Map& map) {
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        for_each_path(map.shapes[s], [&](const Path& path) {
            for (const Position& p : path) {
                if (!(std::abs(p.x) <= farthest_east && std::abs(p.y) <= farthest_north)) {
                    std::array<char, 80> found;
                    std::snprintf(found.data(), found.size(), ", found %.10g, %.10g", p.x, p.y);
                    throw Map_Error(file + ": shape " + std::to_string(s) + ": expected degrees" + found.data() + "; " +
                                    name_of(Setting::projection) + " plane draws coordinates as they are");
                }
            }
        });
    }
}

} // namespace

Bounds Bounds::nothing() {
    return {INFINITY, -INFINITY, INFINITY, -INFINITY};
}

void Bounds::add(Position p) {
    left = std::min(left, p.x);
    right = std::max(right, p.x);
    bottom = std::min(bottom, p.y);
    top = std::max(top, p.y);
}

Map_Layer::Map_Layer(const std::string& file, const Map& map, const Projection& projection, Load_Limits& limits)
    : faces_(map.shapes.size()) {
    const bool on_globe = projection.domain().has_value();
    if (on_globe) {
        check_degrees(file, map);
    }
    const auto take = [&](const Path& path, bool closed) {
        const Projecting_Cost cost = projecting_cost(path, closed, projection);
        limits.take_memory(file, cost.positions * sizeof(Position));
        limits.take_work(file, cost.steps);
    };
    std::size_t point_count = 0;
    std::ranges::for_each(map.shapes, [&](const Shape& shape) { point_count += shape.points.size(); });
    points_.reserve(point_count);
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        const Shape& shape = map.shapes[s];
        for_each_path(shape, [this](const Path& path) { position_count_ += path.size(); });
        for (const Face& face : shape.faces) {
            std::ranges::for_each(face, [&](const Path& ring) { take(ring, true); });
            for (const Path& ring : faces_[s].emplace_back(project_face(face, projection))) {
                std::ranges::for_each(ring, [this](Position p) { bounds_.add(p); });
            }
        }
        for (const Path& line : shape.lines) {
            take(line, false);
            add_line(line, s, Line::Kind::line, projection);
        }
        for (const Position& point : shape.points) {
            if (const auto place = project_point(point, projection)) {
                points_.emplace_back(*place, s);
                bounds_.add(*place);
            }
        }
    }
    const std::size_t stretches = count_stretches(map.shapes);
    limits.take_memory(file, stretches * stretch_memory);
    limits.take_work(file, stretches * stretch_steps);
    Borders borders = find_borders(map.shapes, on_globe);
    neighbours_ = std::move(borders.neighbours);
    for (const Border& border : borders.lines) {
        take(border.path, false);
        add_line(border.path, border.shape, border.shared ? Line::Kind::border : Line::Kind::outline, projection);
    }
}

void Map_Layer::add_line(const Path& path, std::size_t shape, Line::Kind kind, const Projection& projection) {
    for (Path& piece : project_line(path, projection)) {
        std::ranges::for_each(piece, [this](Position p) { bounds_.add(p); });
        lines_.push_back({std::move(piece), shape, kind});
    }
}

Face Map_Layer::face_of(std::size_t shape) const {
    Face all;
    for (const Face& face : faces_[shape]) {
        all.insert(all.end(), face.begin(), face.end());
    }
    return all;
}

double Map_Layer::longest_segment() const {
    double longest = 0;
    for (const Line& line : lines_) {
        for (std::size_t i = 0; i + 1 < line.path.size(); ++i) {
            longest = std::max(longest, std::hypot(line.path[i + 1].x - line.path[i].x, line.path[i + 1].y - line.path[i].y));
        }
    }
    return longest;
}

std::size_t Map_Layer::most_positions() const {
    std::size_t most = 0;
    for (const Line& line : lines_) {
        most = std::max(most, line.path.size());
    }
    for (const std::vector<Face>& faces : faces_) {
        for (const Face& face : faces) {
            std::size_t count = 0;
            std::ranges::for_each(face, [&](const Path& ring) { count += ring.size(); });
            most = std::max(most, count);
        }
    }
    return most;
}

std::size_t Map_Layer::item_count() const {
    std::size_t count = 2 * lines_.size() + points_.size(); // a line and its casing
    std::ranges::for_each(faces_, [&](const std::vector<Face>& faces) { count += faces.size(); });
    return count;
}

void Layer_Style::enlarge(std::int32_t times) {
    std::ranges::for_each(widths, [=](std::int32_t& width) { width *= times; });
    casing_width *= times;
    std::ranges::for_each(markers, [=](Marker_Paint& marker) { marker.size *= times; });
}

void Map_Layer::add_items(const Layer_Style& style, Map_Items& items) const {
    items.reserve(items.size() + item_count());
    for (std::size_t s = 0; s < faces_.size(); ++s) {
        for (const Face& face : faces_[s]) {
            if (style.fills[s]) {
                items.push_back(Face_Item{&face, *style.fills[s]});
            }
        }
    }
    const auto for_each_line = [&](auto add_line) {
        for (const Line& line : lines_) {
            const auto& dashes = line.kind == Line::Kind::outline ? style.outlines : style.borders;
            if (dashes && style.widths[line.shape] > 0) {
                const Dashes* own = style.dashes.empty() ? nullptr : style.dashes[line.shape];
                add_line(line, own ? *own : *dashes, own ? style.dash_unit : 0);
            }
        }
    };
    // All casings lie below all lines, so that crossings are open.
    if (style.casing) {
        for_each_line([&](const Line& line, const Dashes&, double) {
            items.push_back(Line_Item{&line.path, {*style.casing, style.widths[line.shape] + 2 * style.casing_width}});
        });
    }
    for_each_line([&](const Line& line, const Dashes& dashes, double dash_unit) {
        items.push_back(Line_Item{&line.path, {style.strokes[line.shape], style.widths[line.shape], &dashes, dash_unit}});
    });
    for (const auto& [place, shape] : points_) {
        items.push_back(Mark_Item{place, style.markers[shape]});
    }
}

} // namespace vorna::drawing::map
