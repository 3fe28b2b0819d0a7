// DXF: the shapes of a drawing's entities.
#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>

#include "drawing/map/dxf_curves.h"
#include "drawing/map/dxf_entities.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

using namespace dxf;

constexpr double degree = std::numbers::pi / 180;
constexpr double whole_turn = 2 * std::numbers::pi;
constexpr int deepest_insert = 16;
constexpr std::int64_t most_copies = std::int64_t{1} << 31; // in a row or column: products stay in range

constexpr std::int64_t by_block = 0, by_layer = 256, foreground = 7;

VT_RGB32 rgb(double red, double green, double blue) {
    return {static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(red), 255};
}

// The colour of a number in the format's table: nine plain colours, then 24 hues of five brightnesses, each fully and half
// saturated, then greys. Empty for the foreground, which contrasts with the background.
std::optional<VT_RGB32> table_color(std::int64_t number) {
    constexpr std::uint8_t greys[] = {51, 91, 132, 173, 214, 255};
    if (number < 1 || number > 255 || number == foreground) {
        return std::nullopt;
    }
    if (number < 7) {
        constexpr std::uint8_t plain[] = {1, 3, 2, 6, 4, 5}; // bit 0 red, 1 green, 2 blue
        const unsigned bits = plain[number - 1];
        return rgb(bits & 1 ? 255 : 0, bits & 2 ? 255 : 0, bits & 4 ? 255 : 0);
    }
    if (number < 10) {
        const double grey = number == 8 ? 128 : 192;
        return rgb(grey, grey, grey);
    }
    if (number >= 250) {
        const double grey = greys[number - 250];
        return rgb(grey, grey, grey);
    }
    constexpr double brightnesses[] = {255, 165, 127, 76, 38};
    const std::int64_t row = number / 10 - 1;
    const double hue = static_cast<double>(row) / 4, brightness = brightnesses[number % 10 / 2];
    const auto channel = [&](double middle) {
        const double distance = std::abs(std::remainder(hue - middle, 6));
        const double full = std::clamp(2 - distance, 0.0, 1.0);
        return std::floor(brightness * (number % 2 ? (1 + full) / 2 : full));
    };
    return rgb(channel(0), channel(2), channel(4));
}

// From an entity's coordinates to the drawing's.
struct Placement {
    Position x{1, 0}, y{0, 1}, origin{};

    Position operator()(Position p) const { return {x.x * p.x + y.x * p.y + origin.x, x.y * p.x + y.y * p.y + origin.y}; }
    Placement operator*(const Placement& inner) const {
        const Position o = (*this)(inner.origin), e = (*this)({inner.origin.x + inner.x.x, inner.origin.y + inner.x.y}),
                       f = (*this)({inner.origin.x + inner.y.x, inner.origin.y + inner.y.y});
        return {{e.x - o.x, e.y - o.y}, {f.x - o.x, f.y - o.y}, o};
    }
};

// Attributes that entities of a block inherit from the insertion.
struct Surroundings {
    Placement placement;
    std::optional<VT_RGB32> color; // of BYBLOCK
    std::string_view layer = "0";  // of layer 0
    int depth = 0;
};

class Dxf_Reader {
public:
    Dxf_Reader(const std::string& file, std::string_view content, Load_Limits& limits)
        : file_(file), limits_(limits), values_(file), drawing_(read_drawing(file, content, limits)) {}

    Map read() {
        map_.drawing = true;
        for (const Entity& entity : drawing_.entities) {
            add(entity, {});
        }
        if (!left_out_.empty()) {
            std::string list;
            for (const auto& [what, count] : left_out_) {
                list += (list.empty() ? "" : ", ") + std::to_string(count) + " " + what;
            }
            map_.warnings.push_back(file_ + ": not drawn: " + list);
        }
        return std::move(map_);
    }

private:
    const Layer& layer(std::string_view name) const {
        static const Layer plain;
        const auto found = drawing_.layers.find(name);
        return found == drawing_.layers.end() ? plain : found->second;
    }

