// Frames of a drawing in memory.
#include "drawing/job/frame_drawer.h"

#include <algorithm>
#include <cstring>

#include "drawing/files/helpers.h"
#include "drawing/image/image_file.h"
#include "drawing/job/image_plan.h"

namespace vorna::drawing {

Frame_Drawer::Frame_Drawer(const Module_Choice& module, unsigned threads)
    : module_(module), threads_(threads > 0 ? threads : processor_count()) {
}

std::optional<Tile_Grid> Frame_Drawer::shared_grid(const Drawing& drawing, VT_Int_Pair size) const {
    const Drawing_Needs needs = drawing.needs(size, 1);
    Plan_Request request;
    request.part.size = size;
    request.beyond = needs.beyond;
    request.margin = needs.margin;
    request.spare = needs.spare;
    request.threads = threads_;
    request.work = needs.one_piece.empty() ? needs.work : 0;
    return drawing::shared_grid(request);
}

// Renderers are made before the threads: loading a module sets a variable of the process.
void Frame_Drawer::draw(const Drawing& drawing, const Tile_Grid& grid, const Background& background, const Frame_Buffer& buffer) {
    threads_used_ = static_cast<unsigned>(std::min<std::size_t>(threads_, grid.count()));
    for (std::size_t thread = 0; thread < threads_used_; ++thread) {
        renderer_of(thread);
    }
    const std::vector<std::size_t> order = model::tiles_from_middle(grid);
    const Thread_Pool::Use use(&pool_);
    share_tasks(order.size(), threads_used_, [&](std::size_t task, std::size_t thread) {
        const std::size_t tile = order[task];
        Tile_Renderer& renderer = *renderers_[thread];
        renderer.draw(drawing, grid, tile, background);
        const VT_Int_Rectangle kept = grid.pixels(tile);
        const Raster drawn = cut(raster_of(renderer.session().color_buffer()), grid.window(tile), kept);
        const std::ptrdiff_t pixel_bytes = vorna::bytes_per_pixel(drawn.format);
        for (std::int32_t row = 0; row < drawn.height; ++row) {
            std::memcpy(buffer.rows[kept.top - grid.frame.bottom - row] + (kept.left - grid.frame.left) * pixel_bytes,
                        drawn.top + row * drawn.row_bytes, static_cast<std::size_t>(drawn.width * pixel_bytes));
        }
    });
}

std::uint16_t Frame_Drawer::depth_at(const Drawing& drawing, const Tile_Grid& grid, const Background& background,
                                     VT_Int_Pair pixel) {
    const std::int32_t column = (pixel.x - grid.area.left) / grid.tile_size.x,
                       row = (pixel.y - grid.area.bottom) / grid.tile_size.y;
    Tile_Renderer& renderer = renderer_of(0);
    renderer.draw(drawing, grid,
                  static_cast<std::size_t>(row) * static_cast<std::size_t>(grid.columns()) + static_cast<std::size_t>(column),
                  background);
    const VT_Reference<VT_Shared_Image> image = renderer.session().read_depth({pixel.x, pixel.x, pixel.y, pixel.y});
    std::uint16_t depth = 0;
    std::memcpy(&depth, image->row(0), sizeof depth);
    return depth;
}

void Frame_Drawer::forget_options() {
    for (const auto& renderer : renderers_) {
        renderer->forget_options();
    }
}

Tile_Renderer& Frame_Drawer::renderer_of(std::size_t thread) {
    while (renderers_.size() <= thread) {
        renderers_.push_back(std::make_unique<Tile_Renderer>(module_));
    }
    return *renderers_[thread];
}

} // namespace vorna::drawing
