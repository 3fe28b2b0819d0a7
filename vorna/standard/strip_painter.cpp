// Scan conversion of triangles into rows of pixels.
#include "vorna/standard/strip_painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "vorna/standard/drawing_area.h"
#include "vorna/standard/pattern.h"
#include "vorna/standard/textures.h"

namespace vorna {

namespace {

// What is interpolated, in fixed point: x with 16 bits of fraction, depth with 15, texel coordinates and the channels' 16 bits as
// they are. 64 bits hold whatever 32-bit points lead to.
enum Attribute : std::size_t { x, z, s, t, blue, green, red, alpha, attribute_count };
using Values = std::array<std::int64_t, attribute_count>;

constexpr int fraction_bits(std::size_t i) noexcept {
    return i == x ? 16 : i == z ? 15 : 0;
}

struct Vertex {
    std::int64_t y;
    Values values; // whole x and z
};

struct Stepper {
    Values value, step;

    void advance(std::int64_t count) noexcept {
        for (std::size_t i = 0; i < attribute_count; ++i) {
            value[i] += step[i] * count;
        }
    }
};

// A difference by a count of steps: counts of 1, 2, 4 and 8 shift and so round down, all others cut off.
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

// x and z start half a unit into their first step, so that cutting off rounds.
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

// From the values of two edges to those along the pixels between them. The second pixel of two takes the edges' mean.
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

std::int32_t texel_coordinate(float parameter, std::int32_t side) noexcept {
    const double scaled = double{parameter} * side * 65536.0;
    return scaled > -2147483649.0 && scaled < 2147483648.0 ? static_cast<std::int32_t>(scaled) : INT32_MIN;
}

VT_RGB32 blended(VT_RGB32 over, VT_RGB32 under) noexcept {
    const auto mix = [&](int a, int b) { return static_cast<std::uint8_t>((a * over.alpha + b * (255 - over.alpha)) / 255); };
    return {mix(over.blue, under.blue), mix(over.green, under.green), mix(over.red, under.red), 255};
}

// Draws the pixels of a row. A pixel of alpha 0 is left out.
class Row_Output {
public:
    struct Pixel {
        VT_RGB32 color;
        std::int32_t z;
    };

    Row_Output(VT_Renderer_Data& renderer, const VT_Rendition& rendition, bool blends)
        : renderer_(renderer), rendition_(new VT_Rendition(rendition)), blends_(blends),
          has_colors_(renderer.current_renderer_options().color_system() == 1) {
        rendition_->line.mode = rendition.face.mode; // that of dots
        rendition_->drawing_flags = drawing_flag::translucent;
    }

    void draw(std::int32_t first_column, std::int32_t row, const std::vector<Pixel>& pixels) {
        if (blends_ && has_colors_) {
            draw_image(first_column, row, pixels);
        } else {
            draw_dots(first_column, row, pixels);
        }
    }

private:
    // Blended images follow the same rule as textured faces, at any setting of alpha blending.
    void draw_image(std::int32_t first_column, std::int32_t row, const std::vector<Pixel>& pixels) {
        colors_.clear();
        for (const Pixel& pixel : pixels) {
            colors_.push_back(pixel.color);
        }
        const VT_DCI_Point start{first_column, row, pixels.front().z};
        const VT_DCI_Point end{first_column + static_cast<std::int32_t>(pixels.size()) - 1, row, pixels.back().z};
        VD_Draw_DCI_RGB32_Image(renderer_, *rendition_, &start, &end, 4 * static_cast<std::int32_t>(pixels.size()),
                                colors_.data(), 0, nullptr);
    }

    void draw_dots(std::int32_t first_column, std::int32_t row, const std::vector<Pixel>& pixels) {
        const std::uint8_t* stored = blends_ ? read_row(first_column, row, static_cast<std::int32_t>(pixels.size())) : nullptr;
        const VT_Palette& palette = renderer_.current_renderer_options().palette();
        VT_DCI_Point point{first_column, row, 0};
        for (const Pixel& pixel : pixels) {
            if (pixel.color.alpha > 0) {
                const VT_RGB32 color = stored ? blended(pixel.color, palette.color(*stored)) : pixel.color;
                point.z = pixel.z;
                VD_Draw_DCI_Dot(renderer_, *rendition_, &point, &color);
            }
            ++point.x;
            stored += stored ? 1 : 0;
        }
    }

    // The indices that the row holds; null when they cannot be had.
    const std::uint8_t* read_row(std::int32_t first_column, std::int32_t row, std::int32_t count) {
        constexpr Buffer_Format format = Buffer_Format::index8;
        const VT_DCI_Point start{first_column, row, 0};
        const VT_DCI_Point end{first_column + count - 1, row, 0};
        VD_Read_Color_Image(renderer_, *rendition_, &start, &end, &format, stored_);
        return stored_ ? stored_->row(0) : nullptr;
    }