    std::string_view layer_name(const Entity& entity, const Surroundings& around) const {
        const std::string_view name = values_.text(entity, 8);
        return name.empty() || name == "0" ? around.layer : name;
    }

    // The colour number of a layer or entity; negative when it is switched off.
    static std::int64_t number_of(std::int64_t color) { return color < 0 ? -std::max(color, -INT64_MAX) : color; }

    static std::optional<VT_RGB32> true_color(std::int64_t value) {
        return rgb(static_cast<double>(value >> 16 & 0xFF), static_cast<double>(value >> 8 & 0xFF),
                   static_cast<double>(value & 0xFF));
    }

    std::optional<VT_RGB32> color(const Entity& entity, const Surroundings& around) const {
        const std::int64_t own = values_.integer(entity, 420, -1), number = values_.integer(entity, 62, by_layer);
        if (own >= 0) {
            return true_color(own);
        }
        if (number == by_block) {
            return around.color;
        }
        if (number != by_layer) {
            return table_color(number_of(number));
        }
        const Layer& of = layer(layer_name(entity, around));
        return of.true_color >= 0 ? true_color(of.true_color) : table_color(number_of(of.color));
    }

    void add(const Entity& entity, const Surroundings& around) {
        constexpr std::uint64_t entity_steps = 60;
        const std::string_view of_layer = layer_name(entity, around);
        const std::size_t letters = entity.type.size() + of_layer.size() + values_.text(entity, 2).size();
        limits_.take_work(file_, entity_steps + entity.groups.size() + entity.parts.size() + letters / 8);
        const Layer& of = layer(of_layer);
        const bool on_paper = values_.integer(entity, 67, 0) == 1;
        if (of.color < 0 || of.frozen || on_paper || values_.integer(entity, 60, 0) == 1) {
            return;
        }
        if (entity.type == "INSERT") {
            insert(entity, around);
            return;
        }
        Shape shape;
        shape.outlined = false;
        if (!make(entity, shape)) {
            ++left_out_[std::string(entity.type)];
            return;
        }
        Placement placement = around.placement;
        const bool in_own_plane = entity.type != "LINE" && entity.type != "ELLIPSE" && entity.type != "POINT";
        if (in_own_plane && values_.number(entity, 230, 1) < 0) {
            placement = placement * Placement{{-1, 0}, {0, 1}, {}}; // seen from below
        }
        shape.stroke = color(entity, around);
        shape.fill = shape.stroke.value_or(VT_RGB32{});
        shape.name = of_layer;
        std::size_t positions = 0;
        const auto move = [&](Path& path) {
            std::ranges::transform(path, path.begin(), placement);
            positions += path.size();
        };
        std::ranges::for_each(shape.lines, move);
        for (Face& face : shape.faces) {
            std::ranges::for_each(face, move);
        }
        move(shape.points);
        limits_.take_memory(file_, 2 * sizeof(Shape) + shape.name.size() + positions * sizeof(Position));
        limits_.take_work(file_, positions);
        map_.shapes.push_back(std::move(shape));
    }

