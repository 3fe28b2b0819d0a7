// Standard polylines.
//
// Float forms become integer ones and go back to the slots. Integer forms that renderers hand over are made plain: a wide line
// becomes rows of pixels, each drawn as a level line of one pixel; a dashed line becomes its dashes. Plain lines come back only
// from renderers that lack the slot; they are drawn dot by dot. So nothing is ever handed round in a circle.
#include <algorithm>
#include <cmath>

#include "vorna/draw.h"
#include "vorna/standard/conversion.h"
#include "vorna/standard/dashes.h"
#include "vorna/standard/standard_call.h"
#include "vorna/standard/stroke.h"

namespace vorna {

namespace {

// Integer points and their colours.
struct Line {
    std::int32_t count;
    const VT_DCI_Point* points;
    Stroke_Colors shading;
    const VT_RGB32* colors; // null = the rendition's own
    bool single_color;

    VT_RGB32 color(std::int32_t i) const noexcept { return colors ? colors[single_color ? 0 : i] : VT_RGB32{}; }
};

VT_Reference<VT_Rendition> copy_of(const VT_Rendition& rendition) {
    return static_cast<VT_Rendition*>(rendition.clone());
}

VT_Reference<VT_Rendition> plain_copy(const VT_Rendition& rendition) {
    VT_Reference<VT_Rendition> plain = copy_of(rendition);
    plain->line.weight = 1;
    plain->line.style = line_style::solid;
    plain->line.line_types = VT_Line_Type_Set::None;
    return plain;
}

// Through the slot; the points may reach anywhere.
void draw_through_slot(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line) {
    if (line.shading == Stroke_Colors::per_point) {
        VD_Draw_2DI_Gouraud_Polyline(renderer, rendition, line.count, line.points, line.colors);
    } else if (line.colors) {
        VD_Draw_2DI_Colorized_Polyline(renderer, rendition, line.count, line.points, line.colors, line.single_color);
    } else {
        VD_Draw_2DI_Polyline(renderer, rendition, line.count, line.points);
    }
}

// A line of one pixel, dot by dot along the longer side of each segment. A vertex belongs to the segment that begins there.
void draw_dots(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line) {
    const VT_Int_Rectangle visible = visible_rectangle(renderer, rendition);
    if (is_empty(visible)) {
        return;
    }
    const auto dot = [&](double x, double y, double z, VT_RGB32 color) {
        const VT_DCI_Point point{nearest_coordinate(x), nearest_coordinate(y), nearest_coordinate(z)};
        if (contains(visible, point.x, point.y)) {
            VD_Draw_DCI_Dot(renderer, rendition, &point, line.colors ? &color : nullptr);
        }
    };
    for (std::int32_t s = 0; s + 1 < line.count; ++s) {
        const VT_Point_D from{double(line.points[s].x), double(line.points[s].y), double(line.points[s].z)};
        const VT_Point_D to{double(line.points[s + 1].x), double(line.points[s + 1].y), double(line.points[s + 1].z)};
        const double steps = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
        double first, last;
        if (steps == 0 || !part_near(visible, 1, from, to, first, last)) {
            continue;
        }
        const double end = std::min(steps, std::ceil(last * steps) + 1);
        for (double i = std::floor(first * steps); i < end; ++i) {
            const double t = i / steps;
            dot(from.x + t * (to.x - from.x), from.y + t * (to.y - from.y), from.z + t * (to.z - from.z),
                line.shading == Stroke_Colors::per_point ? mixed(line.color(s), line.color(s + 1), t) : line.color(s));
        }
    }
    const VT_DCI_Point& last = line.points[line.count - 1];
    dot(last.x, last.y, last.z, line.color(line.shading == Stroke_Colors::per_point ? line.count - 1 : line.count - 2));
}

// Draws what covers pixels: whole runs through the line slots, edges of smoothed lines through the triangle slot, which blends
// in every 32-bit case.
class Run_Drawing {
public:
    Run_Drawing(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line)
        : renderer_(renderer), line_(line), plain_(plain_copy(rendition)), own_color_(rendition.line.color),
          blends_(renderer.current_renderer_options().alpha_blending()) {
        plain_->line.flags &= ~line_flag::smoothed;
        plain_->face.pattern = face_pattern::solid;
        plain_->face.flags = face_flag::translucent;
    }

