// The renderer's side of lines, circles, images and polylines.
#include <numbers>

#include "bench/own_canvas.h"
#include "vorna/draw.h"

namespace bench {

namespace {

VT_Reference<const VT_Line_Type_Set> dashes() {
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->lengths = {dash_length, gap_length};
    type->kinds = {1, -1};
    const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->types.push_back(type);
    return set;
}

class Own_Primitive_Canvas final : public Own_Canvas {
public:
    Own_Primitive_Canvas(const vorna::Module& module, const Surface& surface, const Primitives& primitives)
        : Own_Canvas(module, surface), primitives_(primitives) {
        rendition().line.flags = surface.smoothed ? line_flag::smoothed : 0;
        rendition().drawing_flags = surface.alpha ? drawing_flag::translucent : 0;
        const auto* polylines = std::get_if<Polylines>(&primitives);
        if (polylines && polylines->dashed) {
            rendition().line.line_types = dashes();
        }
    }

private:
    void draw_scene() override {
        std::visit([this](const auto& primitives) { draw_all(primitives); }, primitives_);
    }

    void draw_all(const Lines& lines) {
        if (surface().plane) {
            draw_colorized(VD_Draw_2DI_Colorized_Polyline, lines);
        } else if (surface().shading == Shading::flat) {
            draw_colorized(VD_Draw_DCI_Colorized_Polyline, lines);
        } else {
            for (std::size_t i = 0; i < lines.points.size(); i += 2) {
                VD_Draw_DCI_Gouraud_Polyline(renderer(), rendition(), 2, &lines.points[i], &lines.colors[i]);
            }
        }
    }

    // Every line is a polyline of its own: the points of one call would be joined.
    void draw_colorized(const auto& slot, const Lines& lines) {
        for (std::size_t i = 0; i < lines.points.size(); i += 2) {
            slot(renderer(), rendition(), 2, &lines.points[i], &lines.colors[i], true);
        }
    }

    void draw_all(const Circles& circles) {
        const VT_DCI_Point radii{circles.radius, circles.radius, 0};
        for (std::size_t i = 0; i < circles.centers.size(); ++i) {
            const auto draw = [&](const auto& slot) {
                slot(renderer(), rendition(), &circles.centers[i], &radii, 0.0, 2 * std::numbers::pi, 0.0, &circles.colors[i]);
            };
            circles.filled ? draw(VD_Draw_DCI_Ellipse) : draw(VD_Draw_DCI_Elliptical_Arc);
        }
    }

    void draw_all(const Image& image) {
        const VT_DCI_Point start{image.place.x, image.place.y + image.size.y - 1, 0};
        const VT_DCI_Point end{image.place.x + image.size.x - 1, image.place.y, 0};
        VD_Draw_DCI_RGB32_Image(renderer(), rendition(), &start, &end, 4 * image.size.x, image.pixels.data(), 0, nullptr);
    }

    void draw_all(const Polylines& polylines) {
        const VT_DCI_Point* points = polylines.points.data();
        for (const std::int32_t length : polylines.lengths) {
            VD_Draw_2DI_Polyline(renderer(), rendition(), length, points);
            points += length;
        }
    }

    const Primitives& primitives_;
};

} // namespace

std::unique_ptr<Canvas> make_own_canvas(const vorna::Module& module, const Surface& surface, const Primitives& primitives) {
    return std::make_unique<Own_Primitive_Canvas>(module, surface, primitives);
}

} // namespace bench
