// Forms of single entities.
#include "drawing/map/dxf/entity_forms.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "drawing/map/dxf/curves.h"
#include "drawing/map/dxf/dimensions.h"
#include "drawing/map/dxf/hatch.h"
#include "drawing/map/dxf/polylines.h"
#include "host/rendition.h"

namespace vorna::drawing::map::dxf {
namespace {

constexpr double whole_turn = 2 * std::numbers::pi;
constexpr std::int64_t is_closed = 1, is_in_space = 8, is_grid = 16, is_mesh = 64; // flags of polylines

} // namespace

// The axes follow from the normal by a rule of the format.
Placement plane_of(const Entity& entity, const Values& values) {
    constexpr std::array in_space{"LINE",        "ELLIPSE", "POINT", "SPLINE", "HELIX",    "MTEXT",    "LEADER",
                                  "MULTILEADER", "3DFACE",  "RAY",   "XLINE",  "VIEWPORT", "DIMENSION"};
    const bool has_space = std::ranges::find(in_space, entity.type) != in_space.end() ||
                           (entity.type == "POLYLINE" && values.has_flag(entity, 70, is_in_space | is_grid | is_mesh));
    double nx = values.number(entity, 210, 0), ny = values.number(entity, 220, 0), nz = values.number(entity, 230, 1);
    const double length = std::hypot(nx, ny, nz);
    if (has_space || (nx == 0 && ny == 0 && nz > 0) || !(length > 0)) {
        return {};
    }
    nx /= length, ny /= length, nz /= length;
    constexpr double nearly = 1.0 / 64;
    const bool is_steep = std::abs(nx) < nearly && std::abs(ny) < nearly;
    double ax = is_steep ? nz : -ny, ay = is_steep ? 0 : nx, az = is_steep ? -nx : 0;
    const double size = std::hypot(ax, ay, az);
    ax /= size, ay /= size, az /= size;
    const double height = values.number(entity, entity.type == "LWPOLYLINE" ? 38 : 30, 0);
    return {{ax, ay}, {ny * az - nz * ay, nz * ax - nx * az}, {nx * height, ny * height}};
}

bool Form_Maker::make(const Entity& entity, bool in_block, Forms& forms) {
    const std::string_view type = entity.type;
    if (type == "LINE") {
        add_shape(forms).lines = {{values_.position(entity, 10), values_.position(entity, 11)}};
    } else if (type == "POINT") {
        make_point(entity, forms);
    } else if (type == "ARC" || type == "CIRCLE") {
        make_arc(entity, forms);
    } else if (type == "ELLIPSE") {
        make_ellipse(entity, forms);
    } else if (type == "LWPOLYLINE" || type == "POLYLINE") {
        make_polyline(entity, forms);
    } else if (type == "SPLINE" || type == "HELIX") {
        return make_spline(entity, forms);
    } else if (type == "SOLID" || type == "TRACE" || type == "3DFACE") {
        make_face(entity, forms);
    } else if (type == "HATCH") {
        forms.push_back(hatch_form(entity, values_, file_, limits_));
    } else if (type == "LEADER") {
        limits_.take_memory(file_, fitted_steps * sizeof(Position) * entity.groups.size());
        add_leader(entity, values_, drawing_, forms);
    } else if (type == "MULTILEADER") {
        return add_multileader(entity, values_, texts_, forms);
    } else if (type == "DIMENSION") {
        return add_dimension(entity, values_, drawing_, texts_, forms);
    } else {
        return make_text(entity, in_block, forms);
    }
    return true;
}

bool Form_Maker::make_text(const Entity& entity, bool in_block, Forms& forms) {
    constexpr std::int64_t invisible = 1, constant = 2; // flags of attributes
    if (entity.type == "MTEXT") {
        return texts_.add_paragraphs(entity, forms);
    }
    const bool is_attribute = entity.type == "ATTRIB", is_definition = entity.type == "ATTDEF";
    if (entity.type != "TEXT" && !is_attribute && !is_definition) {
        return false;
    }
    if ((is_attribute || is_definition) && values_.has_flag(entity, 70, invisible)) {
        return true;
    }
    // Definitions stand in blocks for values that insertions have, except for constant ones.
    const bool is_constant = values_.has_flag(entity, 70, constant);
    if (is_definition && in_block && !is_constant) {
        return true;
    }
    const std::string_view text = values_.text(entity, is_definition && !is_constant ? 2 : 1);
    return text.empty() || texts_.add_line(entity, text, forms);
}

void Form_Maker::make_arc(const Entity& entity, Forms& forms) const {
    const double radius = values_.number(values_.required(entity, 40));
    double from = 0, to = whole_turn;
    if (entity.type == "ARC") {
        from = values_.number(values_.required(entity, 50)) * degree;
        to = values_.number(values_.required(entity, 51)) * degree;
        to += to <= from ? whole_turn : 0;
    }
    add_arc(values_.position(entity, 10), {radius, 0}, {0, radius}, from, to, add_shape(forms).lines.emplace_back());
}

void Form_Maker::make_ellipse(const Entity& entity, Forms& forms) const {
    const Position major = values_.position(entity, 11);
    const double ratio = values_.number(values_.required(entity, 40)) * (values_.number(entity, 230, 1) < 0 ? -1 : 1);
    const double from = values_.number(entity, 41, 0);
    double to = values_.number(entity, 42, whole_turn);
    to += to <= from ? whole_turn : 0;
    add_arc(values_.position(entity, 10), major, {-major.y * ratio, major.x * ratio}, from, to,
            add_shape(forms).lines.emplace_back());
}

// Of solids the third and the fourth corner change places. Faces in space are drawn as their edges.
void Form_Maker::make_face(const Entity& entity, Forms& forms) const {
    const Position third = values_.position(entity, 12), last = entity.find(13) ? values_.position(entity, 13) : third;
    const Position first = values_.position(entity, 10), second = values_.position(entity, 11);
    if (entity.type != "3DFACE") {
        add_shape(forms).faces = {{{first, second, last, third}}};
        return;
    }
    const Path corners{first, second, third, last};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Position next = corners[(i + 1) % corners.size()];
        if (!values_.has_flag(entity, 70, std::int64_t{1} << i) && corners[i] != next) { // flags: edges that are not seen
            add_shape(forms).lines = {{corners[i], next}};
        }
    }
}

