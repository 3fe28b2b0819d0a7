// What a job draws, tile by tile.
#include "drawing/job/drawing.h"

#include "vorna/draw.h"

namespace vorna::drawing {

// The clip is the whole frame, also where the window does not reach: smoothed lines have pixels beside them as far as it goes.
void establish(Session& session, VT_Rendition& rendition, const Drawing& drawing, const Tile_Grid& grid, std::size_t tile) {
    const VT_Int_Rectangle window = grid.window(tile);
    session.set_window(window);
    drawing.set_options(session);
    session.establish();
    rendition.clip.hard_clip = grid.frame;
    rendition.window.rectangle = window;
    drawing.set_attributes(rendition);
}

// Rows of one colour are painted together. Pixels of 32 bits have no use for indices.
void paint_background(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Background& background) {
    const VT_Int_Rectangle frame = rendition.clip.hard_clip, window = rendition.window.rectangle;
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    const VT_Reference<VT_Rendition> painted(new VT_Rendition(rendition));
    VT_Window_Attributes& attributes = painted->window;
    for (std::int32_t row = window.bottom, next = row; row <= window.top; row = next) {
        const VT_RGB32 color = background.row_color(row, frame);
        next = background.is_plain() ? window.top + 1 : row + 1;
        while (next <= window.top && background.row_color(next, frame) == color) {
            ++next;
        }
        attributes.rectangle.bottom = row;
        attributes.rectangle.top = next - 1;
        attributes.color = color;
        if (options.color_system() != 1) {
            attributes.index = static_cast<std::uint8_t>(options.palette().closest_match(color, false));
        }
        VD_Draw_Window(renderer, *painted);
    }
}

void draw_picture(Session& session, VT_Rendition& rendition, const Drawing& drawing, std::size_t tile,
                  const Background& background) {
    VT_Renderer_Data& renderer = session.renderer();
    renderer.begin_picture_all();
    paint_background(renderer, rendition, background);
    drawing.draw(session, rendition, tile, background);
    renderer.end_picture_all();
}

void Tile_Renderer::draw(const Drawing& drawing, const Tile_Grid& grid, std::size_t tile, const Background& background) {
    if (const VT_Int_Rectangle window = grid.window(tile); window != window_) {
        window_ = window;
        rendition_ = new VT_Rendition;
        establish(session_, *rendition_, drawing, grid, tile);
    }
    draw_picture(session_, *rendition_, drawing, tile, background);
}

} // namespace vorna::drawing
