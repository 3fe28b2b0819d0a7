// The renderer as an application uses it: loaded as a module, drawing through its slots.
#include <algorithm>
#include <stdexcept>

#include "bench/canvas.h"
#include "renderer/host/rendition.h"
#include "vorna/draw.h"

namespace bench {

namespace {

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
        renderer_->establish_all();
        rendition_->clip.hard_clip = whole_window;
        rendition_->clip.depth_test = surface.depth;
        rendition_->window.rectangle = whole_window;
        rendition_->window.color = {255, 255, 255, 255};
        rendition_->window.index = 255;
    }

    void clear_color() override { VD_Draw_Window(*renderer_, *rendition_); }
    void clear_depth() override { VD_Clear_Depth_Rectangle(*renderer_, *rendition_); }

    void draw() override {
        renderer_->begin_picture_all();
        if (surface_.shading == Shading::flat) {
            scene_.for_each_strip([this](std::int32_t count, const VT_DCI_Point* points, const VT_RGB32* colors) {
                VD_Draw_DCI_Colorized_Polytriangle(*renderer_, *rendition_, count, points, colors + 2, false);
            });
        } else {
            scene_.for_each_strip([this](std::int32_t count, const VT_DCI_Point* points, const VT_RGB32* colors) {
                VD_Draw_DCI_Gouraud_Polytriangle(*renderer_, *rendition_, count, points, colors);
            });
        }
        renderer_->end_picture_all();
    }

    void finish() override {}

    std::int64_t painted_pixels() override {
        const VT_Option* option = renderer_->current_table.find("Color Buffer");
        const auto* buffer = option ? option->as_object<Frame_Buffer>() : nullptr;
        if (!buffer) {
            throw std::runtime_error("the renderer has no colour buffer");
        }
        const int pixel_bytes = surface_.palette ? 1 : 4;
        std::int64_t painted = 0;
        for (std::int32_t row = 0; row < window_size.y; ++row) {
            const std::uint8_t* pixel = buffer->rows[row];
            for (std::int32_t column = 0; column < window_size.x; ++column, pixel += pixel_bytes) {
                painted += std::any_of(pixel, pixel + pixel_bytes, [](std::uint8_t byte) { return byte != 255; });
            }
        }
        return painted;
    }

private:
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
