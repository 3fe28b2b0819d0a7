// A model that is drawn while it is read.
#include "drawing/job/streamed_drawing.h"

#include <cmath>
#include <memory>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/model/scene_renderer.h"
#include "vorna/draw.h"

namespace vorna::drawing {
namespace {

// A batch that is ready to be drawn. The scene refers to nothing else.
std::unique_ptr<model::Scene_Renderer> scene_of(const model::Mesh& mesh, VT_RGB32 color, bool own_colors) {
    const model::Facing facing(mesh, 1, true);
    return std::make_unique<model::Scene_Renderer>(mesh, facing, color, own_colors, false, 1, model::Triangle_Order::mesh);
}

} // namespace

Streamed_Drawing::Streamed_Drawing(const model::Triangle_File& file, const Triangle_Share& share, Model_Framing framing,
                                   const Model_Look& look, VT_RGB32 color, bool own_colors, const model::Camera_Settings& camera,
                                   Load_Limits& limits)
    : file_(file), first_(share.start_in(file.triangle_count())), end_(share.end_in(file.triangle_count())),
      framing_(std::move(framing)), look_(look), color_(color), own_colors_(own_colors),
      camera_(model::fit_camera(camera, framing_.outermost)), limits_(limits) {
}

std::string Streamed_Drawing::summary() const {
    return std::to_string(end_ - first_) + " triangles, read while they are drawn";
}

// The frame is that of a model in memory.
Drawing_Needs Streamed_Drawing::needs(VT_Int_Pair size, std::int32_t supersample) const {
    Drawing_Needs needs = model_needs({}, look_, size, supersample);
    needs.one_piece = "the model is read while it is drawn";
    needs.prepared_memory = model::places_of_batches(limits_) * model::Triangle_File::batch_memory;
    return needs;
}

void Streamed_Drawing::prepare(const Tile_Grid& grid, std::int32_t, std::int32_t) {
    grid_ = grid;
}

// Other corners than those that the framing was found from mean that the file has changed since.
model::Mesh Streamed_Drawing::placed_mesh(std::uint64_t first, std::uint64_t end) const {
    model::Mesh mesh = file_.read(first, end);
    for (VT_Vector& corner : mesh.positions) {
        corner = model::place_in_unit_sphere(corner, framing_.center, framing_.radius);
        constexpr double rounding = 1e-6;
        if (!(model::length(model::widened(corner)) <= 1 + rounding)) {
            throw model::Model_Error(file_.name() + ": triangles " + std::to_string(first) + " to " + std::to_string(end - 1) +
                                     ": expected corners inside the framing of the model, found one outside");
        }
    }
    return mesh;
}

void Streamed_Drawing::draw(Session& session, const VT_Rendition& rendition, std::size_t tile, const Background&) const {
    VT_Renderer_Data& renderer = session.renderer();
    VD_Clear_Depth_Rectangle(renderer, rendition);
    std::vector<std::unique_ptr<model::Scene_Renderer>> scenes(model::places_of_batches(limits_));
    model::for_each_batch(
        first_, end_, limits_,
        [&](std::uint64_t first, std::uint64_t end, std::size_t place) {
            scenes[place] = scene_of(placed_mesh(first, end), color_, own_colors_);
            scenes[place]->prepare(grid_, camera_, look_.picture);
        },
        [&](std::size_t place) {
            scenes[place]->draw(renderer, rendition, tile);
            scenes[place].reset();
        });
}

} // namespace vorna::drawing