    void operator()(const Stroke_Run& run) const {
        if (run.coverage < 1) {
            draw_edge(run);
            return;
        }
        const VT_DCI_Point points[2] = {{run.first, run.y, nearest_coordinate(run.first_depth)},
                                        {run.last, run.y, nearest_coordinate(run.last_depth)}};
        const VT_RGB32 colors[2] = {run.first_color, run.last_color};
        draw_through_slot(renderer_, *plain_, {2, points, line_.shading, line_.colors ? colors : nullptr, true});
    }

private:
    void draw_edge(const Stroke_Run& run) const {
        VT_RGB32 color = line_.colors ? run.first_color : own_color_;
        color.alpha = static_cast<std::uint8_t>(std::lround((blends_ ? color.alpha : 255) * run.coverage));
        plain_->face.color = color;
        // Triangles leave out their last column and row.
        const VT_DCI_Point pixel[4] = {
            {run.first, run.y, 0}, {run.first + 1, run.y, 0}, {run.first, run.y + 1, 0}, {run.first + 1, run.y + 1, 0}};
        VD_Draw_2DI_Polytriangle(renderer_, *plain_, 4, pixel);
    }

    VT_Renderer_Data& renderer_;
    const Line& line_;
    VT_Reference<VT_Rendition> plain_;
    VT_RGB32 own_color_;
    bool blends_;
};

// Where renderers smooth lines of one pixel: 32-bit colour, no depth in force, no merging.
bool draws_smoothed(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    return (rendition.line.flags & line_flag::smoothed) && options.color_system() == 1 &&
           (options.buffer_depth() < 1 || !rendition.clip.depth_test) && rendition.line.mode != merge_drawing_mode;
}

void draw_paths(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line,
                const std::vector<Stroke_Path>& paths, const VT_Int_Rectangle& clip) {
    const VT_Line_Attributes& attributes = rendition.line;
    if (attributes.weight > 1) {
        const bool has_depth = renderer.current_renderer_options().buffer_depth() > 0 && rendition.clip.depth_test;
        const Stroke_Pen pen{attributes.weight, attributes.cap, attributes.join,
                             line.shading,      has_depth,      draws_smoothed(renderer, rendition)};
        fill_strokes(paths, pen, clip, Run_Drawing(renderer, rendition, line));
        return;
    }
    const VT_Reference<VT_Rendition> plain = plain_copy(rendition);
    std::vector<VT_RGB32> colors;
    for (const Stroke_Path& path : paths) {
        const auto count = static_cast<std::int32_t>(path.size());
        const std::vector<VT_DCI_Point> points = rounded_points(count, path.data());
        colors.clear();
        for (const Stroke_Point& point : path) {
            colors.push_back(point.color);
        }
        draw_through_slot(renderer, *plain, {count, points.data(), line.shading, line.colors ? colors.data() : nullptr, false});
    }
}

// Line types are for lines in the rendition's colour, as in the slots.
bool has_line_types(const VT_Rendition& rendition, const Line& line) noexcept {
    return !line.colors && rendition.line.line_types && !(rendition.line.line_types == VT_Line_Type_Set::None);
}

// The type that makes the line cased, or null.
VT_Reference<const VT_Line_Type> casing_of(const VT_Rendition& rendition) noexcept {
    const auto& types = rendition.line.line_types->types;
    return !types.empty() && types.front() && types.front()->kind == 7 ? types.front() : nullptr;
}

// The same in every form, which is what slots of one colour make of it too.
void draw_cased(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Line_Type& type, const Line& line) {
    const VT_Reference<VT_Rendition> pass = copy_of(rendition);
    const std::int32_t weight = rendition.line.weight;
    const double casing = weight < 2 ? std::trunc(type.width * 2) + 2 : double(weight) + 5;
    pass->line.line_types = VT_Line_Type_Set::None;
    pass->line.weight = nearest_coordinate(casing);
    pass->line.color = type.color;
    pass->line.index = static_cast<std::uint8_t>(renderer.current_renderer_options().palette().closest_match(type.color, false));
    draw_through_slot(renderer, *pass, line);
    pass->line.weight = weight;
    pass->line.color = rendition.line.color;
    pass->line.index = rendition.line.index;
    draw_through_slot(renderer, *pass, line);
}

void draw_line(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line) {
    if (line.count < 2) {
        return;
    }
    const VT_Line_Attributes& attributes = rendition.line;
    const bool is_typed = has_line_types(rendition, line);
    if (attributes.weight <= 1 && attributes.style == line_style::solid && !is_typed) {
        draw_dots(renderer, rendition, line);
        return;
    }
    if (is_typed) {
        if (const VT_Reference<const VT_Line_Type> type = casing_of(rendition)) {
            draw_cased(renderer, rendition, *type, line);
            return;
        }
    }
    const VT_Int_Rectangle clip = visible_rectangle(renderer, rendition);
    if (is_empty(clip)) {
        return;
    }
    Stroke_Path path;
    for (std::int32_t i = 0; i < line.count; ++i) {
        const VT_DCI_Point& point = line.points[i];
        const bool has_color = line.shading == Stroke_Colors::per_point || i + 1 < line.count;
        path.push_back({double(point.x), double(point.y), double(point.z), line.color(has_color ? i : i - 1)});
    }
    const bool is_thin = attributes.weight <= 1;
    const double margin = is_thin ? 2 : 2.0 * attributes.weight + 2; // as far as a miter reaches
    if (is_typed) {
        draw_paths(renderer, rendition, line, cut_by_line_types(path, *attributes.line_types, clip, margin, is_thin), clip);
    } else if (attributes.style != line_style::solid) {
        const Dash_Pattern pattern(attributes.style, attributes.weight);
        draw_paths(renderer, rendition, line, cut_into_dashes(path, pattern, line.shading, clip, margin, is_thin), clip);
    } else {
        draw_paths(renderer, rendition, line, {path}, clip);
    }
}

// A call of one of the integer forms.
struct Integer_Call {
    Standard_Call call;
    VT_Renderer_Data& renderer;
    const VT_Rendition& rendition;