    void insert(const Entity& entity, const Surroundings& around) {
        const Group& name = values_.required(entity, 2);
        const auto found = drawing_.blocks.find(name.value);
        if (found == drawing_.blocks.end()) {
            values_.fail(name.line, "the name of a block, found '" + std::string(name.value.substr(0, 40)) + "'");
        }
        if (around.depth == deepest_insert) {
            values_.fail(entity.line, "blocks at most " + std::to_string(deepest_insert) + " deep in each other");
        }
        const Block& block = found->second;
        const double angle = values_.number(entity, 50, 0) * degree, c = std::cos(angle), s = std::sin(angle);
        const double sx = values_.number(entity, 41, 1), sy = values_.number(entity, 42, 1);
        const Placement mirrored{{values_.number(entity, 230, 1) < 0 ? -1.0 : 1.0, 0}, {0, 1}, {}};
        const Placement turned = mirrored * Placement{{c, s}, {-s, c}, values_.position(entity, 10)};
        const std::int64_t columns = std::clamp<std::int64_t>(values_.integer(entity, 70, 1), 1, most_copies);
        const std::int64_t rows = std::clamp<std::int64_t>(values_.integer(entity, 71, 1), 1, most_copies);
        const double dx = values_.number(entity, 44, 0), dy = values_.number(entity, 45, 0);
        Surroundings inside{{}, color(entity, around), layer_name(entity, around), around.depth + 1};
        for (std::int64_t i = 0; i < (block.entities.empty() ? 0 : rows * columns); ++i) {
            const std::int64_t column = i % columns, row = i / columns;
            const Placement cell{
                {sx, 0},
                {0, sy},
                {static_cast<double>(column) * dx - block.base.x * sx, static_cast<double>(row) * dy - block.base.y * sy}};
            inside.placement = around.placement * turned * cell;
            for (const Entity& part : block.entities) {
                add(part, inside);
            }
        }
    }

    // False for entities that are left out.
    bool make(const Entity& entity, Shape& shape) const {
        if (entity.type == "LINE") {
            shape.lines = {{values_.position(entity, 10), values_.position(entity, 11)}};
        } else if (entity.type == "POINT") {
            shape.points = {values_.position(entity, 10)};
        } else if (entity.type == "ARC" || entity.type == "CIRCLE") {
            make_arc(entity, shape);
        } else if (entity.type == "ELLIPSE") {
            make_ellipse(entity, shape);
        } else if (entity.type == "LWPOLYLINE") {
            make_light_polyline(entity, shape);
        } else if (entity.type == "POLYLINE") {
            return make_polyline(entity, shape);
        } else if (entity.type == "SOLID") {
            const Position last = values_.position(entity, values_.text(entity, 13).empty() ? 12 : 13);
            shape.faces = {{{values_.position(entity, 10), values_.position(entity, 11), last, values_.position(entity, 12)}}};
        } else if (entity.type == "HATCH") {
            return make_hatch(entity, shape);
        } else {
            return false;
        }
        return true;
    }

    void make_arc(const Entity& entity, Shape& shape) const {
        const double radius = values_.number(values_.required(entity, 40));
        double from = 0, to = whole_turn;
        if (entity.type == "ARC") {
            from = values_.number(values_.required(entity, 50)) * degree;
            to = values_.number(values_.required(entity, 51)) * degree;
            to += to <= from ? whole_turn : 0;
        }
        add_arc(values_.position(entity, 10), {radius, 0}, {0, radius}, from, to, shape.lines.emplace_back());
    }

    void make_ellipse(const Entity& entity, Shape& shape) const {
        const Position major = values_.position(entity, 11);
        const double ratio = values_.number(values_.required(entity, 40)) * (values_.number(entity, 230, 1) < 0 ? -1 : 1);
        const double from = values_.number(entity, 41, 0);
        double to = values_.number(entity, 42, whole_turn);
        to += to <= from ? whole_turn : 0;
        add_arc(values_.position(entity, 10), major, {-major.y * ratio, major.x * ratio}, from, to, shape.lines.emplace_back());
    }

    struct Vertex {
        Position place;
        double bulge = 0;
    };

