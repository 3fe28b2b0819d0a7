// The model's triangles: strips of whole device points, one colour a strip, a triangle or a point.
#include <algorithm>
#include <cstdlib>

#include "tests/support/model/fixed_point.h"
#include "tests/support/model/model.h"

namespace model {

namespace {

constexpr std::size_t channel_count = 4;
using Channels = std::array<Number, channel_count>;

Channels channels_of(VT_RGB32 color) {
    return {color.blue, color.green, color.red, color.alpha};
}

VT_RGB32 color_from(const Channels& channels) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(channels[i] & 0xFF); };
    return {byte(0), byte(1), byte(2), byte(3)};
}

struct Vertex {
    Number column, row, z;
    Channels color;
};

// Everything that changes linearly from one vertex down to another one, row by row.
struct Edge {
    Edge(const Vertex& from, const Vertex& to) : first_row(from.row), row_count(to.row - from.row) {
        column = steps_between(from.column, to.column, row_count, column_bits);
        z = steps_between(from.z, to.z, row_count, depth_bits);
        for (std::size_t i = 0; i < channel_count; ++i) {
            color[i] = steps_between(from.color[i], to.color[i], row_count, color_bits);
        }
    }

    Number column_at(Number row) const { return column.at(row - first_row); }
    Number z_at(Number row) const { return z.at(row - first_row); }
    Number color_at(std::size_t channel, Number row) const { return color[channel].at(row - first_row); }

    Number first_row, row_count;
    Steps column, z;
    std::array<Steps, channel_count> color;
};

// One row of a triangle, between the values of its edges there.
struct Span {
    Number row, first_column, count;
    Number left_z, right_z;           // 17.15
    Channels left_color, right_color; // 16.16

    Number z_at(Number i) const {
        if (count == 2 && i == 1) {
            return low_16(whole((right_z >> 1) + (left_z >> 1), depth_bits));
        }
        const Number left = low_16(whole(left_z, depth_bits));
        const Number right = low_16(whole(right_z, depth_bits));
        return i == 0 ? left : low_16(whole(steps_between(left, right, count, depth_bits).at(i), depth_bits));
    }

    Number channel_at(std::size_t channel, Number i) const {
        if (count == 2 && i == 1) {
            return (left_color[channel] + right_color[channel]) >> (color_bits + 1);
        }
        const Number left = low_16(whole(left_color[channel], color_bits));
        const Number right = low_16(whole(right_color[channel], color_bits));
        return i == 0 ? left : whole(steps_between(left, right, count, color_bits).at(i), color_bits);
    }
};

Span span_between(const Edge& left, const Edge& right, Number row) {
    Span span{};
    span.row = row;
    span.first_column = low_16(whole(left.column_at(row), column_bits));
    span.count = low_16(whole(right.column_at(row), column_bits)) - span.first_column;
    span.left_z = left.z_at(row);
    span.right_z = right.z_at(row);
    for (std::size_t i = 0; i < channel_count; ++i) {
        span.left_color[i] = left.color_at(i, row);
        span.right_color[i] = right.color_at(i, row);
    }
    return span;
}

// Rows from the first vertex's up to, not including, the last one's; columns likewise from edge to edge.
template <class Visit> void for_each_span(std::array<Vertex, 3> vertices, Visit visit) {
    std::stable_sort(vertices.begin(), vertices.end(), [](const Vertex& a, const Vertex& b) { return a.row < b.row; });
    const auto& [top, middle, bottom] = vertices;
    const Edge across(top, bottom), upper(top, middle), lower(middle, bottom);
    const bool across_is_left_above = upper.column.step > across.column.step;
    const bool across_is_left_below = lower.column.start >= across.column_at(middle.row);
    for (Number row = top.row; row < bottom.row; ++row) {
        const bool is_above = row < middle.row;
        const Edge& side = is_above ? upper : lower;
        const bool across_is_left = is_above ? across_is_left_above : across_is_left_below;
        visit(across_is_left ? span_between(across, side, row) : span_between(side, across, row));
    }
}

bool is_near(VT_RGB32 a, VT_RGB32 b) {
    return std::abs(a.blue - b.blue) <= 3 && std::abs(a.green - b.green) <= 3 && std::abs(a.red - b.red) <= 3;
}

bool has(const VT_Face_Attributes& face, std::uint32_t flag) {
    return (face.flags & flag) != 0;
}

bool is_hatched(const VT_Face_Attributes& face) {
    return face.pattern > vorna::face_pattern::last_drawn_by_renderers;
}

bool is_for_host(const VT_Face_Attributes& face) {
    return has(face, vorna::face_flag::special_shading) || is_hatched(face);
}

} // namespace

Model::Handed_Over Model::draw_polytriangle(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points) {
    const VT_Face_Attributes& face = rendition.face;
    if (points.size() < 3) {
        return {};
    }
    if (is_for_host(face)) {
        return {"VD_Standard_Draw_DCI_Polytriangle"};
    }
    const bool with_depth = setup.depth && rendition.clip.depth_test;
    Pixel_Rules rules = colorized_rules(rendition, with_depth, setup.alpha);
    VT_RGB32 fill = face.color;
    if (!with_depth && setup.has_indices() && is_merging(face.mode)) {
        rules.color = Color_Rule::dither_and_merge;
    } else if (!with_depth && !setup.has_indices() && !setup.alpha) {
        // Opaque buffers still blend and merge where the face asks for it.
        const bool translucent = has(face, vorna::face_flag::translucent);
        if (translucent || is_merging(face.mode)) {
            rules = colorized_rules(rendition, false, true);
            fill.alpha = translucent ? fill.alpha : 255;
        }
    }
    for (std::size_t k = 0; k + 2 < points.size(); ++k) {
        draw_triangle(face, {points[k], points[k + 1], points[k + 2]}, {fill, fill, fill}, rules);
    }
    return {};
}

