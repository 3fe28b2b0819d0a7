// The studio look of a model.
#include "drawing/job/studio.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "drawing/files/usage_error.h"
#include "drawing/image/image_file.h"
#include "drawing/job/drawing.h"
#include "vorna/draw.h"

namespace vorna::drawing {
namespace {

constexpr std::size_t most_triangles = (std::size_t{1} << 24) - 2;

const model::Mesh& checked(const model::Mesh& mesh) {
    check_countable(mesh);
    return mesh;
}

// Colours stay as they are drawn: the number 0 where nothing is.
void fill_with_zeros(const Frame_Buffer& buffer) {
    for (std::int32_t row = 0; row < buffer.height; ++row) {
        std::memset(buffer.rows[row], 0, 4 * static_cast<std::size_t>(buffer.width));
    }
}

} // namespace

void check_countable(const model::Mesh& mesh) {
    if (mesh.triangle_count() > most_triangles) {
        throw Usage_Error("faces: expected " + std::to_string(most_triangles) + " triangles at most to be numbered, found " +
                          std::to_string(mesh.triangle_count()));
    }
}

Studio::Studio(const model::Mesh& mesh, const model::Facing& facing, const Module_Choice& module, unsigned threads)
    : geometry_(checked(mesh), facing, {}, false, true, threads), faces_(mesh, facing), module_(module) {
}

std::int32_t Studio::tile_margin(std::int32_t height, std::int32_t supersample) {
    return (Studio_Sizes::of(height, supersample).margin() + 7) / 8 * 8;
}

std::uint64_t Studio::prepared_memory() const noexcept {
    constexpr std::uint64_t tables = std::uint64_t{8} << 20;
    return geometry_.prepared_memory() + sizeof(Studio_Face) * geometry_.triangle_count() + tables;
}

void Studio::prepare(const model::Tile_Grid& grid, const model::Camera& camera, const model::Model_Look& look,
                     const VT_Vector_D& up, std::int32_t supersample) {
    model::Model_Look normals = look;
    normals.tint = model::Tint::normals;
    const std::int32_t height = (grid.frame.top - grid.frame.bottom) / supersample;
    const Studio_Sizes sizes = Studio_Sizes::of(height, supersample);
    Studio_Ground ground = ground_seen(grid, camera, normals, up);
    geometry_.prepare(grid, camera, normals);
    grid_ = grid;
    lights_.emplace(look.light.x, look.light.y, look.light.z);
    // Points lie in the frame, which has one column and one row more than the image.
    const VT_Int_Rectangle image{grid.frame.left, grid.frame.right - 1, grid.frame.bottom, grid.frame.top - 1};
    shading_.emplace(sizes, supersample, image, *lights_, faces_.seen(camera, grid.frame, sizes.reach),
                     model::pixels_per_step(camera, grid.frame), std::move(ground));
}

Studio_Ground Studio::ground_seen(const model::Tile_Grid& grid, const model::Camera& camera, const model::Model_Look& look,
                                  const VT_Vector_D& up) {
    const model::Ground_View view(geometry_.points(), up, camera, look.light);
    const model::Tile_Grid map({0, Studio_Ground::side - 1, 0, Studio_Ground::side - 1});
    geometry_.prepare(map, view.height_camera(), look);
    if (!ground_session_) {
        ground_session_ = std::make_unique<Session>(module_);
        ground_session_->set_window(map.frame);
        ground_session_->options().set_color_system(1);
        ground_session_->options().set_buffer_depth(16);
        ground_session_->establish();
    }
    Session& session = *ground_session_;
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = map.frame;
    rendition->window.rectangle = map.frame;
    session.renderer().begin_picture_all();
    VD_Clear_Depth_Rectangle(session.renderer(), *rendition);
    geometry_.draw(session.renderer(), *rendition, 0);
    session.renderer().end_picture_all();
    const VT_Reference<VT_Shared_Image> depths = session.read_depth();
    const Raster rows = raster_of(*depths);
    std::vector<std::uint16_t> heights(std::size_t{Studio_Ground::side} * Studio_Ground::side);
    for (std::int32_t row = 0; row < Studio_Ground::side; ++row) {
        std::memcpy(&heights[static_cast<std::size_t>(Studio_Ground::side - 1 - row) * Studio_Ground::side],
                    rows.top + row * rows.row_bytes, 2 * std::size_t{Studio_Ground::side});
    }
    return view.seen(camera, grid.frame, heights).value_or(Studio_Ground());
}

std::unique_ptr<Studio_Planes> Studio::lend_planes() {
    const std::lock_guard lock(mutex_);
    if (planes_.empty()) {
        return std::make_unique<Studio_Planes>();
    }
    std::unique_ptr<Studio_Planes> planes = std::move(planes_.back());
    planes_.pop_back();
    return planes;
}

void Studio::give_back(std::unique_ptr<Studio_Planes> planes) {
    const std::lock_guard lock(mutex_);
    planes_.push_back(std::move(planes));
}

// Numbers come first: they say where the other pictures have to be looked at. All pictures of the geometry have the same depths,
// so that the second one needs no cleared buffer.
void Studio::draw(const model::Scene& faces, Session& session, const VT_Rendition& rendition, std::size_t tile,
                  const Background& background) {
    VT_Renderer_Data& renderer = session.renderer();
    const Frame_Buffer& buffer = session.color_buffer();
    const VT_Int_Rectangle window = session.window();
    std::unique_ptr<Studio_Planes> planes = lend_planes();
    planes->resize(window.right - window.left + 1, window.top - window.bottom + 1,
                   std::max(shading_->sizes().margin() - grid_->margin, 0));

    // Of the margin, numbers and depths are looked at everywhere, normals beside lines only, and colours nowhere.
    const VT_Int_Rectangle kept = grid_->pixels(tile);
    const std::int32_t beside = shading_->sizes().line;
    const VT_Reference<VT_Rendition> clipped(new VT_Rendition(rendition));
    clipped->clip.hard_clip =
        common_part(rendition.clip.hard_clip, {kept.left - beside, kept.right + beside, kept.bottom - beside, kept.top + beside});

    VD_Clear_Depth_Rectangle(renderer, rendition);
    fill_with_zeros(buffer);
    geometry_.draw_numbers(renderer, rendition, tile);
    planes->take_numbers(raster_of(buffer));
    if (!planes->is_empty()) {
        const VT_Int_Rectangle box = planes->box();
        const VT_Reference<VT_Shared_Image> depths =
            session.read_depth({window.left + box.left, window.left + box.right, window.top - box.top, window.top - box.bottom});
        planes->take_faces(raster_of(*depths), shading_->faces());
        geometry_.draw(renderer, *clipped, tile);
        planes->take_normals(raster_of(buffer));
    }
    paint_background(renderer, rendition, background);
    VD_Clear_Depth_Rectangle(renderer, rendition);
    faces.draw(renderer, *clipped, tile);
    shading_->shade(*planes, window, kept, buffer.rows[window.top - window.bottom], buffer.bytes_per_row);
    give_back(std::move(planes));
}

} // namespace vorna::drawing
