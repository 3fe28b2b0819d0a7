#include "bench/own_canvas.h"

#include <algorithm>
#include <stdexcept>

#include "vorna/draw.h"

namespace bench {

namespace {

// So many that a look at the outline for every span would show.
constexpr std::int32_t clip_points = 2000;

constexpr VT_Int_Rectangle whole_window{0, window_size.x - 1, 0, window_size.y - 1};

} // namespace

Own_Canvas::Own_Canvas(const vorna::Module& module, const Surface& surface)
    : surface_(surface), renderer_(module.create_renderer(*prototype_)) {
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
    if (surface.clip) {
        rendition_->clip.complex_clip = new VT_Contour_Set({surface.clip->outline(clip_points)});
    }
}

void Own_Canvas::clear_color() {
    VD_Draw_Window(*renderer_, *rendition_);
}

void Own_Canvas::clear_depth() {
    VD_Clear_Depth_Rectangle(*renderer_, *rendition_);
}

void Own_Canvas::draw() {
    renderer_->begin_picture_all();
    draw_scene();
    renderer_->end_picture_all();
}

std::vector<bool> Own_Canvas::painted_pixels() {
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

} // namespace bench
