// Standard polytriangles. Faces that renderers do not draw are replaced by faces that they draw, and go back to their slot:
// hatches as bitmaps, special shading as plain drawing, other textures as drawable ones. Faces that arrive here again are plain
// and are converted to the next form: floats are rounded, transformed points are cut and rounded, whole points are painted here.
// So no call repeats endlessly, whatever the slots contain.
#include <array>
#include <vector>

#include "host/attributes.h"
#include "host/clip.h"
#include "host/rounding.h"
#include "host/scratch.h"
#include "host/strip.h"
#include "host/texture.h"
#include "host/triangle_clipper.h"
#include "vorna/standard/conversion.h"
#include "vorna/standard/drawing_area.h"
#include "vorna/standard/faces.h"
#include "vorna/standard/standard_call.h"
#include "vorna/standard/strip_painter.h"
#include "vorna/standard/textures.h"

namespace {

using vorna::Strip;
using vorna::Strip_Kind;

VT_RGB32 modulated(VT_RGB32 a, VT_RGB32 b) noexcept {
    const auto product = [](int p, int q) { return static_cast<std::uint8_t>((p * q + 127) / 255); };
    return {product(a.blue, b.blue), product(a.green, b.green), product(a.red, b.red), product(a.alpha, b.alpha)};
}

// Draws through the slot again with a drawable texture; a face without texture is shaded in its colours.
template <class Form>
void draw_retextured(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<typename Form::Point>& strip) {
    const vorna::Padded_Texture texture = vorna::padded_texture(rendition.face, renderer.current_renderer_options().palette());
    const VT_Reference<VT_Rendition> changed(new VT_Rendition(rendition));
    Strip<typename Form::Point> changed_strip = strip;
    if (!texture.image) {
        std::vector<VT_RGB32> colors(strip.colors, strip.colors + strip.count);
        for (VT_RGB32& color : colors) {
            color = rendition.face.material ? modulated(color, rendition.face.material->color) : color;
        }
        changed->face.flags |= vorna::face_flag::translucent; // like textured faces
        changed_strip.kind = Strip_Kind::gouraud;
        changed_strip.colors = colors.data();
        Form::draw(renderer, *changed, changed_strip);
        return;
    }
    std::vector<VT_Parameter> parameters(2 * static_cast<std::size_t>(strip.count));
    vorna::set_texture_parameters(rendition.face, strip.count, strip.parameters, strip.parameter_width, parameters.data());
    for (std::size_t i = 0; i < parameters.size(); i += 2) {
        parameters[i] *= texture.u_scale;
        parameters[i + 1] *= texture.v_scale;
    }
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    material->texture = texture.image;
    changed->face.material = material;
    changed_strip.parameters = parameters.data();
    changed_strip.parameter_width = 2;
    Form::draw(renderer, *changed, changed_strip);
}

template <class Point> void round_points(const Strip<Point>& strip, VT_DCI_Point* whole) {
    for (std::int32_t i = 0; i < strip.count; ++i) {
        whole[i] = vorna::rounded_point(strip.points[i]);
    }
}

template <class Form> void draw_rounded(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_Point>& strip) {
    vorna::Scratch<VT_DCI_Point> points(strip.count);
    round_points(strip, points.data());
    Form::draw(renderer, rendition, strip.with(points.data()));
}

void draw_plain(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_Point>& strip, vorna::Form_2D) {
    draw_rounded<vorna::Form_2DI>(renderer, rendition, strip);
}

void draw_plain(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_Point>& strip, vorna::Form_DC) {
    draw_rounded<vorna::Form_DCI>(renderer, rendition, strip);
}

void draw_plain(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip, vorna::Form_2DI) {
    vorna::paint_strip(renderer, rendition, strip, vorna::Strip_Cut::triangles);
}

void draw_plain(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_DCI_Point>& strip, vorna::Form_DCI) {
    vorna::paint_strip(renderer, rendition, strip, vorna::Strip_Cut::pixels);
}

// Draws the part inside the rectangle of a triangle with coordinates beyond integers.
void draw_cut(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& rectangle,
              const Strip<VT_Point_D>& triangle) {
    if (triangle.kind == Strip_Kind::textured) {
        const vorna::Clipped_Texture cut(rectangle, triangle.points, triangle.colors, triangle.parameters,
                                         triangle.parameter_width);
        if (cut.polygon.count > 0) {
            vorna::Form_2DI::draw(renderer, rendition,
                                  {Strip_Kind::textured, cut.polygon.count, cut.polygon.points, cut.polygon.colors, false,
                                   cut.parameters, cut.width, nullptr, nullptr});
        }
        return;
    }
    std::array<VT_DCI_Point, vorna::Clipped_Polygon::most_vertices> points;
    std::array<VT_RGB32, vorna::Clipped_Polygon::most_vertices> colors;
    const bool of_points = triangle.kind == Strip_Kind::gouraud;
    Strip<VT_DCI_Point> piece = triangle.with(points.data());
    piece.count =
        VD_Preclip_2D_Triangle(rectangle, triangle.points, points.data(), of_points ? triangle.colors : nullptr, colors.data());
    piece.colors = of_points ? colors.data() : triangle.colors;
    piece.single_color = true; // all pieces have the colour of the triangle
    if (piece.count > 0) {
        vorna::Form_2DI::draw(renderer, rendition, piece);
    }
}

// Rounded points go to the slot that clips to the hard clip. Triangles with coordinates beyond integers are cut here.
void draw_plain(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<VT_Point_D>& strip, vorna::Form_3D) {
    constexpr std::int32_t guard = vorna::farthest_window_side;
    const VT_Int_Rectangle visible = vorna::visible_rectangle(renderer, rendition);
    if (vorna::is_empty(visible)) {
        return;
    }
    vorna::Scratch<VT_DCI_Point> points(strip.count);
    const Strip<VT_DCI_Point> whole = strip.with(points.data());
    if (vorna::round_plain_points(strip.count, strip.points, points.data())) {
        vorna::Form_2DI::draw(renderer, rendition, whole);
        return;
    }
    vorna::Scratch<std::uint16_t> outcodes(strip.count);
    const std::int32_t inside = VD_Clip({-guard, guard, -guard, guard}, strip.count, strip.points, outcodes.data());
    if (inside == 0) {
        return;
    }
    round_points(strip, points.data());
    if (inside == strip.count) {
        vorna::Form_2DI::draw(renderer, rendition, whole);
        return;
    }
    vorna::walk_strip(
        strip.count, vorna::placements_by(outcodes.data()),
        [&](std::int32_t first, std::int32_t length) { vorna::Form_2DI::draw(renderer, rendition, whole.part(first, length)); },
        [&](std::int32_t k) { draw_cut(renderer, rendition, visible, strip.part(k, 3)); });
}

template <class Form>
void draw_strip(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Strip<typename Form::Point>& strip) {
    if (strip.count < 3) {
        return;
    }
    if (!vorna::drawn_by_renderer(rendition.face)) {
        Form::draw(renderer, *vorna::with_plain_face(rendition), strip);
    } else if (strip.kind == Strip_Kind::textured && !vorna::drawable_texture(rendition.face)) {
        draw_retextured<Form>(renderer, rendition, strip);
    } else {
        draw_plain(renderer, rendition, strip, Form{});
    }
}

} // namespace