    Integer_Call(VT_Renderer_Data& of, const VT_Rendition& with, const char* name)
        : call(of, name), renderer(of), rendition(with) {}
    void flat(std::int32_t count, const VT_DCI_Point* points) const {
        draw_line(renderer, rendition, {count, points, Stroke_Colors::one, nullptr, true});
    }
    void colorized(std::int32_t count, const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) const {
        const bool varies = colors && !single_color;
        draw_line(renderer, rendition,
                  {count, points, varies ? Stroke_Colors::per_segment : Stroke_Colors::one, colors, single_color});
    }
    void gouraud(std::int32_t count, const VT_DCI_Point* points, const VT_RGB32* colors) const {
        draw_line(renderer, rendition, {count, points, colors ? Stroke_Colors::per_point : Stroke_Colors::one, colors, false});
    }
};

} // namespace

} // namespace vorna

void VD_Standard_Draw_2D_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                  const VT_Point* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_2D_Polyline");
    vorna::draw_rounded(VD_Draw_2DI_Polyline, renderer, rendition, count, points);
}

void VD_Standard_Draw_DC_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                  const VT_Point* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DC_Polyline");
    vorna::draw_rounded_inside(VD_Draw_DCI_Polyline, VD_Draw_2DI_Polyline, renderer, rendition, count, points);
}

