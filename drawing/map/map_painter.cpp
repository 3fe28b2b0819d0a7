// Draws faces, lines and markers of a projected map through a renderer.
#include "drawing/map/map_painter.h"

#include <algorithm>
#include <cmath>

#include "drawing/map/polygon_rows.h"
#include "drawing/map/tile_lines.h"
#include "vorna/draw.h"

namespace vorna::drawing::map {
namespace {

// The pixel that contains the position.
VT_DCI_Point pixel_of(Position p) {
    return {static_cast<std::int32_t>(std::floor(p.x)), static_cast<std::int32_t>(std::floor(p.y)), 0};
}

VT_Reference<const VT_Line_Type_Set> line_types_of(const Dashes& dashes, double scale) {
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    for (std::size_t i = 0; i < dashes.size(); ++i) {
        const bool dash = i % 2 == 0;
        type->lengths.push_back(dashes[i]);
        type->kinds.push_back(!dash ? -1 : dashes[i] == 0 ? 0 : 1);
    }
    const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->scale = scale;
    set->types.push_back(type);
    return set;
}

// In quarters, so that an image of 8 bits needs three colours.
constexpr int mix_steps = 4;

VT_RGB32 mixed(VT_RGB32 below, VT_RGB32 above, int steps) {
    const auto channel = [=](int a, int b) {
        return static_cast<std::uint8_t>((a * (mix_steps - steps) + b * steps) / mix_steps);
    };
    return {channel(below.blue, above.blue), channel(below.green, above.green), channel(below.red, above.red), 255};
}

std::optional<VT_RGB32> ground_of(const Text_Paint& paint) {
    return paint.halo_width > 0 ? std::optional(paint.halo_color) : paint.ground;
}

// The letters over their halo, as one colour with its alpha.
VT_RGB32 letters_over_halo(int letters, int halo, const Text_Paint& paint) {
    const int above = letters * paint.color.alpha / 255;
    const int below = halo * paint.halo_color.alpha / 255 * (255 - above) / 255;
    const int alpha = above + below;
    const auto channel = [=](int over, int under) {
        return static_cast<std::uint8_t>(alpha == 0 ? 0 : (over * above + under * below) / alpha);
    };
    return {channel(paint.color.blue, paint.halo_color.blue), channel(paint.color.green, paint.halo_color.green),
            channel(paint.color.red, paint.halo_color.red), static_cast<std::uint8_t>(alpha)};
}

} // namespace

std::vector<VT_RGB32> mixed_colors(const Text_Paint& paint) {
    std::vector<VT_RGB32> colors;
    for (int i = 1; i < mix_steps && ground_of(paint); ++i) {
        colors.push_back(mixed(*ground_of(paint), paint.color, i));
    }
    return colors;
}

Map_Painter::Map_Painter(VT_Renderer_Data& renderer, const VT_Rendition& base, const View& view)
    : renderer_(renderer), rendition_(new VT_Rendition(base)), view_(view),
      visible_(common_part(base.clip.hard_clip, base.window.rectangle)), is_part_(visible_ != base.clip.hard_clip) {
}

std::int32_t Map_Painter::tile_margin(const Line_Paint& paint) {
    if (paint.width > 1) {
        return 0;
    }
    double longest = 0;
    for (std::size_t i = 0; paint.is_dashed() && i < paint.dashes->size(); i += 2) {
        longest = std::max(longest, (*paint.dashes)[i] * paint.pixels_of_dashes());
    }
    constexpr double most = 1 << 20; // farther than any tile
    longest = std::min(longest, most);
    // Two pixels more for rounded positions and the fringes of smoothed lines.
    return (static_cast<std::int32_t>(std::ceil(longest)) + 2 + 7) / 8 * 8;
}

// The renderer walks line types along whole segments up to this number of elements: half of the renderer's limit, for rounding.
double Map_Painter::longest_dashed_segment(const Line_Paint& paint) {
    const double elements = paint.width > 1 ? 1 << 14 : 1 << 17;
    double repetition = 0;
    std::ranges::for_each(*paint.dashes, [&](double length) { repetition += length * paint.pixels_of_dashes(); });
    return elements / static_cast<double>(paint.dashes->size()) * repetition;
}

std::uint8_t Map_Painter::index_of(VT_RGB32 color) {
    if (!indexed_ || indexed_->first != color) {
        const VT_Palette& palette = renderer_.current_renderer_options().palette();
        indexed_ = {color, static_cast<std::uint8_t>(palette.closest_match(color, false))};
    }
    return indexed_->second;
}

void Map_Painter::fill(const Face& face, VT_RGB32 color) {
    fill_pixels(view_.device_face(face), color);
}

void Map_Painter::fill_pixels(const Face& pixels, VT_RGB32 color) {
    rendition_->face.color = color;
    rendition_->face.flags = color.alpha == 255 ? 0 : vorna::face_flag::translucent;
    const auto draw_face = [this](const VT_Int_Rectangle& r) {
        // Strips leave out their last column and row.
        const VT_DCI_Point corners[] = {
            {r.left, r.bottom, 0}, {r.right + 1, r.bottom, 0}, {r.left, r.top + 1, 0}, {r.right + 1, r.top + 1, 0}};
        VD_Draw_2DI_Polytriangle(renderer_, *rendition_, 4, corners);
    };
    // In 8-bit images faces are dithered; lines take the nearest colour of the palette.
    const auto draw_rows = [this](const VT_Int_Rectangle& r) {
        for (std::int32_t y = r.bottom; y <= r.top; ++y) {
            const VT_DCI_Point row[] = {{r.left, y, 0}, {r.right, y, 0}};
            VD_Draw_2DI_Polyline(renderer_, *rendition_, 2, row);
        }
    };
    if (renderer_.current_renderer_options().color_system() == 1) {
        for_each_rectangle(pixels, visible_, draw_face);
    } else {
        set_line({color});
        for_each_rectangle(pixels, visible_, draw_rows);
    }
}

void Map_Painter::set_line(const Line_Paint& paint) {
    VT_Line_Attributes& attributes = rendition_->line;
    attributes.color = paint.color;
    attributes.index = index_of(paint.color);
    attributes.weight = paint.width;
    attributes.line_types = paint.is_dashed() ? line_types_of(*paint.dashes, paint.pixels_of_dashes()) : VT_Line_Type_Set::None;
}

void Map_Painter::draw(const Path& line, const Line_Paint& paint) {
    std::vector<VT_DCI_Point> points;
    VT_Int_Rectangle bounds{INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN};
    const auto finish = [&] {
        const VT_Int_Rectangle& clip = rendition_->clip.hard_clip;
        const bool seen = bounds.left <= clip.right + paint.width && bounds.right >= clip.left - paint.width &&
                          bounds.bottom <= clip.top + paint.width && bounds.top >= clip.bottom - paint.width;
        if (seen && points.size() > 1) {
            draw_points(points, paint);
        }
        points.clear();
        bounds = {INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN};
    };
    set_line(paint);
    for (const Position& p : line) {
        const Position place = view_.device_place(p);
        if (!(std::abs(place.x) < farthest_pixel && std::abs(place.y) < farthest_pixel)) {
            finish();
            continue;
        }
        const VT_DCI_Point point = pixel_of(place);
        if (!points.empty() && points.back().x == point.x && points.back().y == point.y) {
            continue;
        }
        points.push_back(point);
        bounds = {std::min(bounds.left, point.x), std::max(bounds.right, point.x), std::min(bounds.bottom, point.y),
                  std::max(bounds.top, point.y)};
    }
    finish();
}

// Wide lines and short dashes do not depend on the window.
void Map_Painter::draw_points(const std::vector<VT_DCI_Point>& points, const Line_Paint& paint) {
    if (is_part_ && paint.width <= 1 && !paint.is_dashed()) {
        draw_line_in_tile(renderer_, *rendition_, points);
    } else {
        VD_Draw_2DI_Polyline(renderer_, *rendition_, static_cast<std::int32_t>(points.size()), points.data());
    }
}

void Map_Painter::mark(std::span<const Position> places, const Marker_Paint& paint) {
    std::vector<VT_DCI_Point> points;
    points.reserve(places.size());
    for (const Position& place : places) {
        const Position p = view_.device_place(place);
        if (std::abs(p.x) < farthest_pixel && std::abs(p.y) < farthest_pixel) {
            points.push_back(pixel_of(p));
        }
    }
    rendition_->marker.color = paint.color;
    rendition_->marker.index = index_of(paint.color);
    rendition_->marker.symbol = paint.symbol;
    rendition_->marker.size = paint.size;
    if (!points.empty()) {
        VD_Draw_2DI_Polymarker(renderer_, *rendition_, static_cast<std::int32_t>(points.size()), points.data());
    }
}

void Map_Painter::write(const Lettering& lettering, std::int32_t times) {
    const bool blends = renderer_.current_renderer_options().color_system() == 1;
    for_each_area(lettering, times, visible_, [&](const Letter_Pixels& pixels) {
        blends ? blend(pixels, lettering.paint) : draw_rows(pixels, lettering.paint);
    });
}

void Map_Painter::blend(const Letter_Pixels& pixels, const Text_Paint& paint) {
    const VT_Int_Rectangle& area = pixels.area;
    const auto width = static_cast<std::size_t>(area.right - area.left + 1);
    std::vector<VT_RGB32> row(width);
    rendition_->drawing_flags |= vorna::drawing_flag::translucent;
    for (std::int32_t y = area.bottom; y <= area.top; ++y) {
        const std::size_t first = static_cast<std::size_t>(y - area.bottom) * width;
        for (std::size_t x = 0; x < width; ++x) {
            row[x] = letters_over_halo(pixels.letters[first + x], pixels.halo.empty() ? 0 : pixels.halo[first + x], paint);
        }
        const VT_DCI_Point start{area.left, y, 0}, end{area.right, y, 0};
        VD_Draw_DCI_RGB32_Image(renderer_, *rendition_, &start, &end, 0, row.data(), 0, nullptr);
    }
    rendition_->drawing_flags &= ~vorna::drawing_flag::translucent;
}

// Runs of one colour.
void Map_Painter::draw_rows(const Letter_Pixels& pixels, const Text_Paint& paint) {
    const VT_Int_Rectangle& area = pixels.area;
    const std::optional<VT_RGB32> ground = ground_of(paint);
    const auto color_of = [&](std::size_t pixel) -> std::optional<VT_RGB32> {
        const int share = pixels.letters[pixel], halo = pixels.halo.empty() ? 0 : pixels.halo[pixel];
        const int steps = ground ? (share * mix_steps + 127) / 255 : share >= 128 ? mix_steps : 0;
        return steps == mix_steps ? std::optional(paint.color)
               : steps > 0        ? std::optional(mixed(*ground, paint.color, steps))
               : halo >= 128      ? std::optional(paint.halo_color)
                                  : std::nullopt;
    };
    std::size_t pixel = 0;
    for (std::int32_t y = area.bottom; y <= area.top; ++y) {
        for (std::int32_t x = area.left; x <= area.right;) {
            const std::optional<VT_RGB32> color = color_of(pixel);
            const std::int32_t first = x;
            for (; x <= area.right && color_of(pixel) == color; ++x, ++pixel) {
            }
            if (color) {
                set_line({*color});
                const VT_DCI_Point run[] = {{first, y, 0}, {x - 1, y, 0}};
                VD_Draw_2DI_Polyline(renderer_, *rendition_, 2, run);
            }
        }
    }
}

} // namespace vorna::drawing::map
