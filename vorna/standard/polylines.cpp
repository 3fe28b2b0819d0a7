// Standard polylines.
//
// Float forms are rounded and drawn through the slots of the integer forms. Integer forms that renderers hand over are made
// plain: a wide line becomes rows of pixels, each drawn as a level line of one pixel; a dashed line becomes its dashes. Plain
// lines only come here when the renderer lacks the slot, and are drawn as dots, or when device lines reach too far, and are
// clipped. So no call returns to where it came from.
#include <algorithm>
#include <cmath>

#include "host/attributes.h"
#include "host/segment_clip.h"
#include "vorna/draw.h"
#include "vorna/drawn_rows.h"
#include "vorna/standard/conversion.h"
#include "vorna/standard/dashes.h"
#include "vorna/standard/lines.h"
#include "vorna/standard/merging.h"
#include "vorna/standard/standard_call.h"
#include "vorna/standard/stroke.h"

namespace vorna {

namespace {

// Integer points and their colours.
struct Line {
    std::int32_t count;
    const VT_DCI_Point* points;
    Stroke_Colors shading;
    const VT_RGB32* colors; // null = that of the rendition
    bool single_color;
    bool has_types = colors == nullptr; // as in the slots, lines with colours have no line types; arcs do
    bool is_dotted = false;             // drawn dot by dot
    bool is_device = false;             // of the DCI form

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

void draw_dots(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line);

// Draws through the slot; points may lie anywhere.
void draw_through_slot(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line) {
    if (line.is_dotted) {
        draw_dots(renderer, rendition, line);
    } else if (line.shading == Stroke_Colors::per_point) {
        VD_Draw_2DI_Gouraud_Polyline(renderer, rendition, line.count, line.points, line.colors);
    } else if (line.colors) {
        VD_Draw_2DI_Colorized_Polyline(renderer, rendition, line.count, line.points, line.colors, line.single_color);
    } else {
        VD_Draw_2DI_Polyline(renderer, rendition, line.count, line.points);
    }
}

// Draws a line of one pixel as dots along the longer axis of each segment. A vertex belongs to the segment that begins there.
void draw_dots(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line) {
    const VT_Int_Rectangle visible = in_drawn_rows(renderer, visible_rectangle(renderer, rendition));
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
        const Segment_Part part = part_near(visible, 1, from, VT_Vector_D{to.x - from.x, to.y - from.y, 0});
        if (steps == 0 || !part.is_visible()) {
            continue;
        }
        const double end = std::min(steps, std::ceil(part.leaving * steps) + 1);
        for (double i = std::floor(part.entering * steps); i < end; ++i) {
            const double t = i / steps;
            dot(from.x + t * (to.x - from.x), from.y + t * (to.y - from.y), from.z + t * (to.z - from.z),
                line.shading == Stroke_Colors::per_point ? mixed(line.color(s), line.color(s + 1), t) : line.color(s));
        }
    }
    // The last pixel of a line is not drawn at a depth beyond those of the buffer, whatever the depth test.
    const VT_DCI_Point& last = line.points[line.count - 1];
    if (last.z <= farthest_depth || !has_depth_in_force(renderer, rendition)) {
        dot(last.x, last.y, last.z, line.color(line.shading == Stroke_Colors::per_point ? line.count - 1 : line.count - 2));
    }
}

// Device lines that the slot does not accept are clipped to the window.
void draw_plain(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line) {
    if (!line.is_device || Points_Near_Window::admits(renderer, rendition, line.count, line.points)) {
        draw_dots(renderer, rendition, line);
        return;
    }
    const VT_Reference<VT_Rendition> cut = copy_of(rendition);
    cut->clip.hard_clip = window_rectangle(renderer.current_renderer_options());
    draw_through_slot(renderer, *cut, line);
}

// Draws runs of covered pixels: fully covered ones through the line slots, the edges of smoothed lines through the triangle
// slots, which blend in every 32-bit case.
class Run_Drawing {
public:
    Run_Drawing(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line)
        : renderer_(renderer), line_(line), plain_(plain_copy(rendition)), own_color_(rendition.line.color),
          blends_(renderer.current_renderer_options().alpha_blending()),
          has_end_(line.shading == Stroke_Colors::per_point || line.is_dotted || !has_depth_in_force(renderer, rendition)) {
        plain_->line.flags &= ~line_flag::smoothed;
        plain_->face.pattern = face_pattern::solid;
        plain_->face.flags = face_flag::translucent;
        plain_->face.mode = plain_->line.mode;
    }

