// The renderer's side.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numbers>
#include <stdexcept>

#include "bench/canvas.h"
#include "bench/timing.h"
#include "vorna/canvas.h"
#include "vorna/draw.h"

namespace bench {

namespace {

// So many that a look at the outline for every span would show.
constexpr std::int32_t clip_points = 2000;

VT_Reference<const VT_Basic_Material> noise_material() {
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    const VT_Reference<VT_Shared_Image> image(
        new VT_Shared_Image(texture_side, texture_side, Buffer_Format::rgb32, 4 * texture_side, nullptr, false, true));
    const std::vector<VT_RGB32> texels = noise_texels();
    std::memcpy(image->row(0), texels.data(), texels.size() * sizeof texels[0]);
    material->texture = image;
    return material;
}

// As many as the peers have, else one.
unsigned thread_count() {
    const char* const count = std::getenv(peer_threads);
    return count ? static_cast<unsigned>(std::max(std::atoi(count), 1)) : 1;
}

VT_Reference<const VT_Line_Type_Set> dashes() {
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->lengths = {dash_length, gap_length};
    type->kinds = {1, -1};
    const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->types.push_back(type);
    return set;
}

class Own_Canvas final : public Canvas {
public:
    Own_Canvas(const vorna::Module& module, const Surface& surface, const Subject& subject)
        : surface_(surface), subject_(subject), canvas_(module, thread_count()), renderer_(canvas_.renderer()) {
        VT_Renderer_Options& options = canvas_.options();
        options.set_window_size(surface.size);
        options.set_color_system(surface.palette ? 0 : 1);
        options.set_buffer_depth(surface.depth ? 16 : 0);
        options.set_alpha_blending(surface.alpha);
        renderer_.requested_table.find("Use Mask")->set(surface.clip.has_value());
        if (surface.depth_blocks) {
            renderer_.requested_table.add(VT_Option("Depth Blocks", 0, true));
        }
        canvas_.establish();
        const VT_Int_Rectangle whole_window{0, surface.size.x - 1, 0, surface.size.y - 1};
        rendition_.clip.hard_clip = whole_window;
        rendition_.clip.depth_test = surface.depth;
        rendition_.window.rectangle = whole_window;
        rendition_.window.color = {255, 255, 255, 255};
        rendition_.window.index = 255;
        rendition_.set_color({200, 100, 50, 255});
        if (surface.clip) {
            rendition_.clip.complex_clip = new VT_Contour_Set({surface.clip->outline(clip_points)});
        }
        if (surface.shading == Shading::textured) {
            rendition_.face.material = noise_material();
        }
        rendition_.line.flags = surface.smoothed ? vorna::line_flag::smoothed : 0;
        if (const auto* scene = std::get_if<Scene>(&subject)) {
            convert(scene->points);
        } else if (const auto* lines = std::get_if<Lines>(&subject)) {
            convert(lines->points);
        }
        const auto* polylines = std::get_if<Polylines>(&subject);
        if (polylines && polylines->dashed) {
            rendition_.line.line_types = dashes();
        }
        if (std::holds_alternative<Image>(subject)) {
            rendition_.drawing_flags = surface.alpha ? vorna::drawing_flag::translucent : 0;
        }
    }

    void clear_color() override { VD_Draw_Window(renderer_, rendition_); }
    void clear_depth() override {
        if (surface_.depth) {
            VD_Clear_Depth_Rectangle(renderer_, rendition_);
        }
    }
    void draw() override {
        renderer_.begin_picture_all();
        std::visit([this](const auto& subject) { draw_all(subject); }, subject_);
        renderer_.end_picture_all();
    }
    void finish() override { canvas_.flush(); }

    std::vector<bool> painted_pixels() override {
        canvas_.flush();
        const VT_Option* option = renderer_.current_table.find("Color Buffer");
        const auto* buffer = option ? option->as_object<Frame_Buffer>() : nullptr;
        if (!buffer) {
            throw std::runtime_error("the renderer has no colour buffer");
        }
        const int pixel_bytes = surface_.palette ? 1 : 4;
        std::vector<bool> painted;
        for (std::int32_t row = 0; row < surface_.size.y; ++row) {
            const std::uint8_t* pixel = buffer->rows[row];
            for (std::int32_t column = 0; column < surface_.size.x; ++column, pixel += pixel_bytes) {
                painted.push_back(std::any_of(pixel, pixel + pixel_bytes, [](std::uint8_t byte) { return byte != 255; }));
            }
        }
        return painted;
    }

private:
    // The points of forms that do not take device points; nothing of this is timed.
    void convert(const std::vector<VT_DCI_Point>& points) {
        for (const VT_DCI_Point& point : points) {
            if (surface_.form == Form::dc || surface_.form == Form::plane) {
                float_points_.push_back({static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)});
            } else if (surface_.form == Form::space) {
                double_points_.push_back({1.0 * point.x, 1.0 * point.y, 1.0 * point.z});
            }
        }
    }

