// A model as a drawing.
#include "drawing/job/model_drawing.h"

#include <algorithm>
#include <utility>

#include "drawing/model/edge_pen.h"
#include "vorna/draw.h"

namespace vorna::drawing {
namespace {

// By how much a fitted model is smaller where a shadow lies beside it.
constexpr double room_for_shadow = 0.92;

// Nanoseconds, roughly.
constexpr double triangle_work = 25, line_work = 40, point_work = 25, pixel_work = 0.5, studio_pixel_work = 14;

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

} // namespace

std::span<const VT_Vector> Model_Parts::positions() const {
    if (!own_positions.empty()) {
        return own_positions;
    }
    if (faces) {
        return faces->points();
    }
    return edges ? std::span(edges->points()) : std::span<const VT_Vector>();
}

void Model_Parts::add_studio(const model::Mesh& mesh, const model::Facing& facing, const Module_Choice& module,
                             unsigned threads) {
    if (faces) {
        studio = std::make_unique<Studio>(mesh, facing, module, threads);
    }
}

std::string Model_Parts::summary() const {
    std::string text;
    const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (faces) {
        add(faces->summary());
    }
    if (edges) {
        add(edges->summary());
    }
    if (lines) {
        add(counted(lines->count(), "line"));
    }
    if (points) {
        add(counted(points->count(), "point"));
    }
    return text.empty() ? "0 triangles" : text;
}

// Spans leave out their last pixel, and a model that is cut off at the image's right or upper edge reaches the far side of its
// last pixel: the frame has one column and one row more than the image.
Drawing_Needs model_needs(const Drawn_Parts& parts, const Model_Look& look, VT_Int_Pair size, std::int32_t enlarged) {
    const auto memory = [](const auto* part) { return part ? part->prepared_memory() : 0; };
    const auto count = [](const auto* part) { return part ? static_cast<double>(part->count()) : 0.0; };
    const auto margin = [](const model::Edge_Renderer* lines, const model::Edge_Settings& settings) {
        return lines ? model::Edge_Renderer::tile_margin(settings) : 0;
    };
    const double pixels = static_cast<double>(size.x) * size.y * enlarged * enlarged;
    return {.beyond = 1,
            .margin = std::max(margin(parts.edges, look.edges), margin(parts.lines, look.lines)),
            .spare = parts.faces ? 16 : 0,
            .overhang = std::max({parts.points ? parts.points->size_in(size, look.points) * enlarged : 0,
                                  parts.lines ? model::Edge_Pen::points_beside(look.lines) : 0,
                                  parts.edges ? model::Edge_Pen::points_beside(look.edges) : 0}),
            .one_piece = {},
            .pixel_memory = 4 + 2 + 2 + (parts.edges || parts.lines ? 4U : 0U), // with depths that are read and receded
            .prepared_memory = memory(parts.faces) + memory(parts.edges) + memory(parts.lines) + memory(parts.points),
            .work = triangle_work * (parts.faces ? static_cast<double>(parts.faces->triangle_count()) : 0) +
                    line_work * (count(parts.edges) + count(parts.lines)) + point_work * count(parts.points) +
                    pixel_work * pixels};
}

void set_model_options(Session& session, const Model_Look& look) {
    session.options().set_color_system(look.palette ? 0 : 1);
    if (look.palette) {
        session.options().set_palette(look.palette);
    }
    session.options().set_alpha_blending(look.palette.get() != nullptr); // of textures: nothing else in 8 bits follows it
    session.options().set_buffer_depth(16);
}

void prepare_model(const Drawn_Parts& parts, const Tile_Grid& grid, const model::Camera& camera, const Model_Look& look,
                   std::int32_t enlarged) {
    if (parts.faces) {
        parts.faces->prepare(grid, camera, look.picture);
    }
    if (parts.edges) {
        parts.edges->prepare(grid, camera, look.edges);
    }
    if (parts.lines) {
        parts.lines->prepare(grid, camera, look.lines);
    }
    if (parts.points) {
        model::Point_Settings settings = look.points;
        settings.enlarged = enlarged;
        settings.over_faces = parts.faces != nullptr;
        settings.light = look.picture.light;
        settings.specular = look.picture.specular;
        parts.points->prepare(grid, camera, settings);
    }
    if (parts.overlay) {
        parts.overlay->prepare(grid, camera, enlarged);
    }
}

namespace {

// Smoothed lines neither test nor write depths in the buffer: they come after the points, which could lie over them otherwise.
void draw_over_faces(const Drawn_Parts& parts, VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) {
    const model::Edge_Renderer* widest = nullptr;
    for (const model::Edge_Renderer* lines : {parts.lines, parts.edges}) {
        if (lines && lines->reach() > (widest ? widest->reach() : 0)) {
            widest = lines;
        }
    }
    if (widest) {
        model::recede_faces(renderer, rendition, widest->frame(), widest->reach());
    }
    if (parts.points) {
        parts.points->draw(renderer, rendition, tile);
    }
    for (const model::Edge_Renderer* lines : {parts.lines, parts.edges}) {
        if (lines) {
            lines->draw(renderer, rendition, tile);
        }
    }
    if (parts.overlay) {
        parts.overlay->draw(renderer, rendition);
    }
}

} // namespace

// Hidden lines need the depths of the faces only: the background is painted over them.
void draw_model(const Drawn_Parts& parts, const Model_Look& look, VT_Renderer_Data& renderer, const VT_Rendition& rendition,
                std::size_t tile, const Background& background) {
    VD_Clear_Depth_Rectangle(renderer, rendition);
    if (parts.faces) {
        parts.faces->draw(renderer, rendition, tile);
    }
    if (look.picture.shading == model::Shading::hidden_line) {
        paint_background(renderer, rendition, background);
    }
    draw_over_faces(parts, renderer, rendition, tile);
}

Model_Drawing::Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera)
    : Model_Drawing(std::move(parts), look, camera, 1) {
}