    void operator()(const Stroke_Run& run) const {
        if (run.coverage < 1) {
            draw_edge(run);
            return;
        }
        const VT_DCI_Point points[2] = {{run.first, run.y, nearest_coordinate(run.first_depth)},
                                        {run.last, run.y, nearest_coordinate(run.last_depth)}};
        const VT_RGB32 colors[2] = {run.first_color, run.last_color};
        if (has_end_) {
            Line plain = line_;
            plain.count = 2;
            plain.points = points;
            plain.colors = line_.colors ? colors : nullptr;
            plain.single_color = true;
            draw_through_slot(renderer_, *plain_, plain);
        } else {
            draw_level_line(renderer_, *plain_, points[0], points[1], {colors, line_.colors ? 1U : 0U});
        }
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
    bool has_end_; // the last pixel is drawn as that of a line of one pixel
};

// Whether renderers would smooth a line of one pixel: 32-bit colours, no depth, no merging.
bool draws_smoothed(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    return (rendition.line.flags & line_flag::smoothed) && options.color_system() == 1 &&
           !has_depth_in_force(renderer, rendition) && !merges(renderer, rendition.line.mode);
}

void draw_paths(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line,
                const std::vector<Stroke_Path>& paths, const VT_Int_Rectangle& clip) {
    const VT_Line_Attributes& attributes = rendition.line;
    if (attributes.weight > 1) {
        const Stroke_Pen pen{attributes.weight,
                             attributes.cap,
                             attributes.join,
                             line.shading,
                             has_depth_in_force(renderer, rendition),
                             draws_smoothed(renderer, rendition)};
        const VT_Int_Rectangle rows = in_drawn_rows(renderer, clip);
        if (!is_empty(rows)) {
            fill_strokes(paths, pen, rows, Run_Drawing(renderer, rendition, line));
        }
        return;
    }
    const VT_Reference<VT_Rendition> plain = plain_copy(rendition);
    std::vector<VT_RGB32> colors;
    for (const Stroke_Path& path : paths) {
        const auto count = static_cast<std::int32_t>(path.size());
        Scratch<VT_DCI_Point> points = rounded_points(count, path.data());
        colors.clear();
        for (const Stroke_Point& point : path) {
            colors.push_back(point.color);
        }
        draw_through_slot(
            renderer, *plain,
            {count, points.data(), line.shading, line.colors ? colors.data() : nullptr, false, false, line.is_dotted});
    }
}

// Draws the casing and the line over it, as the slots of one colour do.
void draw_cased(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Line& line) {
    const VT_Line_Type& type = *rendition.line.line_types->types.front();
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
    const bool is_typed = line.has_types && has_line_types(attributes);
    if (drawn_by_renderer(attributes) && !is_typed) {
        draw_plain(renderer, rendition, line);
        return;
    }
    if (is_typed && !line.colors && is_cased(attributes)) {
        draw_cased(renderer, rendition, line);
        return;
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
    const double margin = is_thin ? 2 : 2.0 * attributes.weight + 2; // the reach of a miter
    if (is_typed) {
        draw_paths(renderer, rendition, line, cut_by_line_types(path, *attributes.line_types, clip, margin, is_thin), clip);
    } else if (attributes.style != line_style::solid) {
        const Dash_Pattern pattern(attributes.style, attributes.weight);
        draw_paths(renderer, rendition, line, cut_into_dashes(path, pattern, line.shading, clip, margin, is_thin), clip);
    } else {
        draw_paths(renderer, rendition, line, {path}, clip);
    }
}

enum class Form { cut, device };

// A call of one of the integer forms.
struct Integer_Call {
    Standard_Call call;
    VT_Renderer_Data& renderer;
    const VT_Rendition& rendition;
    Form form;

    Integer_Call(VT_Renderer_Data& of, const VT_Rendition& with, Form in, const char* name)
        : call(of, name), renderer(of), rendition(with), form(in) {}
    void flat(std::int32_t count, const VT_DCI_Point* points) const { draw({count, points, Stroke_Colors::one, nullptr, true}); }
    void colorized(std::int32_t count, const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) const {
        const bool varies = colors && !single_color;
        draw({count, points, varies ? Stroke_Colors::per_segment : Stroke_Colors::one, colors, single_color});
    }
    void gouraud(std::int32_t count, const VT_DCI_Point* points, const VT_RGB32* colors) const {
        draw({count, points, colors ? Stroke_Colors::per_point : Stroke_Colors::one, colors, false});
    }

private:
    void draw(Line line) const {
        line.is_device = form == Form::device;
        draw_line(renderer, rendition, line);
    }
};

} // namespace

// In 32-bit colours the slots for one colour draw arcs. The slots for given colours have no line types, and for palette indices
// without depth they ignore clip regions; dots do not.
void draw_arc(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
              const VT_RGB32* color) {
    if (color && renderer.current_renderer_options().color_system() != 1) {
        const bool is_dotted = rendition.clip.complex_clip && !has_depth_in_force(renderer, rendition);
        if (is_dotted || has_line_types(rendition.line)) {
            draw_line(renderer, rendition, {count, points, Stroke_Colors::one, color, true, true, is_dotted});
        } else {
            VD_Draw_2DI_Colorized_Polyline(renderer, rendition, count, points, color, true);
        }
        return;
    }
    const VT_Reference<VT_Rendition> colored = copy_of(rendition);
    colored->line.color = color ? *color : rendition.line.color;
    VD_Draw_2DI_Polyline(renderer, *colored, count, points);
}

// The line is one pixel longer and ends there at a depth that no depth test passes.
void draw_level_line(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start,
                     const VT_DCI_Point& end, std::span<const VT_RGB32> colors) {
    const VT_DCI_Point points[] = {start, end, {end.x + 1, end.y, end.z}, {end.x + 1, end.y, INT32_MAX}};
    if (colors.empty()) {
        VD_Draw_DCI_Polyline(renderer, rendition, 4, points);
    } else {
        VD_Draw_DCI_Colorized_Polyline(renderer, rendition, 4, points, colors.data(), true);
    }
}

void draw_level_line(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::vector<VT_DCI_Point> pixels,
                     std::vector<VT_RGB32> colors) {
    const VT_DCI_Point last = pixels.back();
    pixels.insert(pixels.end(), {{last.x + 1, last.y, last.z}, {last.x + 1, last.y, INT32_MAX}});
    colors.push_back(colors.back());
    VD_Draw_DCI_Colorized_Polyline(renderer, rendition, static_cast<std::int32_t>(pixels.size()), pixels.data(), colors.data(),
                                   false);
}

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
    const vorna::Integer_Call call(renderer, rendition, vorna::Form::cut, "VD_Standard_Draw_2DI_Polyline");
    call.flat(count, points);
}

void VD_Standard_Draw_DCI_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_DCI_Point* points) {
    const vorna::Integer_Call call(renderer, rendition, vorna::Form::device, "VD_Standard_Draw_DCI_Polyline");
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
    const vorna::Integer_Call call(renderer, rendition, vorna::Form::cut, "VD_Standard_Draw_2DI_Colorized_Polyline");
    call.colorized(count, points, colors, single_color);
}

void VD_Standard_Draw_DCI_Colorized_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                             const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Integer_Call call(renderer, rendition, vorna::Form::device, "VD_Standard_Draw_DCI_Colorized_Polyline");
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
    const vorna::Integer_Call call(renderer, rendition, vorna::Form::cut, "VD_Standard_Draw_2DI_Gouraud_Polyline");
    call.gouraud(count, points, colors);
}

void VD_Standard_Draw_DCI_Gouraud_Polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                           const VT_DCI_Point* points, const VT_RGB32* colors) {
    const vorna::Integer_Call call(renderer, rendition, vorna::Form::device, "VD_Standard_Draw_DCI_Gouraud_Polyline");
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
