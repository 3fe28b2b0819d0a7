// Painting the window and clearing its depth. VD_Span_DC_Rectangle draws patterns as rows of an image, because only images are
// stored unchanged; VD_Standard_Draw_Window calls it. VD_Standard_Clear_Depth_Rectangle calls the slot that writes depth.
#include <limits>
#include <vector>

#include "vorna/draw.h"
#include "vorna/standard/drawing_area.h"
#include "vorna/standard/faces.h"
#include "vorna/standard/pattern.h"
#include "vorna/standard/standard_call.h"

namespace {

// A window is painted without clip region, depth test, merging and blending.
class Window_Painter {
public:
    Window_Painter(VT_Renderer_Data& renderer, const VT_Window_Attributes& window, const VT_Int_Rectangle& rectangle)
        : renderer_(renderer), has_colors_(renderer.current_renderer_options().color_system() == 1), paint_(new VT_Rendition) {
        const auto width = static_cast<std::size_t>(rectangle.right - rectangle.left) + 1;
        (has_colors_ ? colors_.assign(width, window.color) : indices_.assign(width, window.index));
        paint_->clip.hard_clip = rectangle;
        paint_->clip.depth_test = false;
    }

    void draw(std::int32_t row, std::int32_t first, std::int32_t last) const {
        const VT_DCI_Point start{first, row, 0};
        const VT_DCI_Point end{last, row, 0};
        if (has_colors_) {
            VD_Draw_DCI_RGB32_Image(renderer_, *paint_, &start, &end, 0, colors_.data(), 0, nullptr);
        } else {
            VD_Draw_DCI_Index8_Image(renderer_, *paint_, &start, &end, 0, indices_.data());
        }
    }

private:
    VT_Renderer_Data& renderer_;
    bool has_colors_;
    VT_Reference<VT_Rendition> paint_;
    std::vector<VT_RGB32> colors_; // at least as many as a row has pixels
    std::vector<std::uint8_t> indices_;
};

} // namespace

void VD_Span_DC_Rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t x_min, std::int32_t x_max,
                          std::int32_t y_min, std::int32_t y_max) {
    const vorna::Standard_Call call(renderer, "VD_Span_DC_Rectangle");
    const bool is_hatched = rendition.window.fill > vorna::face_pattern::last_drawn_by_renderers;
    const VT_Reference<const VT_Pattern_Bitmap> bitmap = is_hatched ? vorna::hatch(rendition.window.fill) : rendition.face.bitmap;
    const vorna::Pattern is_set(is_hatched ? vorna::face_pattern::bitmap : rendition.window.fill, bitmap.get());
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    const VT_Int_Pair origin = vorna::window_origin(options);
    const VT_Int_Rectangle rectangle = vorna::cut_to_window({x_min, x_max, y_min, y_max}, options);
    if (!is_set.has_cells() || vorna::is_empty(rectangle)) {
        return;
    }
    const Window_Painter painter(renderer, rendition.window, rectangle);
    for (std::int32_t y = rectangle.bottom; y <= rectangle.top; ++y) {
        for (std::int32_t x = rectangle.left; x <= rectangle.right; ++x) {
            const std::int32_t first = x;
            while (x <= rectangle.right && is_set(x - origin.x, y - origin.y)) {
                ++x;
            }
            if (first < x) {
                painter.draw(y, first, x - 1);
            }
        }
    }
}

void VD_Standard_Draw_Window(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_Window");
    const VT_Int_Rectangle& rectangle = rendition.window.rectangle;
    VD_Span_DC_Rectangle(renderer, rendition, rectangle.left, rectangle.right, rectangle.bottom, rectangle.top);
}

void VD_Standard_Clear_Depth_Rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Clear_Depth_Rectangle");
    const VT_Int_Rectangle rectangle = vorna::cut_to_window(rendition.window.rectangle, renderer.current_renderer_options());
    if (vorna::is_empty(rectangle)) {
        return;
    }
    const std::vector<std::uint16_t> farthest(static_cast<std::size_t>(rectangle.right - rectangle.left + 1),
                                              std::numeric_limits<std::uint16_t>::max());
    const VT_DCI_Point top_left{rectangle.left, rectangle.top, 0};
    const VT_DCI_Point bottom_right{rectangle.right, rectangle.bottom, 0};
    // With a stride of 0 all rows are the same one.
    VD_Write_Depth_Rectangle(renderer, rendition, &top_left, &bottom_right, 0, farthest.data());
}
