// The model's polylines: segments of whole points stepped one pixel at a time, and the 2D flow that cuts them at the clip
// rectangle.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "tests/support/model/fixed_point.h"
#include "tests/support/model/model.h"

namespace model {

namespace {

constexpr std::int32_t fringe_weight = 47; // one pixel away from the line
constexpr std::array<const char*, 3> names{"Polyline", "Colorized_Polyline", "Gouraud_Polyline"};

std::string standard_function(const char* form, Line_Kind kind) {
    return std::string("VD_Standard_Draw_") + form + "_" + names[static_cast<std::size_t>(kind)];
}

bool is_wide_or_styled(const VT_Rendition& rendition) {
    return rendition.line.style != 0 || rendition.line.weight > 1;
}

bool is_nearly_flat(const Stroke& stroke) {
    const auto near = [](int a, int b) { return std::abs(a - b) < 4; };
    return near(stroke.from_color.blue, stroke.to_color.blue) && near(stroke.from_color.green, stroke.to_color.green) &&
           near(stroke.from_color.red, stroke.to_color.red);
}

std::array<Number, 4> channels_of(VT_RGB32 color) {
    return {color.blue, color.green, color.red, color.alpha};
}

// The way from one point to another.
struct Way {
    Way(const VT_DCI_Point& from, const VT_DCI_Point& to)
        : x(from.x), y(from.y), dx(Number{to.x} - from.x), dy(Number{to.y} - from.y), columns(std::abs(dx)), rows(std::abs(dy)) {}

    // More columns than rows.
    bool is_x_major() const { return columns > rows; }
    bool is_falling() const { return dy < 0; }
    // Columns a row, in 65536ths.
    Number slope() const { return dx * 65536 / rows; }

    Number x, y, dx, dy, columns, rows;
};

// Visits the pixels from the first point up to, not including, the last one: one a column or, with at least as many rows, one a
// row. The crossing of two rows lies half a slope on; the bias decides which pixel a crossing exactly between two columns is of.
template <class Visit> void for_each_pixel(const Way& way, Visit visit) {
    const Number x_sign = way.dx < 0 ? -1 : 1, y_sign = way.is_falling() ? -1 : 1;
    if (!way.is_x_major()) {
        for (Number i = 0; i < way.rows; ++i) {
            visit(way.x + ((i * way.slope() + 0x8000) >> 16), way.y + i * y_sign, i);
        }
        return;
    }
    Number row = 0;
    const auto end_of_run = [&] {
        const Number bias = x_sign > 0 ? (way.is_falling() ? 0x10000 : 0xFFFF) : (way.is_falling() ? -1 : 0);
        const Number half = (x_sign > 0 ? way.slope() : way.slope() + 1) >> 1;
        return way.x + ((bias + half + row * way.slope()) >> 16);
    };
    for (Number i = 0; i < way.columns; ++i) {
        const Number x = way.x + i * x_sign;
        while (row < way.rows && (x - end_of_run()) * x_sign >= 0) {
            ++row;
        }
        visit(x, way.y + row * y_sign, i);
    }
}

// Colour and depth along a way: of its i-th pixel.
struct Shade {
    Shade(const Stroke& stroke, Number count) : z(steps_between(stroke.from.z, stroke.to.z, count, depth_bits)) {
        for (std::size_t c = 0; c < 4; ++c) {
            color[c] = steps_between(channels_of(stroke.from_color)[c], channels_of(stroke.to_color)[c], count, color_bits);
        }
    }

    Number z_at(Number i) const { return low_16(whole(z.at(i), depth_bits)); }
    VT_RGB32 color_at(Number i) const {
        const auto byte = [&](std::size_t c) { return static_cast<std::uint8_t>(whole(color[c].at(i), color_bits) & 0xFF); };
        return {byte(0), byte(1), byte(2), byte(3)};
    }

