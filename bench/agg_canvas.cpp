// The peer: AGG, drawing into pixels of 32 bits.
#include <agg_pixfmt_rgba.h>
#include <agg_rasterizer_outline_aa.h>
#include <agg_rasterizer_scanline_aa.h>
#include <agg_renderer_base.h>
#include <agg_renderer_outline_aa.h>
#include <agg_renderer_primitives.h>
#include <agg_renderer_scanline.h>
#include <agg_scanline_bin.h>
#include <agg_span_allocator.h>
#include <agg_span_gouraud_rgba.h>

#include "bench/memory_canvas.h"

namespace bench {

namespace {

using Pixels = agg::pixfmt_bgra32;
using Base = agg::renderer_base<Pixels>;
using Gouraud_Spans = agg::span_gouraud_rgba<agg::rgba8>;

agg::rgba8 color_of(VT_RGB32 color) {
    return {color.red, color.green, color.blue, color.alpha};
}

class Agg_Canvas final : public Memory_Canvas {
public:
    Agg_Canvas(const Surface& surface, const Subject& subject) : surface_(surface), subject_(subject) {
        if (const auto* image = std::get_if<Image>(&subject)) {
            source_pixels_ = image->pixels;
            source_.attach(reinterpret_cast<std::uint8_t*>(source_pixels_.data()), static_cast<unsigned>(image->size.x),
                           static_cast<unsigned>(image->size.y), 4 * image->size.x);
        }
        profile_.width(1.0);
    }

    void draw() override {
        std::visit([this](const auto& subject) { draw_all(subject); }, subject_);
    }

private:
    void draw_all(const Scene& scene) {
        scene.for_each_strip([this](const Strip& strip) {
            for (std::int32_t k = 0; k + 2 < strip.length; ++k) {
                draw_triangle(strip.points + k, strip.colors + k);
            }
        });
    }

    void draw_triangle(const VT_DCI_Point* points, const VT_RGB32* colors) {
        const auto x = [points](int i) -> double { return points[i].x; };
        const auto y = [points](int i) -> double { return from_top(points[i].y); };
        rasterizer_.reset();
        rasterizer_.move_to_d(x(0), y(0));
        rasterizer_.line_to_d(x(1), y(1));
        rasterizer_.line_to_d(x(2), y(2));
        if (surface_.shading == Shading::flat) {
            agg::render_scanlines_bin_solid(rasterizer_, scanline_, base_, color_of(colors[2]));
        } else {
            Gouraud_Spans spans(color_of(colors[0]), color_of(colors[1]), color_of(colors[2]), x(0), y(0), x(1), y(1), x(2),
                                y(2));
            spans.prepare();
            agg::render_scanlines_bin(rasterizer_, scanline_, base_, span_allocator_, spans);
        }
    }

    void draw_all(const Lines& lines) {
        for (std::size_t i = 0; i < lines.points.size(); i += 2) {
            const VT_DCI_Point from = lines.points[i], to = lines.points[i + 1];
            if (surface_.smoothed) {
                outlines_.color(color_of(lines.colors[i]));
                outline_rasterizer_.move_to_d(from.x + 0.5, from_top(from.y) + 0.5);
                outline_rasterizer_.line_to_d(to.x + 0.5, from_top(to.y) + 0.5);
                outline_rasterizer_.render(false);
            } else {
                primitives_.line_color(color_of(lines.colors[i]));
                primitives_.line(
                    agg::renderer_primitives<Base>::coord(from.x), agg::renderer_primitives<Base>::coord(from_top(from.y)),
                    agg::renderer_primitives<Base>::coord(to.x), agg::renderer_primitives<Base>::coord(from_top(to.y)), true);
            }
        }
    }

    void draw_all(const Circles& circles) {
        for (std::size_t i = 0; i < circles.centers.size(); ++i) {
            const VT_DCI_Point center = circles.centers[i];
            const std::int32_t radius = circles.radii[i];
            if (circles.filled) {
                primitives_.fill_color(color_of(circles.colors[i]));
                primitives_.solid_ellipse(center.x, from_top(center.y), radius, radius);
            } else {
                primitives_.line_color(color_of(circles.colors[i]));
                primitives_.ellipse(center.x, from_top(center.y), radius, radius);
            }
        }
    }

    void draw_all(const Image& image) {
        const int top = from_top(image.place.y + image.size.y - 1);
        if (surface_.alpha) {
            base_.blend_from(Pixels(source_), nullptr, image.place.x, top);
        } else {
            base_.copy_from(source_, nullptr, image.place.x, top);
        }
    }

    void draw_all(const Polylines&) {}

    Surface surface_;
    const Subject& subject_;
    std::vector<VT_RGB32> source_pixels_;
    agg::rendering_buffer source_;
    agg::rendering_buffer target_{reinterpret_cast<std::uint8_t*>(pixels()), static_cast<unsigned>(window_size.x),
                                  static_cast<unsigned>(window_size.y), bytes_per_row()};
    Pixels pixels_format_{target_};
    Base base_{pixels_format_};
    agg::renderer_primitives<Base> primitives_{base_};
    agg::rasterizer_scanline_aa<> rasterizer_;
    agg::scanline_bin scanline_;
    agg::span_allocator<agg::rgba8> span_allocator_;
    agg::line_profile_aa profile_;
    agg::renderer_outline_aa<Base> outlines_{base_, profile_};
    agg::rasterizer_outline_aa<agg::renderer_outline_aa<Base>> outline_rasterizer_{outlines_};
};

} // namespace

std::unique_ptr<Canvas> make_agg_canvas(const Surface& surface, const Subject& subject) {
    return std::make_unique<Agg_Canvas>(surface, subject);
}

} // namespace bench