    VT_Renderer_Data& renderer_;
    VT_Reference<VT_Rendition> rendition_;
    bool blends_, has_colors_;
    std::vector<VT_RGB32> colors_;
    VT_Reference<VT_Shared_Image> stored_;
};

// Renderers store palette indices of textures as they are unless alpha blending is asked for.
bool blends_textures(const VT_Renderer_Options& options) noexcept {
    return options.color_system() == 1 || options.alpha_blending();
}

class Painter {
public:
    Painter(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Shared_Image* texture)
        : visible_(visible_rectangle(renderer, rendition)), origin_(window_origin(renderer.current_renderer_options())),
          face_(rendition.face), texture_(texture), pattern_(face_.pattern, face_.bitmap.get()),
          output_(renderer, rendition, texture && blends_textures(renderer.current_renderer_options())) {}

    bool can_draw() const noexcept { return !is_empty(visible_); }

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
            // The colours' means in a span of two pixels keep their half unit up to the product with the texel.
            const bool is_mean = count == 2 && i == column + 1;
            pixels_.push_back({pixel_at(static_cast<std::int32_t>(i) - origin_.x, row - origin_.y, along.value,
                                        is_mean ? &left : nullptr, is_mean ? &right : nullptr),
                               static_cast<std::int32_t>(along.value[z] >> 15 & 0xFFFF)});
        }
        output_.draw(static_cast<std::int32_t>(first), row, pixels_);
    }

    // left and right: of the second pixel of two; else null.
    VT_RGB32 pixel_at(std::int32_t column, std::int32_t row, const Values& values, const Values* left,
                      const Values* right) const noexcept {
        if (!is_cell(column, row)) {
            return face_.flags & face_flag::opaque_pattern ? face_.contrast_color : VT_RGB32{0, 0, 0, 0};
        }
        const auto modulated = [&](std::uint8_t byte, Attribute i) {
            const std::int64_t doubled = left ? (*left)[i] + (*right)[i] : 2 * values[i];
            return static_cast<std::uint8_t>(byte * std::max<std::int64_t>(doubled, 0) >> 17);
        };
        if (!texture_) {
            const auto channel = [&](Attribute i) { return static_cast<std::uint8_t>(values[i] >> 8); };
            return {channel(blue), channel(green), channel(red), channel(alpha)};
        }
        const std::int64_t texel_column = values[s] >> 16;
        const std::int64_t texel_row = values[t] >> 16;
        if (texel_column < 0 || texel_column >= texture_->width() || texel_row < 0 || texel_row >= texture_->height()) {
            return {0, 0, 0, 0};
        }
        const std::uint8_t* texel =
            texture_->row(texture_->height() - 1 - static_cast<std::int32_t>(texel_row)) + 4 * texel_column;
        // The mean of alpha is rounded down first.
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
    Row_Output output_;
    std::vector<Row_Output::Pixel> pixels_;
};

} // namespace

void paint_strip(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip) {
    const VT_Shared_Image* texture = strip.kind == Strip_Kind::textured ? plain_texture(rendition.face) : nullptr;
    Painter painter(renderer, rendition, texture);
    if (strip.count < 3 || !painter.can_draw()) {
        return;
    }
    const std::vector<VT_Parameter> parameters =
        texture ? texture_parameters(rendition.face, strip.count, strip.parameters, strip.parameter_width)
                : std::vector<VT_Parameter>{};
    // Only textured faces and translucent ones look at alpha.
    const bool is_opaque =
        !texture && !renderer.current_renderer_options().alpha_blending() && !(rendition.face.flags & face_flag::translucent);
    const auto vertex = [&](std::int32_t i, VT_RGB32 color) {
        const VT_DCI_Point& point = strip.points[i];
        Vertex result{point.y,
                      {point.x, point.z, 0, 0, 257 * color.blue, 257 * color.green, 257 * color.red,
                       257 * (is_opaque ? 255 : color.alpha)}};
        if (texture) {
            const auto at = 2 * static_cast<std::size_t>(i);
            result.values[s] = texel_coordinate(parameters[at], texture->width());
            result.values[t] = texel_coordinate(parameters[at + 1], texture->height());
        }
        return result;
    };
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        const bool of_points = strip.kind == Strip_Kind::gouraud || strip.kind == Strip_Kind::textured;
        const VT_RGB32 face_color = strip.kind == Strip_Kind::flat        ? rendition.face.color
                                    : strip.kind == Strip_Kind::colorized ? strip.colors[strip.single_color ? 0 : k]
                                                                          : VT_RGB32{};
        const auto corner = [&](std::int32_t i) { return vertex(i, of_points ? strip.colors[i] : face_color); };
        painter.fill({corner(k), corner(k + 1), corner(k + 2)});
    }
}

} // namespace vorna
