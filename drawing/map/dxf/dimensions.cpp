// Dimensions without a block of their own, and leaders.
#include "drawing/map/dxf/dimensions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "drawing/map/dxf/curves.h"

namespace vorna::drawing::map::dxf {
namespace {

// The entity's own sizes follow the name DSTYLE: a number of the style's table entry and its value by turns.
Dimension_Style style_of(const Entity& entity, const Values& values, const Drawing& drawing) {
    const std::string_view name = values.text(entity, 3);
    const Dimension_Style* named = find(drawing.dimension_styles, name.empty() ? "Standard" : name);
    Dimension_Style style = named ? *named : Dimension_Style{};
    std::int64_t member = 0;
    bool is_override = false;
    for (const Group& group : entity.groups) {
        if (group.code == 1000 || group.code == 1001) {
            is_override = group.value == "DSTYLE";
        } else if (is_override && group.code == 1070) {
            member = values.integer(group);
        } else if (is_override && group.code == 1040) {
            double* const size = member == 40    ? &style.scale
                                 : member == 41  ? &style.arrow
                                 : member == 140 ? &style.text_height
                                 : member == 147 ? &style.gap
                                                 : nullptr;
            if (size) {
                *size = values.number(group);
            }
        }
    }
    return style;
}

Position moved(Position from, Position direction, double length) {
    return {from.x + direction.x * length, from.y + direction.y * length};
}

// Of length 1; 0 for equal positions.
Position direction(Position from, Position to) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    return length > 0 ? Position{(to.x - from.x) / length, (to.y - from.y) / length} : Position{};
}

// backward: from the tip to the other end.
void add_arrow(Position tip, Position backward, double length, Forms& forms) {
    const Position end = moved(tip, backward, length), side{-backward.y * length / 6, backward.x * length / 6};
    add_shape(forms).faces = {{{tip, {end.x + side.x, end.y + side.y}, {end.x - side.x, end.y - side.y}}}};
}

// Where the first segment has room for it.
void start_with_arrow(Path& corners, double arrow, Forms& forms) {
    const Position tip = corners[0], backward = direction(corners[0], corners[1]);
    if (arrow > 0 && std::hypot(corners[1].x - tip.x, corners[1].y - tip.y) >= 2 * arrow) {
        add_arrow(tip, backward, arrow, forms);
        corners[0] = moved(tip, backward, arrow);
    }
}

std::string measured(double length) {
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.10g", std::abs(length) < 1e12 ? std::round(length * 100) / 100 : length);
    return digits;
}

} // namespace

void add_leader(const Entity& leader, const Values& values, const Drawing& drawing, Forms& forms) {
    const Dimension_Style style = style_of(leader, values, drawing);
    Path corners;
    for (const Group& group : leader.groups) {
        if (group.code == 10) {
            corners.push_back({values.number(group), 0});
        } else if (group.code == 20 && !corners.empty()) {
            corners.back().y = values.number(group);
        }
    }
    const bool has_arrow = values.integer(leader, 71, 1) != 0, is_curved = values.integer(leader, 72, 0) == 1;
    if (corners.size() < 2) {
        return;
    }
    if (has_arrow) {
        start_with_arrow(corners, style.arrow * style.scale, forms);
    }
    Path& line = add_shape(forms).lines.emplace_back();
    if (is_curved) {
        add_fitted_curve(corners, false, line);
    } else {
        line = corners;
    }
}

