// Painting the window and clearing its depth. VD_Span_DC_Rectangle draws every pattern of cells, VD_Standard_Draw_Window through
// it, and VD_Standard_Clear_Depth_Rectangle clears through the slot that writes depth. Hatched windows draw nothing yet.
#include <algorithm>
#include <limits>
#include <vector>

#include "renderer/host/rendition.h"
#include "vorna/standard/standard_call.h"

namespace {

// The cells of a face pattern, by column and row of the window.
class Pattern {
public:
    Pattern(std::int32_t number, const VT_Pattern_Bitmap* bitmap) : number_(number), bitmap_(bitmap) {}

    bool is_drawn() const noexcept {
        if (number_ == face_pattern::bitmap) {
            return bitmap_ && bitmap_->width() > 0 && bitmap_->height() > 0;
        }
        return number_ >= 0 && number_ < face_pattern::bitmap;
    }

    bool operator()(std::int32_t column, std::int32_t row) const noexcept {
        if (number_ == face_pattern::bitmap) {
            return bitmap_->row(row % bitmap_->height())[column % bitmap_->width()] != 0;
        }
        return (SHARED.stock_patterns[number_][row % 8] & 0x80 >> column % 8) != 0;
    }

private:
    std::int32_t number_;
    const VT_Pattern_Bitmap* bitmap_;
};

VT_Int_Pair window_origin(const VT_Renderer_Options& options) {
    return options.local_coordinates() ? VT_Int_Pair{} : options.window_origin();
}

VT_Int_Rectangle cut_to_window(VT_Int_Rectangle rectangle, const VT_Renderer_Options& options) {
    const VT_Int_Pair origin = window_origin(options);
    const VT_Int_Pair size = options.window_size();
    return {std::max(rectangle.left, origin.x), std::min(rectangle.right, origin.x + size.x - 1),
            std::max(rectangle.bottom, origin.y), std::min(rectangle.top, origin.y + size.y - 1)};
}

// A window is painted whatever lies there: no clip region, depth test, merge or blend of the rendition takes part.
VT_Reference<VT_Rendition> painting_rendition(const VT_Rendition& rendition, const VT_Int_Rectangle& rectangle) {
    VT_Reference<VT_Rendition> paint(new VT_Rendition);
    paint->set_color(rendition.window.color);
    paint->face.index = rendition.window.index;
    paint->line.index = rendition.window.index;
    paint->marker.index = rendition.window.index;
    paint->clip.hard_clip = rectangle;
    paint->clip.depth_test = false;
    return paint;
}

} // namespace

// Dot by dot, because only dots reach every pixel of the rectangle: triangles leave out their last column and row.
void VD_Span_DC_Rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t x_min, std::int32_t x_max,
                          std::int32_t y_min, std::int32_t y_max) {
    const vorna::Standard_Call call(renderer, "VD_Span_DC_Rectangle");
    const Pattern is_set(rendition.window.fill, rendition.face.bitmap.get());
    const auto& dot = renderer.actions.draw_dci_dot;
    if (!is_set.is_drawn() || !dot.enabled) {
        return;
    }
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    const VT_Int_Pair origin = window_origin(options);
    const VT_Int_Rectangle rectangle = cut_to_window({x_min, x_max, y_min, y_max}, options);
    const VT_Reference<VT_Rendition> paint = painting_rendition(rendition, rectangle);
    for (std::int32_t y = rectangle.bottom; y <= rectangle.top; ++y) {
        for (std::int32_t x = rectangle.left; x <= rectangle.right; ++x) {
            if (is_set(x - origin.x, y - origin.y)) {
                const VT_DCI_Point point{x, y, 0};
                dot.function(*dot.owner, *paint, &point, nullptr);
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
    const auto& write = renderer.actions.write_depth_rectangle;
    const VT_Int_Rectangle rectangle = cut_to_window(rendition.window.rectangle, renderer.current_renderer_options());
    if (!write.enabled || rectangle.right < rectangle.left || rectangle.top < rectangle.bottom) {
        return;
    }
    const std::vector<std::uint16_t> farthest(static_cast<std::size_t>(rectangle.right - rectangle.left + 1),
                                              std::numeric_limits<std::uint16_t>::max());
    const VT_DCI_Point top_left{rectangle.left, rectangle.top, 0};
    const VT_DCI_Point bottom_right{rectangle.right, rectangle.bottom, 0};
    // With a stride of 0 the one row serves them all.
    write.function(*write.owner, rendition, &top_left, &bottom_right, 0, farthest.data());
}