    static Path path_of(const std::vector<Vertex>& vertices, bool closed) {
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

    void make_light_polyline(const Entity& entity, Shape& shape) const {
        std::vector<Vertex> vertices;
        for (const Group& group : entity.groups) {
            if (group.code == 10) {
                vertices.push_back({{values_.number(group), 0}});
            } else if (!vertices.empty() && group.code == 20) {
                vertices.back().place.y = values_.number(group);
            } else if (!vertices.empty() && group.code == 42) {
                vertices.back().bulge = values_.number(group);
            }
        }
        shape.lines = {path_of(vertices, (values_.integer(entity, 70, 0) & 1) != 0)};
    }

    // Meshes are not drawn as lines.
    bool make_polyline(const Entity& entity, Shape& shape) const {
        const std::int64_t flags = values_.integer(entity, 70, 0);
        if ((flags & (16 | 64)) != 0) {
            return false;
        }
        std::vector<Vertex> vertices;
        for (const Entity& vertex : entity.parts) {
            const bool frame_only = (values_.integer(vertex, 70, 0) & 16) != 0; // of a spline's control points
            if (!frame_only) {
                vertices.push_back({values_.position(vertex, 10), values_.number(vertex, 42, 0)});
            }
        }
        shape.lines = {path_of(vertices, (flags & 1) != 0)};
        return true;
    }

    // Reads a hatch's groups one after the other.
    struct Walk {
        const Values& values;
        const Entity& entity;
        std::size_t next = 0;

        // Skips groups up to the next one of this code.
        const Group& to(int code) {
            while (next < entity.groups.size() && entity.groups[next].code != code) {
                ++next;
            }
            if (next == entity.groups.size()) {
                values.fail(entity.line, "a group " + std::to_string(code) + " in the boundary of this HATCH, found none");
            }
            return entity.groups[next++];
        }
        double number(int code) { return values.number(to(code)); }
        std::int64_t integer(int code) { return values.integer(to(code)); }
        Position position(int code) {
            const double x = number(code);
            return {x, number(code + 10)};
        }
    };

    bool make_hatch(const Entity& entity, Shape& shape) const {
        if (values_.integer(entity, 70, 0) != 1) {
            return false;
        }
        Walk walk{values_, entity};
        Face& face = shape.faces.emplace_back();
        for (std::int64_t paths = walk.integer(91); paths > 0; --paths) {
            constexpr std::int64_t polyline = 2;
            Path ring;
            if ((walk.integer(92) & polyline) != 0) {
                ring = hatch_polyline(walk);
            } else if (!add_hatch_edges(walk, ring)) {
                return false;
            }
            face.push_back(std::move(ring));
        }
        return true;
    }

    static Path hatch_polyline(Walk& walk) {
        const bool has_bulges = walk.integer(72) != 0;
        std::vector<Vertex> vertices;
        for (std::int64_t count = walk.integer(93); count > 0; --count) {
            Vertex& vertex = vertices.emplace_back();
            vertex.place = walk.position(10);
            vertex.bulge = has_bulges ? walk.number(42) : 0;
        }
        return path_of(vertices, true);
    }

    // False for splines.
    static bool add_hatch_edges(Walk& walk, Path& ring) {
        for (std::int64_t count = walk.integer(93); count > 0; --count) {
            const Group& kind_group = walk.to(72);
            const std::int64_t kind = walk.values.integer(kind_group);
            if (kind == 1) {
                ring.push_back(walk.position(10));
                ring.push_back(walk.position(11));
            } else if (kind == 2 || kind == 3) {
                const Position center = walk.position(10);
                const Position major = kind == 2 ? Position{walk.number(40), 0} : walk.position(11);
                const double ratio = kind == 2 ? 1 : walk.number(40);
                const double from = walk.number(50) * degree, to = walk.number(51) * degree;
                // Angles of clockwise arcs are counted clockwise.
                const double sign = walk.integer(73) != 0 ? 1 : -1;
                add_arc(center, major, {-major.y * ratio, major.x * ratio}, sign * from, sign * to, ring);
            } else if (kind == 4) {
                return false;
            } else {
                walk.values.fail(kind_group.line,
                                 "the kind of an edge from 1 to 4, found '" + std::string(kind_group.value) + "'");
            }
        }
        return true;
    }

    const std::string& file_;
    Load_Limits& limits_;
    Values values_;
    Drawing drawing_;
    Map map_;
    std::map<std::string, std::size_t> left_out_; // entities by type
};

} // namespace

Map read_dxf(const std::string& file, std::string_view content, Load_Limits& limits) {
    return Dxf_Reader(file, content, limits).read();
}

} // namespace vorna::drawing::map
