// The peer: cairo's image surface.
#include <numbers>
#include <stdexcept>

#include <cairo.h>

#include "bench/memory_canvas.h"

namespace bench {

namespace {

using Surface_Holder = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

Surface_Holder surface_on(std::uint32_t* pixels, VT_Int_Pair size, std::int32_t bytes_per_row, cairo_format_t format) {
    return {cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels), format, size.x, size.y, bytes_per_row),
            cairo_surface_destroy};
}

class Cairo_Canvas final : public Memory_Canvas {
public:
    Cairo_Canvas(const Surface& surface, const Subject& subject) : subject_(subject) {
        if (const auto* image = std::get_if<Image>(&subject)) {
            source_pixels_ = premultiplied(*image);
            source_ = surface_on(source_pixels_.data(), image->size, 4 * image->size.x,
                                 surface.alpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24);
        }
        cairo_set_antialias(cairo_.get(), surface.smoothed ? CAIRO_ANTIALIAS_FAST : CAIRO_ANTIALIAS_NONE);
        cairo_set_line_width(cairo_.get(), 1);
        cairo_set_line_cap(cairo_.get(), CAIRO_LINE_CAP_SQUARE);
        if (cairo_status(cairo_.get()) != CAIRO_STATUS_SUCCESS) {
            throw std::runtime_error(std::string("cairo: ") + cairo_status_to_string(cairo_status(cairo_.get())));
        }
    }

    void draw() override {
        std::visit([this](const auto& subject) { draw_all(subject); }, subject_);
    }
    void finish() override { cairo_surface_flush(target_.get()); }

private:
    void draw_all(const Scene& scene) {
        scene.for_each_strip([this](const Strip& strip) {
            for (std::int32_t k = 0; k + 2 < strip.length; ++k) {
                set_color(strip.colors[k + 2]);
                for (std::int32_t i = k; i < k + 3; ++i) {
                    cairo_line_to(cairo_.get(), strip.points[i].x, from_top(strip.points[i].y));
                }
                cairo_fill(cairo_.get());
            }
        });
    }

    void draw_all(const Lines& lines) {
        for (std::size_t i = 0; i < lines.points.size(); i += 2) {
            const VT_DCI_Point from = lines.points[i], to = lines.points[i + 1];
            set_color(lines.colors[i]);
            cairo_move_to(cairo_.get(), from.x + 0.5, from_top(from.y) + 0.5);
            cairo_line_to(cairo_.get(), to.x + 0.5, from_top(to.y) + 0.5);
            cairo_stroke(cairo_.get());
        }
    }

    // A filled circle reaches half a pixel beyond its radius, as an outline's band does.
    void draw_all(const Circles& circles) {
        for (std::size_t i = 0; i < circles.centers.size(); ++i) {
            const VT_DCI_Point center = circles.centers[i];
            set_color(circles.colors[i]);
            cairo_arc(cairo_.get(), center.x + 0.5, from_top(center.y) + 0.5, circles.radii[i] + (circles.filled ? 0.5 : 0.0), 0,
                      2 * std::numbers::pi);
            circles.filled ? cairo_fill(cairo_.get()) : cairo_stroke(cairo_.get());
        }
    }

    void draw_all(const Image& image) {
        cairo_set_source_surface(cairo_.get(), source_.get(), image.place.x, from_top(image.place.y + image.size.y - 1));
        cairo_paint(cairo_.get());
    }

    void draw_all(const Polylines&) {}

    void set_color(VT_RGB32 color) {
        cairo_set_source_rgb(cairo_.get(), color.red / 255.0, color.green / 255.0, color.blue / 255.0);
    }

    const Subject& subject_;
    std::vector<std::uint32_t> source_pixels_;
    Surface_Holder source_{nullptr, cairo_surface_destroy};
    Surface_Holder target_ = surface_on(pixels(), window_size, bytes_per_row(), CAIRO_FORMAT_RGB24);
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo_{cairo_create(target_.get()), cairo_destroy};
};

} // namespace

std::unique_ptr<Canvas> make_cairo_canvas(const Surface& surface, const Subject& subject) {
    return std::make_unique<Cairo_Canvas>(surface, subject);
}

} // namespace bench