// Variables of the file tell how all points look.
void Form_Maker::make_point(const Entity& entity, Forms& forms) const {
    enum : std::int64_t { dot, nothing, plus, cross, tick, symbol = 31, circled = 32, boxed = 64 };
    const Position at = values_.position(entity, 10);
    const auto variable = drawing_.header.find("$PDMODE"), measure = drawing_.header.find("$PDSIZE");
    if (variable == drawing_.header.end()) {
        add_shape(forms).points = {at};
        return;
    }
    const std::int64_t mode = values_.integer(variable->second), sign = mode & symbol;
    const double size = measure == drawing_.header.end() ? 0 : values_.number(measure->second) / 2;
    if (mode == nothing) {
        return;
    }
    if (mode == dot || !(size > 0)) { // of a size in pixels
        Shape& shape = add_shape(forms);
        shape.points = {at};
        shape.marker_symbol = mode == dot             ? vorna::marker_symbol::dot
                              : (mode & boxed) != 0   ? vorna::marker_symbol::square
                              : (mode & circled) != 0 ? vorna::marker_symbol::circle
                              : sign == cross         ? vorna::marker_symbol::cross
                                                      : vorna::marker_symbol::plus;
        if (mode == dot) {
            shape.marker_size = 1;
        }
        return;
    }
    Form& form = forms.emplace_back();
    form.is_solid_line = true;
    std::vector<Path>& lines = form.shape.lines;
    const auto add_line = [&](double ax, double ay, double bx, double by) {
        lines.push_back({{at.x + ax * size, at.y + ay * size}, {at.x + bx * size, at.y + by * size}});
    };
    if (sign == plus) {
        add_line(-1, 0, 1, 0);
        add_line(0, -1, 0, 1);
    } else if (sign == cross) {
        add_line(-1, -1, 1, 1);
        add_line(-1, 1, 1, -1);
    } else if (sign == tick) {
        add_line(0, 0, 0, 1);
    } else if (sign == dot) {
        form.shape.points = {at};
        form.shape.marker_symbol = vorna::marker_symbol::dot;
        form.shape.marker_size = 1;
    }
    if ((mode & circled) != 0) {
        add_arc(at, {size, 0}, {0, size}, 0, whole_turn, lines.emplace_back());
    }
    if ((mode & boxed) != 0) {
        lines.push_back({{at.x - size, at.y - size},
                         {at.x + size, at.y - size},
                         {at.x + size, at.y + size},
                         {at.x - size, at.y + size},
                         {at.x - size, at.y - size}});
    }
}

// By control points; a file may have only the points that the curve passes through.
bool Form_Maker::make_spline(const Entity& entity, Forms& forms) {
    Spline spline;
    Path fitted;
    const std::int64_t degree_of = values_.integer(entity, 71, 3);
    spline.degree = static_cast<std::size_t>(std::clamp<std::int64_t>(degree_of, 0, highest_degree + 1));
    for (const Group& group : entity.groups) {
        switch (group.code) {
        case 40:
            spline.knots.push_back(values_.number(group));
            break;
        case 41:
            spline.weights.push_back(values_.number(group));
            break;
        case 10:
            spline.points.push_back({values_.number(group), 0});
            break;
        case 11:
            fitted.push_back({values_.number(group), 0});
            break;
        case 20:
        case 21:
            if (Path& points = group.code == 20 ? spline.points : fitted; !points.empty()) {
                points.back().y = values_.number(group);
            }
            break;
        default:
            break;
        }
    }
    if (spline.points.empty() && fitted.size() > 1) {
        limits_.take_memory(file_, fitted_steps * sizeof(Position) * fitted.size());
        limits_.take_work(file_, fitted_steps * fitted.size());
        add_fitted_curve(fitted, values_.has_flag(entity, 70, is_closed), add_shape(forms).lines.emplace_back());
        return true;
    }
    if (!spline.is_whole()) {
        values_.fail(entity.line, "a SPLINE of degree 1 to 32 with rising knots, as many as points + degree + 1");
    }
    const Load_Limits::Loan memory(limits_, file_, spline.position_count() * sizeof(Position));
    limits_.take_work(file_, spline.work());
    spline.add_to(add_shape(forms).lines.emplace_back());
    return true;
}

void Form_Maker::make_polyline(const Entity& entity, Forms& forms) {
    const bool is_light = entity.type == "LWPOLYLINE";
    if (!is_light && values_.has_flag(entity, 70, is_grid | is_mesh)) {
        limits_.take_memory(file_, entity.parts.size() * 4 * (sizeof(Path) + 2 * sizeof(Position)));
        add_mesh(entity, values_, add_shape(forms));
        return;
    }
    const std::vector<Vertex> vertices = is_light ? light_vertices(entity, values_) : vertices_of(entity, values_);
    const Load_Limits::Loan memory(limits_, file_, position_count(vertices) * sizeof(Position) + vertices.size() * sizeof(Form));
    add_polyline(vertices, values_.has_flag(entity, 70, is_closed), forms);
}

} // namespace vorna::drawing::map::dxf
