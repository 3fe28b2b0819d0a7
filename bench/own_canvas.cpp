// The renderer as an application uses it: loaded as a module, drawing through its slots.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "bench/canvas.h"
#include "renderer/host/rendition.h"
#include "vorna/draw.h"

namespace bench {

namespace {

// So many that a look at the outline for every span would show.
constexpr std::int32_t clip_points = 2000;

constexpr VT_Int_Rectangle whole_window{0, window_size.x - 1, 0, window_size.y - 1};

class Own_Canvas final : public Canvas {
public:
    Own_Canvas(const vorna::Module& module, const Surface& surface, const Scene& scene)
        : surface_(surface), scene_(scene), renderer_(module.create_renderer(*prototype_)) {
        VT_Renderer_Options& options = renderer_->current_options;
        options.set_window_size(window_size);
        options.set_color_system(surface.palette ? 0 : 1);
        options.set_buffer_depth(surface.depth ? 16 : 0);
        options.set_alpha_blending(surface.alpha);
        renderer_->requested_table.find("Use Mask")->set(surface.clip.has_value());
        renderer_->establish_all();
        rendition_->clip.hard_clip = whole_window;
        rendition_->clip.depth_test = surface.depth;
        rendition_->window.rectangle = whole_window;
        rendition_->window.color = {255, 255, 255, 255};
        rendition_->window.index = 255;
        rendition_->set_color({200, 100, 50, 255});
        if (surface.shading == Shading::textured) {
            rendition_->face.material = noise_material();
        }
        if (surface.clip) {
            rendition_->clip.complex_clip = new VT_Contour_Set({surface.clip->outline(clip_points)});
        }
    }

    void clear_color() override { VD_Draw_Window(*renderer_, *rendition_); }
    void clear_depth() override { VD_Clear_Depth_Rectangle(*renderer_, *rendition_); }

    void draw() override {
        renderer_->begin_picture_all();
        scene_.for_each_strip([this](const Strip& strip) { draw(strip); });
        if (!scene_.polygon.empty()) {
            VD_Draw_2D_Polygon(*renderer_, *rendition_, static_cast<std::int32_t>(scene_.polygon.size()), scene_.polygon.data(),
                               nullptr);
        }
        renderer_->end_picture_all();
    }

    void finish() override {}

    std::vector<bool> painted_pixels() override {
        const VT_Option* option = renderer_->current_table.find("Color Buffer");
        const auto* buffer = option ? option->as_object<Frame_Buffer>() : nullptr;
        if (!buffer) {
            throw std::runtime_error("the renderer has no colour buffer");
        }
        const int pixel_bytes = surface_.palette ? 1 : 4;
        std::vector<bool> painted;
        for (std::int32_t row = 0; row < window_size.y; ++row) {
            const std::uint8_t* pixel = buffer->rows[row];
            for (std::int32_t column = 0; column < window_size.x; ++column, pixel += pixel_bytes) {
                painted.push_back(std::any_of(pixel, pixel + pixel_bytes, [](std::uint8_t byte) { return byte != 255; }));
            }
        }
        return painted;
    }

private:
    static VT_Reference<const VT_Basic_Material> noise_material() {
        const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
        const VT_Reference<VT_Shared_Image> image(
            new VT_Shared_Image(texture_side, texture_side, Buffer_Format::rgb32, 4 * texture_side, nullptr, false, true));
        const std::vector<VT_RGB32> texels = noise_texels();
        std::memcpy(image->row(0), texels.data(), texels.size() * sizeof texels[0]);
        material->texture = image;
        return material;
    }

    void draw(const Strip& strip) {
        switch (surface_.shading) {
        case Shading::flat:
            VD_Draw_DCI_Colorized_Polytriangle(*renderer_, *rendition_, strip.length, strip.points, strip.colors + 2, false);
            break;
        case Shading::gouraud:
            VD_Draw_DCI_Gouraud_Polytriangle(*renderer_, *rendition_, strip.length, strip.points, strip.colors);
            break;
        case Shading::textured:
            VD_Draw_DCI_Textured_Polytriangle(*renderer_, *rendition_, strip.length, strip.points, strip.colors,
                                              &strip.texture_points->u, 2, nullptr, nullptr);
            break;
        }
    }

    Surface surface_;
    const Scene& scene_;
    VT_Reference<VT_Renderer_Data> prototype_{new VT_Renderer_Data};
    VT_Reference<VT_Rendition> rendition_{new VT_Rendition};
    vorna::Module::Renderer renderer_;
};

} // namespace

std::unique_ptr<Canvas> make_own_canvas(const vorna::Module& module, const Surface& surface, const Scene& scene) {
    return std::make_unique<Own_Canvas>(module, surface, scene);
}

} // namespace bench