// Its parts are nested in groups whose values end with a brace.
bool add_multileader(const Entity& leader, const Values& values, Text_Maker& texts, Forms& forms) {
    enum class Part { none, context, group, line } part = Part::none;
    std::string_view text;
    Letters letters;
    Text_Maker::Box box;
    double arrow = 0, turn = 0;
    Position end;
    std::vector<Path> lines;
    for (const Group& group : leader.groups) {
        if (group.value.ends_with('{') && group.code >= 300 && group.code <= 304) {
            part = group.value == "CONTEXT_DATA{"  ? Part::context
                   : group.value == "LEADER{"      ? Part::group
                   : group.value == "LEADER_LINE{" ? Part::line
                                                   : part;
            if (part == Part::line) {
                lines.emplace_back();
            }
        } else if (group.value == "}") {
            if (part == Part::group) {
                for (Path& line : lines) {
                    line.push_back(end);
                    if (line.size() > 1) {
                        start_with_arrow(line, arrow, forms);
                    }
                    add_shape(forms).lines.push_back(std::move(line));
                }
                lines.clear();
            }
            part = part == Part::line ? Part::group : part == Part::group ? Part::context : Part::none;
        } else if (part == Part::context) {
            switch (group.code) {
            case 304:
                text = group.value;
                break;
            case 12:
                box.place.origin.x = values.number(group);
                break;
            case 22:
                box.place.origin.y = values.number(group);
                break;
            case 41:
                letters.height = values.number(group);
                break;
            case 42:
                turn = values.number(group);
                break;
            case 43:
                box.width = std::max(values.number(group), 0.0);
                break;
            case 140:
                arrow = values.number(group);
                break;
            default:
                break;
            }
        } else if (part == Part::group && (group.code == 10 || group.code == 20)) {
            (group.code == 10 ? end.x : end.y) = values.number(group);
        } else if (part == Part::line && group.code == 10) {
            lines.back().push_back({values.number(group), 0});
        } else if (part == Part::line && group.code == 20 && !lines.back().empty()) {
            lines.back().back().y = values.number(group);
        }
    }
    box.place = Placement::turned(turn, box.place.origin);
    return text.empty() || texts.add_paragraphs(text, letters, box, forms);
}

bool add_dimension(const Entity& dimension, const Values& values, const Drawing& drawing, Text_Maker& texts, Forms& forms) {
    enum : std::int64_t { turned = 0, aligned = 1, diameter = 3, radius = 4, kinds = 7 };
    const Dimension_Style style = style_of(dimension, values, drawing);
    const std::int64_t kind = values.integer(dimension, 70, 0) & kinds;
    Position from, to; // the ends of the dimension line
    if (kind == turned || kind == aligned) {
        const Position first = values.position(dimension, 13), second = values.position(dimension, 14);
        const Position on_line = values.position(dimension, 10);
        const double angle = values.number(dimension, 50, 0) * degree;
        const Position along = kind == aligned ? direction(first, second) : Position{std::cos(angle), std::sin(angle)};
        const auto foot = [&](Position p) {
            return moved(on_line, along, (p.x - on_line.x) * along.x + (p.y - on_line.y) * along.y);
        };
        from = foot(first);
        to = foot(second);
        add_shape(forms).lines = {{first, from}, {second, to}};
    } else if (kind == diameter || kind == radius) {
        from = values.position(dimension, 10);
        to = values.position(dimension, 15);
    } else {
        return false;
    }
    const Position along = direction(from, to);
    const double length = std::hypot(to.x - from.x, to.y - from.y), arrow = style.arrow * style.scale;
    add_shape(forms).lines = {{from, to}};
    if (length >= 2 * arrow) {
        add_arrow(to, {-along.x, -along.y}, arrow, forms);
        if (kind != radius) {
            add_arrow(from, along, arrow, forms);
        }
    }
    const std::string_view own = values.text(dimension, 1);
    if (own == " ") {
        return true;
    }
    const std::string number = (kind == diameter ? "%%c"
                                : kind == radius ? "R"
                                                 : "") +
                               measured(values.number(dimension, 42, length));
    std::string text(own);
    if (const std::size_t place = text.find("<>"); text.empty() || place != std::string::npos) {
        text = text.empty() ? number : text.replace(place, 2, number);
    }
    // The text reads from below or from the right, above the line.
    const double height = style.text_height * style.scale;
    double angle = std::atan2(along.y, along.x);
    angle -= angle > 91 * degree ? 180 * degree : 0;
    angle += angle <= -89 * degree ? 180 * degree : 0;
    const double rise = height / 2 + style.gap * style.scale;
    const Position above{(from.x + to.x) / 2 - std::sin(angle) * rise, (from.y + to.y) / 2 + std::cos(angle) * rise};
    const Position place = dimension.find(11) ? values.position(dimension, 11) : above;
    return texts.add_centered(text, Placement::turned(angle, place), height, forms);
}

} // namespace vorna::drawing::map::dxf
