// How an image is cut into tiles.
#include "drawing/job/image_plan.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "drawing/files/helpers.h"
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

// tile_size: in pixels of the image; {0, 0} = one tile.
model::Tile_Grid grid_of(const Plan_Request& request, VT_Int_Pair tile_size) {
    const std::int32_t n = request.supersample;
    model::Tile_Grid grid({0, request.part.size.x * n - 1 + request.beyond, 0, request.part.size.y * n - 1 + request.beyond});
    const VT_Int_Rectangle area = request.part.area();
    grid.area = {area.left * n, (area.right + 1) * n - 1, area.bottom * n, (area.top + 1) * n - 1};
    if (tile_size.x > 0) {
        // Tiles with margins that no one has asked for are about equally large: what they draw for nothing is least then.
        const bool even = request.margin > 0 && !request.tile_size;
        const auto side = [=](std::int32_t first, std::int32_t last, std::int32_t most) {
            const std::int32_t eight = 8 * n, length = last - first + 1, count = even ? (length - 1) / (most * n) + 1 : 1;
            return std::min(most * n, ((length - 1) / count / eight + 1) * eight);
        };
        grid.tile_size = {side(grid.area.left, grid.area.right, tile_size.x), side(grid.area.bottom, grid.area.top, tile_size.y)};
        // Of small tiles it would be too large a part.
        constexpr std::int32_t least_side = 256;
        grid.spare = !request.tile_size && std::min(grid.tile_size.x, grid.tile_size.y) >= least_side ? request.spare : 0;
        grid.margin = request.margin + grid.spare;
    } else {
        grid.margin = request.single_margin;
    }
    return grid;
}

// The tiles of an image that several threads share: several for each, since models cover the middle, but not so many that seams
// cost more than an even share saves. {0, 0} where one thread alone is faster.
VT_Int_Pair shared_tile_size(const Plan_Request& request) {
    constexpr double tile_work = 1e5;    // nanoseconds of a tile, so that beginning one costs little
    constexpr double uneven_share = 0.4; // of a tile's work, by which the last thread is late
    constexpr std::int32_t least_side = 64;
    const auto threads = static_cast<std::int32_t>(threads_worth(request.work, request.threads));
    const std::int32_t n = request.supersample, most_side = request.margin > 0 ? tile_size_with_margin : tile_sizes[0];
    const VT_Int_Rectangle area = request.part.area();
    const VT_Int_Pair size{area.right - area.left + 1, area.top - area.bottom + 1};
    VT_Int_Pair best{0, 0};
    double least_time = 1; // of one thread's
    for (const std::int32_t tiles_each : {8, 6, 4, 2, 1}) {
        const double most_tiles = std::max(request.work / tile_work, 1.0),
                     tiles = std::min<double>(threads * tiles_each, most_tiles);
        const std::int32_t columns = std::max(static_cast<std::int32_t>(std::sqrt(tiles * size.x / size.y) + 0.5), 1);
        const std::int32_t rows = std::max(static_cast<std::int32_t>(tiles / columns + 0.5), 1);
        const auto side = [=](std::int32_t length, std::int32_t count) {
            const std::int32_t eights = ((length - 1) / count / 8 + 1) * 8;
            return std::clamp(eights, (least_side / n + 7) / 8 * 8, std::max(most_side / n / 8 * 8, 8));
        };
        const VT_Int_Pair tile{side(size.x, columns), side(size.y, rows)};
        const double count = std::ceil(static_cast<double>(size.x) / tile.x) * std::ceil(static_cast<double>(size.y) / tile.y);
        const double each = (1 + 2.0 * request.margin / (n * tile.x)) * (1 + 2.0 * request.margin / (n * tile.y)) / count;
        const double time = count <= 1 ? 1 : each * (std::ceil(count / threads) + uneven_share);
        if (time < least_time) {
            least_time = time;
            best = tile;
        }
    }
    return best;
}

Image_Plan plan_of(const Plan_Request& request, VT_Int_Pair tile_size, unsigned threads, std::uint32_t bands_ahead) {
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

std::optional<model::Tile_Grid> shared_grid(const Plan_Request& request) {
    const VT_Int_Pair tile = shared_tile_size(request);
    return tile.x > 0 ? std::optional(grid_of(request, tile)) : std::nullopt;
}

Image_Plan plan_image(const Plan_Request& request) {
    const VT_Int_Pair size{request.part.size.x * request.supersample, request.part.size.y * request.supersample};
    const bool fits_one_buffer = std::max(size.x, size.y) + request.beyond + 2 * request.single_margin <= largest_buffer_side;
    std::vector<VT_Int_Pair> sizes;
    if (!request.one_piece.empty()) {
        if (!fits_one_buffer || !(request.part.is_whole || request.part.share) || request.tile_size) {
            throw Usage_Error(name_of(Setting::size) + ": expected an image of " + std::to_string(largest_buffer_side) +
                              " pixels each way at most, drawn in one piece, since " + request.one_piece);
        }
        sizes.push_back({0, 0});
    } else if (request.tile_size) {
        sizes.push_back({*request.tile_size, *request.tile_size});
    } else {
        const bool is_small =
            std::int64_t{size.x} * size.y <=
            (request.margin > 0 && request.threads == 1 ? largest_single_tile_with_margin : largest_single_tile);
        const VT_Int_Pair shared = request.prefers_one_piece ? VT_Int_Pair{0, 0} : shared_tile_size(request);
        if (shared.x > 0) {
            sizes.push_back(shared);
        }
        if (request.part.is_whole && fits_one_buffer && (is_small || request.prefers_one_piece)) {
            sizes.push_back({0, 0});
        }
        const auto file_size = [&](std::int32_t drawn_size) {
            const std::int32_t side = std::max(drawn_size / request.supersample / 8 * 8, 8);
            return VT_Int_Pair{side, side};
        };
        if (request.margin > 0 && grid_of(request, file_size(tile_size_with_margin)).count() >= request.threads) {
            sizes.push_back(file_size(tile_size_with_margin));
        }
        std::ranges::transform(tile_sizes, std::back_inserter(sizes), file_size);
    }
    std::uint64_t least = UINT64_MAX;
    for (unsigned threads = request.threads; threads > 0; threads /= 2) {
        for (const VT_Int_Pair side : sizes) {
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