    void draw_all(const Scene& scene) {
        if (surface_.form == Form::dci) {
            scene.for_each_strip([this](const Strip& strip) { draw_strip(strip); });
        } else {
            draw_flat_strips(scene);
        }
        if (!scene.polygon.empty()) {
            VD_Draw_2D_Polygon(renderer_, rendition_, static_cast<std::int32_t>(scene.polygon.size()), scene.polygon.data(),
                               nullptr);
        }
    }

    void draw_strip(const Strip& strip) {
        switch (surface_.shading) {
        case Shading::flat:
            VD_Draw_DCI_Colorized_Polytriangle(renderer_, rendition_, strip.length, strip.points, strip.colors + 2, false);
            break;
        case Shading::gouraud:
            VD_Draw_DCI_Gouraud_Polytriangle(renderer_, rendition_, strip.length, strip.points, strip.colors);
            break;
        case Shading::textured:
            VD_Draw_DCI_Textured_Polytriangle(renderer_, rendition_, strip.length, strip.points, strip.colors,
                                              &strip.texture_points->u, 2, nullptr, nullptr);
            break;
        }
    }

    // Calls draw(slot, points) with the slot of the surface's form and the points as it takes them.
    void in_form(const std::vector<VT_DCI_Point>& points, const auto& draw, const auto& dci, const auto& dc, const auto& plane_di,
                 const auto& plane, const auto& space) {
        switch (surface_.form) {
        case Form::dci:
            return draw(dci, points);
        case Form::dc:
            return draw(dc, float_points_);
        case Form::plane_di:
            return draw(plane_di, points);
        case Form::plane:
            return draw(plane, float_points_);
        case Form::space:
            return draw(space, double_points_);
        }
    }

    void draw_flat_strips(const Scene& scene) {
        const auto draw = [&](const auto& slot, const auto& points) {
            scene.for_each_strip([&](const Strip& strip) {
                slot(renderer_, rendition_, strip.length, points.data() + (strip.points - scene.points.data()), strip.colors + 2,
                     false);
            });
        };
        in_form(scene.points, draw, VD_Draw_DCI_Colorized_Polytriangle, VD_Draw_DC_Colorized_Polytriangle,
                VD_Draw_2DI_Colorized_Polytriangle, VD_Draw_2D_Colorized_Polytriangle, VD_Draw_3D_Colorized_Polytriangle);
    }

    void draw_flat_lines(const Lines& lines) {
        // Every line is a polyline of its own: the points of one call would be joined.
        const auto draw = [&](const auto& slot, const auto& points) {
            for (std::size_t i = 0; i < points.size(); i += 2) {
                slot(renderer_, rendition_, 2, &points[i], &lines.colors[i], true);
            }
        };
        in_form(lines.points, draw, VD_Draw_DCI_Colorized_Polyline, VD_Draw_DC_Colorized_Polyline, VD_Draw_2DI_Colorized_Polyline,
                VD_Draw_2D_Colorized_Polyline, VD_Draw_3D_Colorized_Polyline);
    }

    void draw_all(const Lines& lines) {
        if (surface_.shading == Shading::flat) {
            draw_flat_lines(lines);
        } else {
            for (std::size_t i = 0; i < lines.points.size(); i += 2) {
                VD_Draw_DCI_Gouraud_Polyline(renderer_, rendition_, 2, &lines.points[i], &lines.colors[i]);
            }
        }
    }

    void draw_all(const Circles& circles) {
        for (std::size_t i = 0; i < circles.centers.size(); ++i) {
            const VT_DCI_Point radii{circles.radii[i], circles.radii[i], 0};
            const auto draw = [&](const auto& slot) {
                slot(renderer_, rendition_, &circles.centers[i], &radii, 0.0, 2 * std::numbers::pi, 0.0, &circles.colors[i]);
            };
            circles.filled ? draw(VD_Draw_DCI_Ellipse) : draw(VD_Draw_DCI_Elliptical_Arc);
        }
    }

    void draw_all(const Image& image) {
        const VT_DCI_Point start{image.place.x, image.place.y + image.size.y - 1, 0};
        const VT_DCI_Point end{image.place.x + image.size.x - 1, image.place.y, 0};
        VD_Draw_DCI_RGB32_Image(renderer_, rendition_, &start, &end, 4 * image.size.x, image.pixels.data(), 0, nullptr);
    }

    void draw_all(const Polylines& polylines) {
        const VT_DCI_Point* points = polylines.points.data();
        for (const std::int32_t length : polylines.lengths) {
            VD_Draw_2DI_Polyline(renderer_, rendition_, length, points);
            points += length;
        }
    }

    Surface surface_;
    const Subject& subject_;
    std::vector<VT_Point> float_points_;
    std::vector<VT_Point_D> double_points_;
    VT_Reference<VT_Rendition> rendition_holder_{new VT_Rendition};
    vorna::Canvas canvas_;
    VT_Renderer_Data& renderer_;
    VT_Rendition& rendition_ = *rendition_holder_;
};

} // namespace

std::unique_ptr<Canvas> make_own_canvas(const vorna::Module& module, const Surface& surface, const Subject& subject) {
    return std::make_unique<Own_Canvas>(module, surface, subject);
}

} // namespace bench