Model_Drawing::Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera, std::int32_t frames)
    : parts_(std::move(parts)), look_(look) {
    set_camera(camera);
    if (frames == 1) {
        return;
    }
    model::Camera_Settings settings = with_room(camera);
    // A model whose camera is fitted is turned around its middle.
    const VT_Vector_D place = camera.aim ? camera.aim->target : VT_Vector_D{};
    const model::Aim first = camera.aim ? *camera.aim : model::fitted_aim(settings, parts_.positions());
    for (std::int32_t frame = 1; frame < frames; ++frame) {
        settings.aim = model::turned_aim(first, place, model::up_direction(settings.up), frame, frames);
        cameras_.push_back(model::fit_camera(settings, parts_.positions()));
    }
}

model::Camera_Settings Model_Drawing::with_room(model::Camera_Settings settings) const {
    if (parts_.studio && !settings.aim) {
        settings.zoom *= room_for_shadow;
    }
    return settings;
}

void Model_Drawing::set_camera(const model::Camera_Settings& camera) {
    up_ = model::up_direction(camera.up);
    cameras_.assign(1, model::fit_camera(with_room(camera), parts_.positions()));
}

std::vector<double> Model_Drawing::reach() const {
    std::vector<double> reach;
    for (const model::Camera& camera : cameras_) {
        reach.push_back(model::reach_of(camera, parts_.positions()));
    }
    return reach;
}

// Lines keep their width; the mean of smaller pixels is smooth without the renderer's help.
Model_Look Model_Drawing::scaled_look(std::int32_t supersample) const {
    Model_Look look = look_;
    for (model::Edge_Settings* lines : {&look.edges, &look.lines}) {
        lines->width *= supersample;
        lines->smoothed = lines->smoothed && supersample == 1;
    }
    return look;
}

Drawing_Needs Model_Drawing::needs(VT_Int_Pair size, std::int32_t supersample) const {
    Drawing_Needs needs = model_needs(parts_.drawn(), scaled_look(supersample), size, supersample);
    if (parts_.studio) {
        const double pixels = static_cast<double>(size.x) * size.y * supersample * supersample;
        needs.margin = std::max(needs.margin, Studio::tile_margin(size.y, supersample));
        needs.spare = 0; // the margin is large
        needs.pixel_memory += Studio_Planes::pixel_memory;
        needs.thread_memory = Studio_Planes::other_memory;
        needs.prepared_memory += parts_.studio->prepared_memory();
        needs.work += studio_pixel_work * pixels;
    }
    return needs;
}

void Model_Drawing::visit_places(const std::function<void(double x, double y)>& visit) const {
    const auto& m = camera().clip_from_model.m;
    for (const VT_Vector& p : parts_.positions()) {
        const auto row = [&](int r) { return m[r][0] * p.x + m[r][1] * p.y + m[r][2] * p.z + m[r][3]; };
        if (const double w = row(3); w > 0) {
            visit((row(0) / w + 1) / 2, (row(1) / w + 1) / 2);
        }
    }
}

void Model_Drawing::prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t frame) {
    const model::Camera& camera = cameras_[static_cast<std::size_t>(frame)];
    const Model_Look look = scaled_look(supersample);
    prepare_model(parts_.drawn(), grid, camera, look, supersample);
    if (parts_.studio) {
        parts_.studio->prepare(grid, camera, look.picture, up_, supersample);
    }
}

void Model_Drawing::set_options(Session& session) const {
    set_model_options(session, look_);
}

void Model_Drawing::draw(Session& session, const VT_Rendition& rendition, std::size_t tile, const Background& background) const {
    if (parts_.studio) {
        parts_.studio->draw(*parts_.faces, session, rendition, tile, background);
        draw_over_faces(parts_.drawn(), session.renderer(), rendition, tile);
    } else {
        draw_model(parts_.drawn(), look_, session.renderer(), rendition, tile, background);
    }
}

} // namespace vorna::drawing