Model::Handed_Over Model::draw_colorized_polytriangle(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
                                                      const std::vector<VT_RGB32>& colors, bool single_color) {
    if (points.size() < 3) {
        return {};
    }
    if (is_for_host(rendition.face)) {
        return {"VD_Standard_Draw_DCI_Colorized_Polytriangle"};
    }
    const bool with_depth = setup.depth && rendition.clip.depth_test;
    const Pixel_Rules rules = colorized_rules(rendition, with_depth, setup.alpha);
    for (std::size_t k = 0; k + 2 < points.size(); ++k) {
        const VT_RGB32 fill = colors[single_color ? 0 : k];
        draw_triangle(rendition.face, {points[k], points[k + 1], points[k + 2]}, {fill, fill, fill}, rules);
    }
    return {};
}

Model::Handed_Over Model::draw_gouraud_polytriangle(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
                                                    const std::vector<VT_RGB32>& colors) {
    const VT_Face_Attributes& face = rendition.face;
    if (points.size() < 3) {
        return {};
    }
    const bool with_depth = setup.depth && rendition.clip.depth_test;
    // Opaque buffers blend translucent faces too, as long as no depth is tested.
    const bool blends = setup.alpha || (!with_depth && has(face, vorna::face_flag::translucent));
    // Special shading is not looked for where nothing but a store is to be done.
    const bool only_stores = !setup.has_indices() && !setup.depth && !blends;
    if (only_stores ? is_hatched(face) : is_for_host(face)) {
        return {"VD_Standard_Draw_DCI_Gouraud_Polytriangle"};
    }
    Pixel_Rules rules{blends ? Color_Rule::blend_visible : Color_Rule::store_opaque, triangle_depth_rule(with_depth, blends)};
    if (setup.has_indices()) {
        rules.color = Color_Rule::dither;
    }
    Handed_Over handed_over;
    for (std::size_t k = 0; k + 2 < points.size(); ++k) {
        const std::array<VT_DCI_Point, 3> corners{points[k], points[k + 1], points[k + 2]};
        const VT_RGB32 first = colors[k];
        if (!is_near(first, colors[k + 1]) || !is_near(first, colors[k + 2])) {
            draw_triangle(face, corners, {first, colors[k + 1], colors[k + 2]}, rules);
        } else if (is_for_host(face)) {
            // What looks flat is a call of the colorized member, which does look for special shading.
            handed_over.emplace_back("VD_Standard_Draw_DCI_Colorized_Polytriangle");
        } else {
            draw_triangle(face, corners, {first, first, first}, colorized_rules(rendition, with_depth, blends));
        }
    }
    return handed_over;
}

Pixel_Rules Model::colorized_rules(const VT_Rendition& rendition, bool with_depth, bool with_alpha) const {
    const Depth_Rule depth_rule = triangle_depth_rule(with_depth, with_alpha);
    if (setup.has_indices()) {
        return {Color_Rule::dither, depth_rule};
    }
    if (!with_alpha) {
        return {Color_Rule::store, depth_rule};
    }
    const bool merges = !with_depth && is_merging(rendition.face.mode);
    return {merges ? Color_Rule::merge : Color_Rule::blend, depth_rule};
}

Depth_Rule Model::triangle_depth_rule(bool with_depth, bool with_alpha) const {
    if (!with_depth) {
        return Depth_Rule::none;
    }
    if (setup.has_indices()) {
        return Depth_Rule::nearer_or_equal;
    }
    return with_alpha ? Depth_Rule::nearer_or_equal_write_if_on : Depth_Rule::by_mode;
}

void Model::draw_triangle(const VT_Face_Attributes& face, const std::array<VT_DCI_Point, 3>& points,
                          const std::array<VT_RGB32, 3>& colors, const Pixel_Rules& rules) {
    std::array<Vertex, 3> vertices{};
    for (std::size_t i = 0; i < 3; ++i) {
        vertices[i] = {column_of(points[i].x), row_of(points[i].y), points[i].z, channels_of(colors[i])};
    }
    for_each_span(vertices, [&](const Span& span) {
        for (Number i = 0; i < span.count; ++i) {
            Channels channels{};
            for (std::size_t channel = 0; channel < channel_count; ++channel) {
                channels[channel] = span.channel_at(channel, i);
            }
            draw_face_pixel({static_cast<std::int32_t>(span.first_column + i), static_cast<std::int32_t>(span.row), span.z_at(i),
                             color_from(channels)},
                            face, rules);
        }
    });
}

void Model::draw_face_pixel(const Fragment& fragment, const VT_Face_Attributes& face, const Pixel_Rules& rules) {
    if (is_pattern_set(face, fragment.column, fragment.row)) {
        draw_pixel(fragment, rules);
    } else if (has(face, vorna::face_flag::opaque_pattern)) {
        // The contrast colour is one of the rendition's and no interpolated one: a store keeps its fourth byte.
        const Color_Rule rule = rules.color == Color_Rule::store_opaque ? Color_Rule::store : rules.color;
        draw_pixel({fragment.column, fragment.row, fragment.z, face.contrast_color}, {rule, rules.depth});
    }
}

std::vector<VT_DCI_Point> rounded(const std::vector<VT_Point>& points) {
    const auto round = [](float value) {
        const float moved = value >= 0.0F ? value + 0.5F : value - 0.499999F;
        return static_cast<std::int32_t>(moved);
    };
    std::vector<VT_DCI_Point> whole_points;
    whole_points.reserve(points.size());
    for (const VT_Point& point : points) {
        whole_points.push_back({round(point.x), round(point.y), round(point.z)});
    }
    return whole_points;
}

} // namespace model
