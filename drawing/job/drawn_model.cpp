// A model as it is drawn.
#include "drawing/job/drawn_model.h"

#include "vorna/draw.h"

namespace vorna::drawing {

std::span<const VT_Vector> Drawn_Model::points() const {
    if (faces) {
        return faces->points();
    }
    return edges ? std::span(edges->points()) : std::span<const VT_Vector>();
}

std::string Drawn_Model::summary() const {
    if (!faces && !edges) {
        return "0 triangles";
    }
    return (faces ? faces->summary() : "") + (faces && edges ? ", " : "") + (edges ? edges->summary() : "");
}

std::uint64_t Drawn_Model::prepared_memory() const {
    return (faces ? faces->prepared_memory() : 0) + (edges ? edges->prepared_memory() : 0);
}

void Drawn_Model::prepare(const model::Tile_Grid& grid, const model::Camera& camera, const model::Picture_Settings& settings,
                          const model::Edge_Settings& edge_settings) {
    only_hides = settings.shading == model::Shading::hidden_line;
    if (faces) {
        faces->prepare(grid, camera, settings);
    }
    if (edges) {
        edges->prepare(grid, camera, edge_settings);
    }
}

Tile_Artist::Tile_Artist(const Module_Choice& module, const VT_Reference<const VT_Palette>& palette)
    : session_(module), rendition_(new VT_Rendition) {
    session_.options().set_color_system(palette ? 0 : 1);
    if (palette) {
        session_.options().set_palette(palette);
        session_.options().set_alpha_blending(true); // of textures: nothing else in 8 bits follows it
    }
    session_.options().set_buffer_depth(16);
}

// Pixels beside smoothed lines are drawn as far as the picture reaches, whether or not the window goes on.
void Tile_Artist::move_to(const VT_Int_Rectangle& window, const VT_Int_Rectangle& frame) {
    session_.set_window(window);
    session_.establish();
    window_ = window;
    rendition_->clip.hard_clip = frame;
    rendition_->window.rectangle = window;
}

void Tile_Artist::draw(const Drawn_Model& model, const model::Tile_Grid& grid, std::size_t tile, VT_RGB32 background) {
    if (const VT_Int_Rectangle window = grid.window(tile); window.left != window_.left || window.right != window_.right ||
                                                           window.bottom != window_.bottom || window.top != window_.top) {
        move_to(window, grid.frame);
    }
    rendition_->window.color = background;
    rendition_->window.index = static_cast<std::uint8_t>(session_.palette().closest_match(background, false));
    VT_Renderer_Data& renderer = session_.renderer();
    renderer.begin_picture_all();
    VD_Draw_Window(renderer, *rendition_);
    VD_Clear_Depth_Rectangle(renderer, *rendition_);
    if (model.faces) {
        model.faces->draw(renderer, *rendition_, tile);
    }
    if (model.only_hides) {
        VD_Draw_Window(renderer, *rendition_);
    }
    if (model.edges) {
        model.edges->draw(renderer, *rendition_, tile);
    }
    renderer.end_picture_all();
}

} // namespace vorna::drawing
