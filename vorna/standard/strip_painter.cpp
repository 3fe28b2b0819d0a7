// Scan conversion of triangles into rows of pixels.
#include "vorna/standard/strip_painter.h"

#include <algorithm>
#include <array>
#include <vector>

#include "host/clip.h"
#include "host/strip.h"
#include "host/texture.h"
#include "host/triangle_clipper.h"
#include "vorna/standard/drawing_area.h"
#include "vorna/standard/pattern.h"
#include "vorna/standard/row_output.h"

namespace vorna {

namespace {

// The interpolated values, in fixed point: x with 16 bits of fraction, depth with 15; texel coordinates and channels have 16 bits
// of fraction already. 64 bits hold the values for all 32-bit points.
enum Attribute : std::size_t { x, z, s, t, blue, green, red, alpha, attribute_count };
using Values = std::array<std::int64_t, attribute_count>;

constexpr int fraction_bits(std::size_t i) noexcept {
    return i == x ? 16 : i == z ? 15 : 0;
}

struct Vertex {
    std::int64_t y;
    Values values; // x and z without fraction
};

struct Stepper {
    Values value, step;

    void advance(std::int64_t count) noexcept {
        for (std::size_t i = 0; i < attribute_count; ++i) {
            value[i] += step[i] * count;
        }
    }
};

// A difference divided by a count of steps: 1, 2, 4 and 8 shift and so round down, all others truncate.
std::int64_t divided(std::int64_t difference, std::int64_t count) noexcept {
    switch (count) {
    case 1:
        return difference;
    case 2:
        return difference >> 1;
    case 4:
        return difference >> 2;
    case 8:
        return difference >> 3;
    default:
        return difference / count;
    }
}

// x and z start half a unit higher, so that truncation rounds to nearest.
std::int64_t start_of(std::int64_t whole, int bits) noexcept {
    return bits == 0 ? whole : (whole << bits) + (std::int64_t{1} << (bits - 1));
}

Stepper edge(const Vertex& from, const Vertex& to) noexcept {
    Stepper result;
    for (std::size_t i = 0; i < attribute_count; ++i) {
        const int bits = fraction_bits(i);
        result.value[i] = start_of(from.values[i], bits);
        result.step[i] = divided((to.values[i] - from.values[i]) << bits, to.y - from.y);
    }
    return result;
}

// Interpolates along the pixels of a row, between the values of two edges. The second of two pixels takes the mean of the edges.
Stepper span(const Values& left, const Values& right, std::int64_t count) noexcept {
    Stepper result{left, {}};
    for (std::size_t i = s; i < attribute_count; ++i) {
        result.step[i] = divided(right[i] - left[i], count);
    }
    const std::int64_t from = left[z] >> 15;
    const std::int64_t to = count == 2 ? ((right[z] >> 1) + (left[z] >> 1)) >> 15 : right[z] >> 15;
    result.value[z] = start_of(from, 15);
    result.step[z] = count == 2 ? (to - from) << 15 : divided((to - from) << 15, count);
    return result;
}

class Painter {
public:
    Painter(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Strip_Kind kind, const VT_Shared_Image* texture)
        : visible_(visible_rectangle(renderer, rendition)), origin_(window_origin(renderer.current_renderer_options())),
          face_(rendition.face), texture_(texture), pattern_(face_.pattern, face_.bitmap.get()), kind_(kind),
          combination_(combination_of(renderer, rendition, kind)), output_(renderer, rendition, combination_) {}

    void fill(std::array<Vertex, 3> vertices) {
        std::stable_sort(vertices.begin(), vertices.end(), [](const Vertex& a, const Vertex& b) { return a.y < b.y; });
        const auto& [top, middle, bottom] = vertices;
        if (top.y == bottom.y) {
            return;
        }
        Stepper long_edge = edge(top, bottom);
        if (middle.y > top.y) {
            Stepper short_edge = edge(top, middle);
            fill_rows(top.y, middle.y, long_edge, short_edge, short_edge.step[x] > long_edge.step[x]);
        }
        if (bottom.y > middle.y) {
            Stepper short_edge = edge(middle, bottom);
            fill_rows(middle.y, bottom.y, long_edge, short_edge, short_edge.value[x] >= long_edge.value[x]);
        }
    }

private:
    void fill_rows(std::int64_t row, std::int64_t end, Stepper& long_edge, Stepper& short_edge, bool long_is_left) {
        const std::int64_t first = std::clamp<std::int64_t>(visible_.bottom, row, end);
        const std::int64_t last = std::clamp<std::int64_t>(std::int64_t{visible_.top} + 1, first, end);
        long_edge.advance(first - row);
        short_edge.advance(first - row);
        const Stepper& left = long_is_left ? long_edge : short_edge;
        const Stepper& right = long_is_left ? short_edge : long_edge;
        for (row = first; row < last; ++row) {
            fill_span(static_cast<std::int32_t>(row), left.value, right.value);
            long_edge.advance(1);
            short_edge.advance(1);
        }
        long_edge.advance(end - last);
    }

