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

void draw_picture(Session& session, VT_Rendition& rendition, const Drawing& drawing, std::size_t tile, VT_RGB32 background) {
    rendition.window.color = background;
    rendition.window.index = static_cast<std::uint8_t>(session.palette().closest_match(background, false));
    VT_Renderer_Data& renderer = session.renderer();
    renderer.begin_picture_all();
    VD_Draw_Window(renderer, rendition);
    drawing.draw(session, rendition, tile);
    renderer.end_picture_all();
}

void Tile_Renderer::draw(const Drawing& drawing, const Tile_Grid& grid, std::size_t tile, VT_RGB32 background) {
    if (const VT_Int_Rectangle window = grid.window(tile); window != window_) {
        window_ = window;
        rendition_ = new VT_Rendition;
        establish(session_, *rendition_, drawing, grid, tile);
    }
    draw_picture(session_, *rendition_, drawing, tile, background);
}

} // namespace vorna::drawing
