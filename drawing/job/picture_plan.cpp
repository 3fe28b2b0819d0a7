// How a picture is cut into tiles.
#include "drawing/job/picture_plan.h"

#include <algorithm>

#include "drawing/files/memory.h"
#include "drawing/files/usage_error.h"
#include "drawing/job/drawn_model.h"
#include "drawing/job/picture_stream.h"

namespace vorna::drawing {

namespace {

constexpr std::int64_t largest_single_tile = std::int64_t{1} << 22; // pixels
constexpr std::int32_t tile_sizes[] = {1024, 512, 256, 128, 64};
// Of a renderer, besides its buffers.
constexpr std::uint64_t renderer_memory = std::uint64_t{1} << 20;

// Spans leave out their last pixel, and a model that is cut off at the picture's right or upper edge reaches the far side of its
// last pixel: the frame has one column and one row more than the picture.
VT_Int_Rectangle frame_of(VT_Int_Pair size) {
    return {0, size.x, 0, size.y};
}

model::Tile_Grid grid_of(const Plan_Request& request, std::int32_t tile_size) {
    const std::int32_t n = request.supersample;
    model::Tile_Grid grid(frame_of({request.part.size.x * n, request.part.size.y * n}));
    const VT_Int_Rectangle area = request.part.area();
    grid.area = {area.left * n, (area.right + 1) * n - 1, area.bottom * n, (area.top + 1) * n - 1};
    if (tile_size > 0) {
        const auto side = [=](std::int32_t first, std::int32_t last) {
            const std::int32_t eight = 8 * n;
            return std::min(tile_size * n, (last - first + eight) / eight * eight);
        };
        grid.tile_size = {side(grid.area.left, grid.area.right), side(grid.area.bottom, grid.area.top)};
        grid.margin = request.margin;
    }
    return grid;
}

Picture_Plan plan_of(const Plan_Request& request, std::int32_t tile_size, unsigned threads, std::uint32_t bands_ahead) {
    Picture_Plan plan{grid_of(request, tile_size), threads, {}, 0, 0};
    const model::Tile_Grid& grid = plan.grid;
    plan.threads = static_cast<unsigned>(std::min<std::size_t>(threads, std::max<std::size_t>(grid.count(), 4)));
    for (std::int32_t row = grid.rows(); row-- > 0;) {
        const std::int32_t drawn_rows = grid.area.top + 1 - (grid.area.bottom + row * grid.tile_size.y);
        plan.band_ends.push_back(static_cast<std::uint32_t>(drawn_rows / request.supersample));
    }
    plan.rows_ahead =
        bands_ahead * static_cast<std::uint32_t>(grid.tile_size.y / request.supersample) + png_block_rows(request.form);
    const std::uint64_t window = static_cast<std::uint64_t>(grid.tile_size.x + 2 * grid.margin) *
                                 static_cast<std::uint64_t>(grid.tile_size.y + 2 * grid.margin);
    plan.memory = plan.threads * (window * request.pixel_memory + renderer_memory + request.thread_memory) +
                  stream_memory(request.form, plan.band_ends, {.threads = plan.threads, .rows_ahead = plan.rows_ahead});
    return plan;
}

} // namespace

Picture_Plan plan_picture(const Plan_Request& request) {
    std::vector<std::int32_t> sizes;
    if (request.tile_size) {
        sizes.push_back(*request.tile_size);
    } else {
        const VT_Int_Pair size{request.part.size.x * request.supersample, request.part.size.y * request.supersample};
        if (request.part.is_whole() && std::int64_t{size.x} * size.y <= largest_single_tile && std::max(size.x, size.y) < 16384) {
            sizes.push_back(0);
        }
        for (const std::int32_t drawn_size : tile_sizes) {
            sizes.push_back(std::max(drawn_size / request.supersample / 8 * 8, 8));
        }
    }
    std::uint64_t least = UINT64_MAX;
    for (unsigned threads = request.threads; threads > 0; threads /= 2) {
        for (const std::int32_t size : sizes) {
            for (const std::uint32_t bands_ahead : {2U, 1U}) {
                Picture_Plan plan = plan_of(request, size, threads, bands_ahead);
                const std::uint64_t needed = request.model_memory + plan.memory;
                if (needed <= request.max_memory) {
                    return plan;
                }
                least = std::min(least, needed);
            }
        }
    }
    throw Usage_Error("--max-memory: expected " + memory_text(least) + " or more for this picture, found " +
                      memory_text(request.max_memory));
}

} // namespace vorna::drawing