    void fill_span(std::int32_t row, const Values& left, const Values& right) {
        const std::int64_t column = left[x] >> 16;
        const std::int64_t count = (right[x] >> 16) - column;
        const std::int64_t first = std::max<std::int64_t>(column, visible_.left);
        const std::int64_t end = std::min<std::int64_t>(column + count, std::int64_t{visible_.right} + 1);
        if (first >= end) {
            return;
        }
        Stepper along = span(left, right, count);
        along.advance(first - column);
        pixels_.clear();
        for (std::int64_t i = first; i < end; ++i, along.advance(1)) {
            // In a span of two pixels the mean of the colours keeps its half unit until it is multiplied by the texel.
            const bool is_mean = count == 2 && i == column + 1;
            Row_Output::Pixel pixel{{}, static_cast<std::int32_t>(along.value[z] >> 15 & 0xFFFF), true};
            if (is_cell(static_cast<std::int32_t>(i) - origin_.x, row - origin_.y)) {
                pixel.color = color_at(along.value, is_mean ? &left : nullptr, is_mean ? &right : nullptr);
            } else {
                pixel.color = face_.contrast_color;
                pixel.is_drawn = (face_.flags & face_flag::opaque_pattern) != 0;
            }
            // Transparent pixels with interpolated colours are left out.
            pixel.is_drawn &= pixel.color.alpha > 0 || kind_ == Strip_Kind::flat || kind_ == Strip_Kind::colorized;
            pixels_.push_back(pixel);
        }
        output_.draw(static_cast<std::int32_t>(first), row, pixels_);
    }

    // left, right: the edges for the second of two pixels, else null.
    VT_RGB32 color_at(const Values& values, const Values* left, const Values* right) const noexcept {
        const auto modulated = [&](std::uint8_t byte, Attribute i) {
            const std::int64_t doubled = left ? (*left)[i] + (*right)[i] : 2 * values[i];
            return static_cast<std::uint8_t>(byte * std::max<std::int64_t>(doubled, 0) >> 17);
        };
        if (!texture_) {
            const auto channel = [&](Attribute i) { return static_cast<std::uint8_t>(values[i] >> 8); };
            const bool is_opaque = kind_ == Strip_Kind::gouraud && combination_ == Combination::store;
            return {channel(blue), channel(green), channel(red), is_opaque ? std::uint8_t{255} : channel(alpha)};
        }
        const std::int64_t texel_column = values[s] >> 16;
        const std::int64_t texel_row = values[t] >> 16;
        if (texel_column < 0 || texel_column >= texture_->width() || texel_row < 0 || texel_row >= texture_->height()) {
            return {0, 0, 0, 0};
        }
        const std::uint8_t* texel =
            texture_->row(texture_->height() - 1 - static_cast<std::int32_t>(texel_row)) + 4 * texel_column;
        // The mean of alpha is rounded down before the product.
        const auto shown = static_cast<std::uint8_t>(texel[3] * std::max<std::int64_t>(values[alpha], 0) >> 16);
        return {modulated(texel[0], blue), modulated(texel[1], green), modulated(texel[2], red), shown};
    }

    bool is_cell(std::int32_t column, std::int32_t row) const noexcept {
        const bool is_set = pattern_.has_cells() && pattern_(column, row);
        return is_set != ((face_.flags & face_flag::inverted_pattern) != 0);
    }

