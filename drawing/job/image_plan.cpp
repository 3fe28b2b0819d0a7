// How an image is cut into tiles.
#include "drawing/job/image_plan.h"

#include <algorithm>
#include <iterator>

#include "drawing/files/memory.h"
#include "drawing/files/setting_names.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/image_formats.h"
#include "drawing/job/image_stream.h"
#include "host/frame_buffer.h"

namespace vorna::drawing {

namespace {

constexpr std::int64_t largest_single_tile = std::int64_t{1} << 22; // pixels
// Of drawings with margins, on one thread: larger tiles draw less twice.
constexpr std::int64_t largest_single_tile_with_margin = std::int64_t{1} << 23;
constexpr std::int32_t tile_size_with_margin = 2048; // where there are as many tiles as threads
constexpr std::int32_t tile_sizes[] = {1024, 512, 256, 128, 64};
// Of a renderer, besides its buffers.
constexpr std::uint64_t renderer_memory = std::uint64_t{1} << 20;

model::Tile_Grid grid_of(const Plan_Request& request, std::int32_t tile_size) {
    const std::int32_t n = request.supersample;
    model::Tile_Grid grid({0, request.part.size.x * n - 1 + request.beyond, 0, request.part.size.y * n - 1 + request.beyond});
    const VT_Int_Rectangle area = request.part.area();
    grid.area = {area.left * n, (area.right + 1) * n - 1, area.bottom * n, (area.top + 1) * n - 1};
    if (tile_size > 0) {
        // Tiles with margins that no one has asked for are about equally large: what they draw for nothing is least then.
        const bool even = request.margin > 0 && !request.tile_size;
        const auto side = [=](std::int32_t first, std::int32_t last) {
            const std::int32_t eight = 8 * n, length = last - first + 1, count = even ? (length - 1) / (tile_size * n) + 1 : 1;
            return std::min(tile_size * n, ((length - 1) / count / eight + 1) * eight);
        };
        grid.tile_size = {side(grid.area.left, grid.area.right), side(grid.area.bottom, grid.area.top)};
        grid.margin = request.margin;
    } else {
        grid.margin = request.single_margin;
    }
    return grid;
}

Image_Plan plan_of(const Plan_Request& request, std::int32_t tile_size, unsigned threads, std::uint32_t bands_ahead) {
    Image_Plan plan{grid_of(request, tile_size), threads, {}, 0, 0};
    const model::Tile_Grid& grid = plan.grid;
    plan.threads = static_cast<unsigned>(std::min<std::size_t>(threads, std::max<std::size_t>(grid.count(), 4)));
    for (std::int32_t row = grid.rows(); row-- > 0;) {
        const std::int32_t drawn_rows = grid.area.top + 1 - (grid.area.bottom + row * grid.tile_size.y);
        plan.band_ends.push_back(static_cast<std::uint32_t>(drawn_rows / request.supersample));
    }
    plan.rows_ahead = bands_ahead * static_cast<std::uint32_t>(grid.tile_size.y / request.supersample) +
                      image_encoder(request.form)->block_rows();
    const std::uint64_t window = static_cast<std::uint64_t>(grid.tile_size.x + 2 * grid.margin) *
                                 static_cast<std::uint64_t>(grid.tile_size.y + 2 * grid.margin);
    plan.memory = plan.threads * (window * request.pixel_memory + renderer_memory + request.thread_memory) +
                  stream_memory(request.form, plan.band_ends, {.threads = plan.threads, .rows_ahead = plan.rows_ahead});
    return plan;
}

} // namespace

std::int32_t default_supersample(VT_Int_Pair size) noexcept {
    const bool is_dear = std::int64_t{size.x} * size.y > std::int64_t{1} << 24 || std::max(size.x, size.y) > largest_side / 2;
    return is_dear ? 1 : 2;
}

Image_Plan plan_image(const Plan_Request& request) {
    const VT_Int_Pair size{request.part.size.x * request.supersample, request.part.size.y * request.supersample};
    const bool fits_one_buffer = std::max(size.x, size.y) + request.beyond + 2 * request.single_margin <= largest_buffer_side;
    std::vector<std::int32_t> sizes;
    if (!request.one_piece.empty()) {
        if (!fits_one_buffer || !request.part.is_whole || request.tile_size) {
            throw Usage_Error(name_of(Setting::size) + ": expected an image of " + std::to_string(largest_buffer_side) +
                              " pixels each way at most, drawn in one piece, since " + request.one_piece);
        }
        sizes.push_back(0);
    } else if (request.tile_size) {
        sizes.push_back(*request.tile_size);
    } else {
        const bool is_small =
            std::int64_t{size.x} * size.y <=
            (request.margin > 0 && request.threads == 1 ? largest_single_tile_with_margin : largest_single_tile);
        if (request.part.is_whole && fits_one_buffer && (is_small || request.prefers_one_piece)) {
            sizes.push_back(0);
        }
        const auto file_size = [&](std::int32_t drawn_size) { return std::max(drawn_size / request.supersample / 8 * 8, 8); };
        if (request.margin > 0 && grid_of(request, file_size(tile_size_with_margin)).count() >= request.threads) {
            sizes.push_back(file_size(tile_size_with_margin));
        }
        std::ranges::transform(tile_sizes, std::back_inserter(sizes), file_size);
    }
    std::uint64_t least = UINT64_MAX;
    for (unsigned threads = request.threads; threads > 0; threads /= 2) {
        for (const std::int32_t side : sizes) {
            for (const std::uint32_t bands_ahead : {2U, 1U}) {
                Image_Plan plan = plan_of(request, side, threads, bands_ahead);
                const std::uint64_t needed = request.other_memory + plan.memory;
                if (needed <= request.max_memory) {
                    return plan;
                }
                least = std::min(least, needed);
            }
        }
    }
    throw Usage_Error(name_of(Setting::max_memory) + ": expected " + memory_text(least) + " or more for this image, found " +
                      memory_text(request.max_memory));
}

} // namespace vorna::drawing
