// A model as a drawing.
#include "drawing/job/model_drawing.h"

#include <algorithm>
#include <utility>

#include "vorna/draw.h"

namespace vorna::drawing {

namespace {

// By how much a fitted model is smaller where a shadow lies beside it.
constexpr double room_for_shadow = 0.92;

} // namespace

std::span<const VT_Vector> Model_Parts::points() const {
    if (faces) {
        return faces->points();
    }
    return edges ? std::span(edges->points()) : std::span<const VT_Vector>();
}

void Model_Parts::add_studio(const model::Mesh& mesh, const Module_Choice& module) {
    if (faces) {
        studio = std::make_unique<Studio>(mesh, module);
    }
}

std::string Model_Parts::summary() const {
    if (!faces && !edges) {
        return "0 triangles";
    }
    return (faces ? faces->summary() : "") + (faces && edges ? ", " : "") + (edges ? edges->summary() : "");
}

void prepare_model(model::Scene* faces, model::Edge_Renderer* edges, const Tile_Grid& grid, const model::Camera& camera,
                   const Model_Look& look) {
    if (faces) {
        faces->prepare(grid, camera, look.picture);
    }
    if (edges) {
        edges->prepare(grid, camera, look.edges);
    }
}

// Hidden lines need the depths of the faces only: the window is painted over them.
void draw_model(const model::Scene* faces, const model::Edge_Renderer* edges, const Model_Look& look, VT_Renderer_Data& renderer,
                const VT_Rendition& rendition, std::size_t tile) {
    VD_Clear_Depth_Rectangle(renderer, rendition);
    if (faces) {
        faces->draw(renderer, rendition, tile);
    }
    if (look.picture.shading == model::Shading::hidden_line) {
        VD_Draw_Window(renderer, rendition);
    }
    if (edges) {
        edges->draw(renderer, rendition, tile);
    }
}

Model_Drawing::Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera)
    : Model_Drawing(std::move(parts), look, camera, 1) {
}

Model_Drawing::Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera, std::int32_t frames)
    : parts_(std::move(parts)), look_(look), up_(model::up_direction(camera.up)) {
    model::Camera_Settings settings = camera;
    if (parts_.studio && !settings.aim) {
        settings.zoom *= room_for_shadow;
    }
    cameras_.push_back(model::fit_camera(settings, parts_.points()));
    if (frames == 1) {
        return;
    }
    // A model whose camera is fitted is turned around its middle.
    const VT_Vector_D place = camera.aim ? camera.aim->target : VT_Vector_D{};
    const model::Aim first = camera.aim ? *camera.aim : model::fitted_aim(settings, parts_.points());
    for (std::int32_t frame = 1; frame < frames; ++frame) {
        settings.aim = model::turned_aim(first, place, model::up_direction(settings.up), frame, frames);
        cameras_.push_back(model::fit_camera(settings, parts_.points()));
    }
}

std::vector<double> Model_Drawing::reach() const {
    std::vector<double> reach;
    for (const model::Camera& camera : cameras_) {
        reach.push_back(model::reach_of(camera, parts_.points()));
    }
    return reach;
}

// Lines keep their width; the mean of smaller pixels is smooth without the renderer's help.
Model_Look Model_Drawing::scaled_look(std::int32_t supersample) const {
    Model_Look look = look_;
    look.edges.width *= supersample;
    look.edges.smoothed = look.edges.smoothed && supersample == 1;
    return look;
}

// Spans leave out their last pixel, and a model that is cut off at the image's right or upper edge reaches the far side of its
// last pixel: the frame has one column and one row more than the image.
Drawing_Needs Model_Drawing::needs(VT_Int_Pair size, std::int32_t supersample) const {
    const std::uint64_t prepared = (parts_.faces ? parts_.faces->prepared_memory() : 0) +
                                   (parts_.edges ? parts_.edges->prepared_memory() : 0) +
                                   (parts_.studio ? parts_.studio->prepared_memory() : 0);
    std::int32_t margin = parts_.edges ? model::Edge_Renderer::tile_margin(scaled_look(supersample).edges) : 0;
    if (parts_.studio) {
        margin = std::max(margin, Studio::tile_margin(size.y, supersample));
    }
    return {.beyond = 1,
            .margin = margin,
            .one_piece = {},
            .pixel_memory = 4 + 2 + 2 + (parts_.studio ? Studio_Planes::pixel_memory : 0),
            .thread_memory = 0,
            .prepared_memory = prepared};
}

void Model_Drawing::prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t frame) {
    const model::Camera& camera = cameras_[static_cast<std::size_t>(frame)];
    const Model_Look look = scaled_look(supersample);
    prepare_model(parts_.faces.get(), parts_.edges.get(), grid, camera, look);
    if (parts_.studio) {
        parts_.studio->prepare(grid, camera, look.picture, up_, supersample);
    }
}

void Model_Drawing::set_options(Session& session) const {
    session.options().set_color_system(look_.palette ? 0 : 1);
    if (look_.palette) {
        session.options().set_palette(look_.palette);
        session.options().set_alpha_blending(true); // of textures: nothing else in 8 bits follows it
    }
    session.options().set_buffer_depth(16);
}

void Model_Drawing::draw(Session& session, const VT_Rendition& rendition, std::size_t tile) const {
    if (!parts_.studio) {
        draw_model(parts_.faces.get(), parts_.edges.get(), look_, session.renderer(), rendition, tile);
        return;
    }
    parts_.studio->draw(*parts_.faces, session, rendition, tile);
    if (parts_.edges) {
        parts_.edges->draw(session.renderer(), rendition, tile);
    }
}

} // namespace vorna::drawing