    Steps z;
    std::array<Steps, 4> color;
};

std::uint16_t outcode(const VT_DCI_Point& point, const VT_Int_Rectangle& r) {
    const int across = point.x > r.right ? 4 : point.x < r.left ? 1 : 0;
    const int up = point.y > r.top ? 2 : point.y < r.bottom ? 8 : 0;
    return static_cast<std::uint16_t>(across + up);
}

// Keeps columns of clipped segments within 16 bits. False when nothing is left.
bool clip_to_guard_band(VT_DCI_Point& from, VT_DCI_Point& to) {
    constexpr double least = -4000, most = 28760;
    double entry = 0, exit = 1;
    const auto cut = [&](double start, double end) {
        if (start == end) {
            return start >= least && start <= most;
        }
        const double low = (least - start) / (end - start), high = (most - start) / (end - start);
        entry = std::max(entry, std::min(low, high));
        exit = std::min(exit, std::max(low, high));
        return true;
    };
    if (!cut(from.x, to.x) || !cut(from.y, to.y) || entry > exit) {
        return false;
    }
    const auto at = [](double start, double end, double t) {
        return static_cast<std::int32_t>(std::floor(start + t * (end - start) + 0.5));
    };
    const VT_DCI_Point a = from, b = to;
    if (entry > 0) {
        from = {at(a.x, b.x, entry), at(a.y, b.y, entry), at(a.z, b.z, entry)};
    }
    if (exit < 1) {
        to = {at(a.x, b.x, exit), at(a.y, b.y, exit), at(a.z, b.z, exit)};
    }
    return true;
}

// The row where an end of a segment that lies outside comes to the rectangle.
Number row_at_edge(const Way& way, const VT_DCI_Point& end, const VT_Int_Rectangle& clip) {
    const int code = outcode(end, clip);
    if (code == 0 || way.rows == 0) {
        return end.y;
    }
    if ((code & 5) == 0) {
        return code == 2 ? clip.top : clip.bottom;
    }
    const Number distance = std::abs(((code & 1) ? clip.left : clip.right) - way.x), slope = std::abs(way.slope());
    const Number half = (way.is_falling() ? slope - 1 : slope + 1) >> 1;
    const Number rows = way.columns == way.rows ? distance : (distance * 65536 + half) / slope;
    return way.is_falling() ? way.y - rows : way.y + rows;
}

} // namespace

std::vector<Stroke> strokes_between(const std::vector<VT_DCI_Point>& points, const std::vector<VT_RGB32>& colors, Line_Kind kind,
                                    bool single_color) {
    std::vector<Stroke> strokes;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const VT_RGB32 color = colors[single_color ? 0 : i];
        strokes.push_back({points[i], points[i + 1], color, kind == Line_Kind::gouraud ? colors[i + 1] : color});
    }
    return strokes;
}

Model::Handed_Over Model::draw_dci_polyline(const VT_Rendition& rendition, Line_Kind kind, const std::vector<Stroke>& strokes) {
    if (is_wide_or_styled(rendition)) {
        return {standard_function("DCI", kind)};
    }
    const bool with_depth = setup.depth && rendition.clip.depth_test;
    const bool gouraud = kind == Line_Kind::gouraud;
    const bool by_index = setup.has_indices() && kind == Line_Kind::flat && !with_depth;
    const bool merging = is_merging(rendition.line.mode) && !with_depth && !gouraud;
    Pixel_Rules rules{Color_Rule::store, Depth_Rule::none, region_of(rendition)};
    if (setup.has_indices()) {
        rules.color = !by_index ? Color_Rule::dither : merging ? Color_Rule::merge : Color_Rule::store;
        if (kind == Line_Kind::colorized && !with_depth) {
            rules.region = nullptr;
        }
    } else if (merging) {
        rules.color = Color_Rule::merge;
    } else {
        rules.color = setup.alpha ? Color_Rule::blend_as_line : gouraud ? Color_Rule::store_opaque : Color_Rule::store;
    }
    if (with_depth) {
        const bool is_fixed = setup.has_indices() || gouraud || rules.region;
        rules.depth = is_fixed ? Depth_Rule::nearer_or_equal : Depth_Rule::by_mode;
    }
    const bool smoothed =
        !setup.has_indices() && !with_depth && !merging && !gouraud && (rendition.line.flags & vorna::line_flag::smoothed) != 0;

    // The colorized member for indices without depth would draw through the region.
    const bool has_short_cut = gouraud && (setup.has_indices() ? with_depth || !rules.region : !with_depth);
    for (const Stroke& stroke : strokes) {
        if (has_short_cut && is_nearly_flat(stroke)) {
            draw_dci_polyline(rendition, Line_Kind::colorized, {{stroke.from, stroke.to, stroke.from_color, stroke.from_color}});
        } else if (smoothed) {
            draw_smoothed(rendition, stroke, rules);
        } else {
            const Way way(stroke.from, stroke.to);
            const Shade shade(stroke, std::max(way.columns, way.rows));
            for_each_pixel(way, [&](Number x, Number y, Number i) {
                const VT_RGB32 shown = by_index ? vorna::color_of(rendition.line.index) : shade.color_at(i);
                draw_pixel(fragment_at(x, y, shade.z_at(i), shown), rules);
            });
        }
    }
    const VT_DCI_Point last = strokes.back().to;
    if (smoothed) {
        draw_with_fringes(rendition, last.x, last.y, true, strokes.back().to_color, rules);
    } else {
        // The last point always obeys and writes depth, and compares all of its own.
        rules.depth = with_depth ? Depth_Rule::nearer_or_equal : Depth_Rule::none;
        const VT_RGB32 shown = by_index ? vorna::color_of(rendition.line.index) : strokes.back().to_color;
        draw_pixel(fragment_at(last.x, last.y, last.z, shown), rules);
    }
    return {};
}

