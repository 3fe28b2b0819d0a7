// Polylines with arcs and widths.
#include "drawing/map/dxf/polylines.h"

#include <algorithm>
#include <cmath>

#include "drawing/map/dxf/curves.h"

namespace vorna::drawing::map::dxf {
namespace {

// The face along a path whose width grows evenly from its start to its end.
Path tapered(const Path& path, double start, double end) {
    Path left, right;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const Position a = path[i > 0 ? i - 1 : 0], b = path[std::min(i + 1, path.size() - 1)];
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        const double share = path.size() > 1 ? static_cast<double>(i) / static_cast<double>(path.size() - 1) : 0;
        const double half = length > 0 ? (start + (end - start) * share) / 2 / length : 0;
        const Position side{(a.y - b.y) * half, (b.x - a.x) * half};
        left.push_back({path[i].x + side.x, path[i].y + side.y});
        right.push_back({path[i].x - side.x, path[i].y - side.y});
    }
    left.insert(left.end(), right.rbegin(), right.rend());
    return left;
}

} // namespace

std::size_t position_count(const std::vector<Vertex>& vertices) {
    std::size_t count = 1;
    for (const Vertex& vertex : vertices) {
        count += vertex.bulge == 0 ? 1 : 362;
    }
    return count;
}

Path path_of(const std::vector<Vertex>& vertices, bool closed) {
    Path path;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        path.push_back(vertices[i].place);
        if (closed || i + 1 < vertices.size()) {
            add_bulge(vertices[i].place, vertices[(i + 1) % vertices.size()].place, vertices[i].bulge, path);
        }
    }
    if (closed && !path.empty()) {
        path.push_back(path.front());
    }
    return path;
}

std::vector<Vertex> light_vertices(const Entity& polyline, const Values& values) {
    const double width = values.number(polyline, 43, 0);
    std::vector<Vertex> vertices;
    for (const Group& group : polyline.groups) {
        if (group.code == 10) {
            vertices.push_back({{values.number(group), 0}, 0, width, width});
        } else if (!vertices.empty()) {
            Vertex& last = vertices.back();
            double* const value = group.code == 20   ? &last.place.y
                                  : group.code == 40 ? &last.start
                                  : group.code == 41 ? &last.end
                                  : group.code == 42 ? &last.bulge
                                                     : nullptr;
            if (value) {
                *value = values.number(group);
            }
        }
    }
    return vertices;
}

std::vector<Vertex> vertices_of(const Entity& polyline, const Values& values) {
    constexpr std::int64_t frame_only = 16; // of a spline's control points
    const double start = values.number(polyline, 40, 0), end = values.number(polyline, 41, 0);
    std::vector<Vertex> vertices;
    for (const Entity& vertex : polyline.parts) {
        if (!values.has_flag(vertex, 70, frame_only)) {
            vertices.push_back({values.position(vertex, 10), values.number(vertex, 42, 0), values.number(vertex, 40, start),
                                values.number(vertex, 41, end)});
        }
    }
    return vertices;
}

void add_polyline(const std::vector<Vertex>& vertices, bool closed, Forms& forms) {
    const auto is_plain = [&](const Vertex& v) { return v.start == vertices.front().start && v.end == v.start; };
    if (vertices.empty()) {
        return;
    }
    if (std::ranges::all_of(vertices, is_plain)) {
        Shape& shape = add_shape(forms);
        shape.lines = {path_of(vertices, closed)};
        shape.pen.width = std::abs(vertices.front().start);
        return;
    }
    const std::size_t segments = vertices.size() - (closed ? 0 : 1);
    for (std::size_t first = 0; first < segments;) {
        const Vertex& from = vertices[first];
        const bool is_tapered = from.start != from.end;
        std::size_t end = first + 1;
        while (!is_tapered && end < segments && vertices[end].start == from.start && vertices[end].end == from.start) {
            ++end;
        }
        std::vector<Vertex> run(vertices.begin() + static_cast<std::ptrdiff_t>(first),
                                vertices.begin() + static_cast<std::ptrdiff_t>(std::min(end + 1, vertices.size())));
        if (end == vertices.size()) {
            run.push_back(vertices.front());
        }
        const Path path = path_of(run, false);
        Shape& shape = add_shape(forms);
        if (is_tapered) {
            shape.faces = {{tapered(path, from.start, from.end)}};
        } else {
            shape.lines = {path};
            shape.pen.width = std::abs(from.start);
        }
        first = end;
    }
}

void add_mesh(const Entity& polyline, const Values& values, Shape& shape) {
    constexpr std::int64_t closed_columns = 1, closed_rows = 32, is_grid = 16, is_face = 128, has_place = 64;
    Path places;
    std::vector<const Entity*> faces;
    for (const Entity& vertex : polyline.parts) {
        const bool only_face = values.has_flag(vertex, 70, is_face) && !values.has_flag(vertex, 70, has_place);
        if (only_face) {
            faces.push_back(&vertex);
        } else {
            places.push_back(values.position(vertex, 10));
        }
    }
    if (values.has_flag(polyline, 70, is_grid)) {
        const auto count = [&](int code) {
            return static_cast<std::size_t>(std::clamp<std::int64_t>(values.integer(polyline, code, 0), 0, 1 << 30));
        };
        const std::size_t rows = count(71), columns = count(72);
        if (rows == 0 || columns == 0 || rows > places.size() / columns) {
            values.fail(polyline.line,
                        "as many vertices as rows times columns of this POLYLINE, found " + std::to_string(places.size()));
        }
        const auto add = [&](std::size_t start, std::size_t step, std::size_t size, bool closed) {
            Path& line = shape.lines.emplace_back();
            for (std::size_t i = 0; i < size + (closed ? 1 : 0); ++i) {
                line.push_back(places[start + i % size * step]);
            }
        };
        for (std::size_t row = 0; row < rows; ++row) {
            add(row * columns, 1, columns, values.has_flag(polyline, 70, closed_rows));
        }
        for (std::size_t column = 0; column < columns; ++column) {
            add(column, columns, rows, values.has_flag(polyline, 70, closed_columns));
        }
        return;
    }
    for (const Entity* face : faces) {
        Path corners;
        std::vector<bool> seen;
        for (int code = 71; code <= 74; ++code) { // below 0: the edge that follows is not drawn
            const std::int64_t corner = values.integer(*face, code, 0);
            const auto size = static_cast<std::int64_t>(places.size());
            if (corner > size || corner < -size) {
                values.fail(face->line, "the number of a vertex of this mesh, found " + std::to_string(corner));
            }
            if (corner != 0) {
                corners.push_back(places[static_cast<std::size_t>(std::abs(corner)) - 1]);
                seen.push_back(corner > 0);
            }
        }
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (seen[i]) {
                shape.lines.push_back({corners[i], corners[(i + 1) % corners.size()]});
            }
        }
    }
}

} // namespace vorna::drawing::map::dxf