    VT_Int_Rectangle visible_;
    VT_Int_Pair origin_;
    const VT_Face_Attributes& face_;
    const VT_Shared_Image* texture_;
    Pattern pattern_;
    Strip_Kind kind_;
    Combination combination_;
    Row_Output output_;
    std::vector<Row_Output::Pixel> pixels_;
};

using Corner = Clip_Vertex<VT_DCI_Point>;

class Strip_Painting {
public:
    Strip_Painting(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip)
        : texture_(strip.kind == Strip_Kind::textured ? drawable_texture(rendition.face) : nullptr), strip_(strip),
          face_color_(face_color(renderer, rendition)), visible_(visible_rectangle(renderer, rendition)),
          has_colors_(strip.kind == Strip_Kind::gouraud || strip.kind == Strip_Kind::textured),
          painter_(renderer, rendition, strip.kind, texture_) {
        if (texture_) {
            parameters_.resize(2 * static_cast<std::size_t>(strip.count));
            set_texture_parameters(rendition.face, strip.count, strip.parameters, strip.parameter_width, parameters_.data());
        }
    }

    void draw_whole() { draw_triangles(0, strip_.count - 2); }

    // Like renderers: triangles that cross the rectangle are cut to strips, the others are drawn unchanged.
    void draw_cut() {
        std::vector<std::uint16_t> outcodes(static_cast<std::size_t>(strip_.count));
        if (is_empty(visible_) || VD_Clip(visible_, strip_.count, strip_.points, outcodes.data()) == 0) {
            return;
        }
        walk_strip(
            strip_.count, placements_by(outcodes.data()),
            [this](std::int32_t first, std::int32_t length) { draw_triangles(first, length - 2); },
            [this](std::int32_t k) { draw_pieces(k); });
    }

private:
    // Without alpha blending a flat face that merges and is not translucent counts as opaque.
    static VT_RGB32 face_color(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
        VT_RGB32 color = rendition.face.color;
        if (!renderer.current_renderer_options().alpha_blending() && !(rendition.face.flags & face_flag::translucent) &&
            combination_of(renderer, rendition, Strip_Kind::flat) == Combination::merge) {
            color.alpha = 255;
        }
        return color;
    }

    Corner corner(std::int32_t i, std::int32_t k) const {
        const auto at = 2 * static_cast<std::size_t>(i);
        return {strip_.points[i], has_colors_ ? strip_.colors[i] : color_of_triangle(k), texture_ ? parameters_[at] : 0,
                texture_ ? parameters_[at + 1] : 0};
    }

    VT_RGB32 color_of_triangle(std::int32_t k) const {
        return strip_.kind == Strip_Kind::flat        ? face_color_
               : strip_.kind == Strip_Kind::colorized ? strip_.colors[strip_.single_color ? 0 : k]
                                                      : VT_RGB32{};
    }

    void draw_triangles(std::int32_t first, std::int32_t count) {
        for (std::int32_t k = first; k < first + count; ++k) {
            painter_.fill({vertex(corner(k, k)), vertex(corner(k + 1, k)), vertex(corner(k + 2, k))});
        }
    }

    void draw_pieces(std::int32_t k) {
        const Corner triangle[3] = {corner(k, k), corner(k + 1, k), corner(k + 2, k)};
        Clipped_Polygon polygon;
        const std::int32_t count = clip_triangle_to_rectangle(visible_, triangle, polygon);
        const auto piece = [&](std::int32_t i) {
            return vertex(
                {polygon.points[i], has_colors_ ? polygon.colors[i] : color_of_triangle(k), polygon.u[i], polygon.v[i]});
        };
        for (std::int32_t i = 0; i < count - 2; ++i) {
            painter_.fill({piece(i), piece(i + 1), piece(i + 2)});
        }
    }

    Vertex vertex(const Corner& corner) const noexcept {
        const VT_RGB32 color = corner.color;
        Vertex result{
            corner.point.y,
            {corner.point.x, corner.point.z, 0, 0, 257 * color.blue, 257 * color.green, 257 * color.red, 257 * color.alpha}};
        if (texture_) {
            result.values[s] = texel_coordinate(corner.u, texture_->width());
            result.values[t] = texel_coordinate(corner.v, texture_->height());
        }
        return result;
    }

    const VT_Shared_Image* texture_;
    const Strip<VT_DCI_Point>& strip_;
    VT_RGB32 face_color_;
    VT_Int_Rectangle visible_;
    bool has_colors_; // one for each point
    Painter painter_;
    std::vector<VT_Parameter> parameters_;
};

} // namespace

void paint_strip(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip, Strip_Cut cut) {
    if (strip.count < 3 || is_empty(visible_rectangle(renderer, rendition))) {
        return;
    }
    Strip_Painting painting(renderer, rendition, strip);
    if (cut == Strip_Cut::triangles) {
        painting.draw_cut();
    } else {
        painting.draw_whole();
    }
}

} // namespace vorna
