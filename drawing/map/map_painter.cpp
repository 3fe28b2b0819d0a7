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

VT_Reference<const VT_Line_Type_Set> line_types_of(const Dashes& dashes, std::int32_t width) {
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    for (std::size_t i = 0; i < dashes.size(); ++i) {
        const bool dash = i % 2 == 0;
        type->lengths.push_back(dashes[i]);
        type->kinds.push_back(!dash ? -1 : dashes[i] == 0 ? 0 : 1);
    }
    const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->scale = width;
    set->types.push_back(type);
    return set;
}

} // namespace

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
        longest = std::max(longest, (*paint.dashes)[i]);
    }
    // Two pixels more for rounded positions and the fringes of smoothed lines.
    return (static_cast<std::int32_t>(std::ceil(longest)) + 2 + 7) / 8 * 8;
}

// The renderer walks line types along whole segments up to this number of elements: half of the renderer's limit, for rounding.
double Map_Painter::longest_dashed_segment(const Line_Paint& paint) {
    const double elements = paint.width > 1 ? 1 << 14 : 1 << 17;
    double repetition = 0;
    std::ranges::for_each(*paint.dashes, [&](double length) { repetition += length * paint.width; });
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
    attributes.line_types = paint.is_dashed() ? line_types_of(*paint.dashes, paint.width) : VT_Line_Type_Set::None;
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

void Map_Painter::mark(Position place, const Marker_Paint& paint) {
    const Position p = view_.device_place(place);
    if (!(std::abs(p.x) < farthest_pixel && std::abs(p.y) < farthest_pixel)) {
        return;
    }
    rendition_->marker.color = paint.color;
    rendition_->marker.index = index_of(paint.color);
    rendition_->marker.symbol = paint.symbol;
    rendition_->marker.size = paint.size;
    const VT_DCI_Point point = pixel_of(p);
    VD_Draw_2DI_Polymarker(renderer_, *rendition_, 1, &point);
}

} // namespace vorna::drawing::map