#define VT_STANDARD_FORM(form, point)                                                                                            \
    void VD_Standard_Draw_##form##_Polytriangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,   \
                                                const point* points) {                                                           \
        const vorna::Standard_Call call(renderer, "VD_Standard_Draw_" #form "_Polytriangle");                                    \
        draw_strip<vorna::Form_##form>(renderer, rendition, {Strip_Kind::flat, count, points});                                  \
    }                                                                                                                            \
    void VD_Standard_Draw_##form##_Colorized_Polytriangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition,             \
                                                          std::int32_t count, const point* points, const VT_RGB32* colors,       \
                                                          bool single_color) {                                                   \
        const vorna::Standard_Call call(renderer, "VD_Standard_Draw_" #form "_Colorized_Polytriangle");                          \
        draw_strip<vorna::Form_##form>(renderer, rendition, {Strip_Kind::colorized, count, points, colors, single_color});       \
    }                                                                                                                            \
    void VD_Standard_Draw_##form##_Gouraud_Polytriangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition,               \
                                                        std::int32_t count, const point* points, const VT_RGB32* colors) {       \
        const vorna::Standard_Call call(renderer, "VD_Standard_Draw_" #form "_Gouraud_Polytriangle");                            \
        draw_strip<vorna::Form_##form>(renderer, rendition, {Strip_Kind::gouraud, count, points, colors});                       \
    }                                                                                                                            \
    void VD_Standard_Draw_##form##_Textured_Polytriangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition,              \
                                                         std::int32_t count, const point* points, const VT_RGB32* colors,        \
                                                         const VT_Parameter* parameters, std::int32_t parameter_width,           \
                                                         const float* weights, const VT_Vector* normals) {                       \
        const vorna::Standard_Call call(renderer, "VD_Standard_Draw_" #form "_Textured_Polytriangle");                           \
        draw_strip<vorna::Form_##form>(                                                                                          \
            renderer, rendition,                                                                                                 \
            {Strip_Kind::textured, count, points, colors, false, parameters, parameter_width, weights, normals});                \
    }
VT_STANDARD_FORM(2D, VT_Point)
VT_STANDARD_FORM(DC, VT_Point)
VT_STANDARD_FORM(2DI, VT_DCI_Point)
VT_STANDARD_FORM(DCI, VT_DCI_Point)
VT_STANDARD_FORM(3D, VT_Point_D)