// A pixel on the line, and one on either side of it as long as the line keeps off the clip rectangle's edges there. Nothing is
// drawn outside the window.
void Model::draw_with_fringes(const VT_Rendition& rendition, std::int64_t x, std::int64_t y, bool is_vertical, VT_RGB32 shown,
                              const Pixel_Rules& rules) {
    draw_pixel(fragment_at(x, y, 0, shown), rules);
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    if (is_vertical ? x > clip.left && x < clip.right : y > clip.bottom && y < clip.top) {
        for (const int side : {-1, 1}) {
            draw_fringe(is_vertical ? x + side : x, is_vertical ? y : y + side, fringe_weight, shown, rules);
        }
    }
}

void Model::draw_fringe(std::int64_t x, std::int64_t y, std::int32_t weight, VT_RGB32 shown, const Pixel_Rules& rules) {
    const std::int32_t alpha = !setup.alpha || shown.alpha == 255 ? 256 : shown.alpha;
    Fragment fragment = fragment_at(x, y, 0, shown);
    if (fragment.column < 0 || fragment.column >= setup.size.x || fragment.row < 0 || fragment.row >= setup.size.y) {
        return;
    }
    fragment.weight = weight * alpha;
    draw_pixel(fragment, {Color_Rule::blend_by_weight, Depth_Rule::none, rules.region});
}

void Model::draw_smoothed(const VT_Rendition& rendition, const Stroke& stroke, const Pixel_Rules& rules) {
    const Way way(stroke.from, stroke.to);
    const Number count = std::max(way.columns, way.rows);
    const Number x_sign = way.dx < 0 ? -1 : 1, y_sign = way.is_falling() ? -1 : 1;
    const Number unit = Number{1} << 32;
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    for (Number i = 0; i < count; ++i) {
        if (way.dx == 0 || way.dy == 0) {
            draw_with_fringes(rendition, way.x + (way.dx == 0 ? 0 : i * x_sign), way.y + (way.dy == 0 ? 0 : i * y_sign),
                              way.dx == 0, stroke.from_color, rules);
            continue;
        }
        const Number position = way.is_x_major() ? way.y * unit + i * (way.rows * unit / count) * y_sign
                                                 : way.x * unit + i * (way.columns * unit / count) * x_sign;
        const Number middle = (position + unit / 2) >> 32;
        for (const Number across : {middle - 1, middle, middle + 1}) {
            const Number x = way.is_x_major() ? way.x + i * x_sign : across;
            const Number y = way.is_x_major() ? across : way.y + i * y_sign;
            const bool is_within = x >= clip.left && x <= clip.right && y >= clip.bottom && y <= clip.top;
            if (across == middle || is_within) {
                draw_fringe(x, y, distance_weight(std::abs(across * unit - position) >> 24), stroke.from_color, rules);
            }
        }
    }
}

std::int32_t distance_weight(std::int64_t distance) {
    if (distance == 162 || distance == 173) {
        return distance == 162 ? 123 : 114;
    }
    return distance < 313 ? static_cast<std::int32_t>((512 * (313 - distance) + 313) / 626) : 0;
}

Model::Handed_Over Model::draw_2di_polyline(const VT_Rendition& rendition, Line_Kind kind, const std::vector<Stroke>& strokes) {
    if (strokes.empty()) {
        return {};
    }
    if (is_wide_or_styled(rendition)) {
        return {standard_function("2DI", kind)};
    }
    const auto code = [&](const VT_DCI_Point& point) { return outcode(point, rendition.clip.hard_clip); };
    const Stroke& last = strokes.back();
    if (code(last.to) == 0 && code(last.from) != 0) {
        draw_dot(rendition, last.to, kind == Line_Kind::flat ? nullptr : &last.to_color);
    }
    for (std::size_t i = 0; i < strokes.size(); ++i) {
        // Neighbours inside are one polyline.
        std::vector<Stroke> stretch;
        while (i < strokes.size() && code(strokes[i].from) == 0 && code(strokes[i].to) == 0) {
            stretch.push_back(strokes[i++]);
        }
        if (!stretch.empty()) {
            draw_dci_polyline(rendition, kind, stretch);
        }
        if (i < strokes.size() && (code(strokes[i].from) & code(strokes[i].to)) == 0) {
            draw_clipped(rendition, kind, strokes[i]);
        }
    }
    return {};
}

