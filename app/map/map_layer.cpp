// A map's shapes on a projection's plane.
#include "app/map/map_layer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "app/map/globe_cutter.h"

namespace app::map {
namespace {

template <class Visit> void for_each_path(const Shape& shape, Visit visit) {
    for (const Face& face : shape.faces) {
        std::ranges::for_each(face, visit);
    }
    std::ranges::for_each(shape.lines, visit);
    visit(shape.points);
}

// Files may be a rounding error beyond the poles.
constexpr double farthest_north = 90 + 1e-6, farthest_east = 720;

// On a plane: products of coordinates stay finite.
constexpr double farthest = 1e100;

void check_positions(const std::string& file, const Map& map, bool on_globe) {
    const double most_x = on_globe ? farthest_east : farthest, most_y = on_globe ? farthest_north : farthest;
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        for_each_path(map.shapes[s], [&](const Path& path) {
            for (const Position& p : path) {
                if (!(std::abs(p.x) <= most_x && std::abs(p.y) <= most_y)) {
                    std::array<char, 80> found;
                    std::snprintf(found.data(), found.size(), ", found %.10g, %.10g", p.x, p.y);
                    throw Map_Error(file + ": shape " + std::to_string(s) + ": expected " +
                                    (on_globe ? "degrees" : "coordinates up to 1e100") + found.data() +
                                    (on_globe ? "; --projection plane draws coordinates as they are" : ""));
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

Map_Layer::Map_Layer(const std::string& file, const Map& map, const Projection& projection) : faces_(map.shapes.size()) {
    const bool on_globe = projection.domain().has_value();
    check_positions(file, map, on_globe);
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        const Shape& shape = map.shapes[s];
        for_each_path(shape, [this](const Path& path) { position_count_ += path.size(); });
        for (const Face& face : shape.faces) {
            for (const Path& ring : faces_[s].emplace_back(project_face(face, projection))) {
                std::ranges::for_each(ring, [this](Position p) { bounds_.add(p); });
            }
        }
        for (const Path& line : shape.lines) {
            add_line(line, s, Line::Kind::line, projection);
        }
        for (const Position& point : shape.points) {
            if (const auto place = project_point(point, projection)) {
                points_.emplace_back(*place, s);
                bounds_.add(*place);
            }
        }
    }
    Borders borders = find_borders(map.shapes, on_globe);
    neighbours_ = std::move(borders.neighbours);
    for (const Border& border : borders.lines) {
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

void Map_Layer::draw(Map_Painter& painter, const Layer_Style& style) const {
    for (std::size_t s = 0; s < faces_.size(); ++s) {
        for (const Face& face : faces_[s]) {
            if (style.fills[s]) {
                painter.fill(face, *style.fills[s]);
            }
        }
    }
    const auto for_each_line = [&](auto draw_line) {
        for (const Line& line : lines_) {
            if (const auto& dashes = line.kind == Line::Kind::outline ? style.outlines : style.borders) {
                draw_line(line, *dashes);
            }
        }
    };
    // All casings lie below all lines, so that crossings are open.
    if (style.casing) {
        for_each_line([&](const Line& line, const Dashes&) {
            painter.draw(line.path, {*style.casing, style.width + 2 * style.casing_width, {}});
        });
    }
    for_each_line([&](const Line& line, const Dashes& dashes) {
        painter.draw(line.path, {style.strokes[line.shape], style.width, dashes});
    });
    for (const auto& [place, shape] : points_) {
        painter.mark(place, style.marker);
    }
}

} // namespace app::map
