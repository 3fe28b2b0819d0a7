// Painting the window and clearing its depth. VD_Span_DC_Rectangle draws every pattern of cells, VD_Standard_Draw_Window through
// it, and VD_Standard_Clear_Depth_Rectangle clears through the slot that writes depth.
#include <limits>
#include <vector>

#include "renderer/host/rendition.h"
#include "vorna/standard/drawing_area.h"
#include "vorna/standard/faces.h"
#include "vorna/standard/pattern.h"
#include "vorna/standard/standard_call.h"

namespace {

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
    const bool is_hatched = rendition.window.fill > vorna::face_pattern::last_drawn_by_renderers;
    const VT_Reference<const VT_Pattern_Bitmap> bitmap = is_hatched ? vorna::hatch(rendition.window.fill) : rendition.face.bitmap;
    const vorna::Pattern is_set(is_hatched ? vorna::face_pattern::bitmap : rendition.window.fill, bitmap.get());
    const auto& dot = renderer.actions.draw_dci_dot;
    if (!is_set.has_cells() || !dot.enabled) {
        return;
    }
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    const VT_Int_Pair origin = vorna::window_origin(options);
    const VT_Int_Rectangle rectangle = vorna::cut_to_window({x_min, x_max, y_min, y_max}, options);
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
    const VT_Int_Rectangle rectangle = vorna::cut_to_window(rendition.window.rectangle, renderer.current_renderer_options());
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