void Model::draw_clipped(const VT_Rendition& rendition, Line_Kind kind, const Stroke& stroke) {
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    VT_DCI_Point from = stroke.from, to = stroke.to;
    if (!clip_to_guard_band(from, to) || (outcode(from, clip) & outcode(to, clip)) != 0) {
        return;
    }
    if (outcode(from, clip) == 0 && outcode(to, clip) == 0) {
        draw_dci_polyline(rendition, kind, {{from, to, stroke.from_color, stroke.to_color}});
        return;
    }

    const bool with_depth = setup.depth && rendition.clip.depth_test;
    const bool gouraud = kind == Line_Kind::gouraud, merging = kind == Line_Kind::flat && is_merging(rendition.line.mode);
    Pixel_Rules rules;
    if (setup.has_indices() || merging) {
        rules.color = merging ? Color_Rule::merge : Color_Rule::store;
    } else {
        rules.color = setup.alpha ? Color_Rule::blend_as_line : gouraud ? Color_Rule::store_opaque : Color_Rule::store;
    }
    if (with_depth) {
        rules.depth = setup.has_indices() ? Depth_Rule::nearer_or_equal : Depth_Rule::by_mode;
    }
    // Not every member asks for a mask.
    if (kind == Line_Kind::flat || (!setup.has_indices() && (gouraud || !with_depth))) {
        rules.region = region_of(rendition);
    }

    // Rows are those of the cut segment. Colours and depths run along the whole one, however long it is.
    const Way way(from, to), whole_way(stroke.from, stroke.to);
    const bool by_column = way.columns >= way.rows;
    const Shade shade(stroke, by_column ? whole_way.columns : whole_way.rows);
    Number first = row_at_edge(way, from, clip), last = row_at_edge(way, to, clip);
    if (way.rows > way.columns) {
        // A start beyond the far side counts as the last row there.
        first = way.is_falling() ? std::max<Number>(first, clip.bottom) : std::min<Number>(first, clip.top);
    }
    if (way.is_falling()) {
        first = std::min<Number>(first, clip.top);
        last = std::max<Number>(last, clip.bottom);
    } else {
        first = std::max<Number>(first, clip.bottom);
        last = std::min<Number>(last, clip.top);
    }
    for_each_pixel(way, [&](Number x, Number y, Number) {
        const bool is_between = way.is_falling() ? y <= first && y >= last : y >= first && y <= last;
        if (x < clip.left || x > clip.right || !is_between) {
            return;
        }
        const Number i = by_column ? std::abs(x - stroke.from.x) : std::abs(y - stroke.from.y);
        Fragment fragment = fragment_at(x, y, shade.z_at(i), shade.color_at(i));
        if (setup.has_indices()) {
            fragment.color =
                vorna::color_of(additive_index(stroke, by_column ? whole_way.columns : whole_way.rows, i, fragment.column, y));
        }
        draw_pixel(fragment, rules);
    });
}

// The threshold is added to each channel on its own. The row counts in device pixels here.
std::uint32_t Model::additive_index(const Stroke& stroke, std::int64_t count, std::int64_t i, std::int32_t column,
                                    std::int64_t y) const {
    const VT_Color_Cube cube = color_cube();
    const std::array<Number, 3> multipliers{cube.blue_multiplier, cube.green_multiplier, cube.red_multiplier};
    const std::array<Number, 3> strides{1, cube.green_stride, cube.red_stride};
    const auto row = static_cast<std::int32_t>(y - setup.origin.y);
    const std::uint32_t limit = threshold(address_of(column, row) % 8, static_cast<std::int32_t>(y & 7));
    Number index = cube.base;
    for (std::size_t c = 0; c < 3; ++c) {
        const Steps steps = steps_between(channels_of(stroke.from_color)[c] * multipliers[c],
                                          channels_of(stroke.to_color)[c] * multipliers[c], count, color_bits);
        index += (((whole(steps.at(i), 8) + limit) >> 16) & 0xFF) * strides[c];
    }
    return static_cast<std::uint32_t>(index & 0xFF);
}

} // namespace model