void VD_Standard_Draw_2DI_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_DCI_Point* points) {
    const vorna::Integer_Call call(renderer, rendition, "VD_Standard_Draw_2DI_Polyline");
    call.flat(count, points);
}

void VD_Standard_Draw_DCI_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_DCI_Point* points) {
    const vorna::Integer_Call call(renderer, rendition, "VD_Standard_Draw_DCI_Polyline");
    call.flat(count, points);
}

void VD_Standard_Draw_3D_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                  const VT_Point_D* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_3D_Polyline");
    vorna::cut_3d_polyline(count, points, nullptr,
                           [&](std::int32_t, std::int32_t length, const VT_DCI_Point* piece, const VT_RGB32*) {
                               VD_Draw_2DI_Polyline(renderer, rendition, length, piece);
                           });
}

void VD_Standard_Draw_2D_Colorized_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                            const VT_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_2D_Colorized_Polyline");
    vorna::draw_rounded(VD_Draw_2DI_Colorized_Polyline, renderer, rendition, count, points, colors, single_color);
}

void VD_Standard_Draw_DC_Colorized_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                            const VT_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DC_Colorized_Polyline");
    vorna::draw_rounded_inside(VD_Draw_DCI_Colorized_Polyline, VD_Draw_2DI_Colorized_Polyline, renderer, rendition, count, points,
                               colors, single_color);
}

void VD_Standard_Draw_2DI_Colorized_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                             const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Integer_Call call(renderer, rendition, "VD_Standard_Draw_2DI_Colorized_Polyline");
    call.colorized(count, points, colors, single_color);
}

void VD_Standard_Draw_DCI_Colorized_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                             const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Integer_Call call(renderer, rendition, "VD_Standard_Draw_DCI_Colorized_Polyline");
    call.colorized(count, points, colors, single_color);
}

void VD_Standard_Draw_3D_Colorized_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                            const VT_Point_D* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_3D_Colorized_Polyline");
    vorna::cut_3d_polyline(count, points, nullptr,
                           [&](std::int32_t first, std::int32_t length, const VT_DCI_Point* piece, const VT_RGB32*) {
                               VD_Draw_2DI_Colorized_Polyline(renderer, rendition, length, piece,
                                                              colors && !single_color ? colors + first : colors, single_color);
                           });
}

void VD_Standard_Draw_2D_Gouraud_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                          const VT_Point* points, const VT_RGB32* colors) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_2D_Gouraud_Polyline");
    vorna::draw_rounded(VD_Draw_2DI_Gouraud_Polyline, renderer, rendition, count, points, colors);
}

void VD_Standard_Draw_DC_Gouraud_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                          const VT_Point* points, const VT_RGB32* colors) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DC_Gouraud_Polyline");
    vorna::draw_rounded_inside(VD_Draw_DCI_Gouraud_Polyline, VD_Draw_2DI_Gouraud_Polyline, renderer, rendition, count, points,
                               colors);
}

void VD_Standard_Draw_2DI_Gouraud_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                           const VT_DCI_Point* points, const VT_RGB32* colors) {
    const vorna::Integer_Call call(renderer, rendition, "VD_Standard_Draw_2DI_Gouraud_Polyline");
    call.gouraud(count, points, colors);
}

void VD_Standard_Draw_DCI_Gouraud_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                           const VT_DCI_Point* points, const VT_RGB32* colors) {
    const vorna::Integer_Call call(renderer, rendition, "VD_Standard_Draw_DCI_Gouraud_Polyline");
    call.gouraud(count, points, colors);
}

void VD_Standard_Draw_3D_Gouraud_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                          const VT_Point_D* points, const VT_RGB32* colors) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_3D_Gouraud_Polyline");
    vorna::cut_3d_polyline(count, points, colors,
                           [&](std::int32_t, std::int32_t length, const VT_DCI_Point* piece, const VT_RGB32* piece_colors) {
                               VD_Draw_2DI_Gouraud_Polyline(renderer, rendition, length, piece, piece_colors);
                           });
}
