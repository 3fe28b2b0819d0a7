// The tiles of a map at several zoom levels.
#include "drawing/pyramid/pyramid.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "drawing/files/helpers.h"
#include "drawing/files/memory.h"
#include "drawing/files/setting_names.h"
#include "drawing/image/image_file.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/pixel_finish.h"
#include "drawing/job/image_plan.h"

namespace vorna::drawing::pyramid {
namespace {

// Drawn pixels on a side of a block. Larger blocks draw fewer things twice, smaller ones stay in the processor's caches.
constexpr std::int32_t block_pixels = 2048;
// Of a thread, besides its buffers: the renderer, and a tile on its way into a file.
constexpr std::uint64_t thread_memory = std::uint64_t{4} << 20;
constexpr map::Extent world{-180, -90, 180, 90};
constexpr VT_RGB32 black{0, 0, 0, 255}, white{255, 255, 255, 255};

// A colour over black and over white; the same where tiles are opaque.
using Color_Pair = std::pair<std::uint32_t, std::uint32_t>;

// The colour of all pixels, as it lies in memory, or none.
std::optional<std::uint32_t> only_color(const Raster& raster) {
    const auto size = 4 * static_cast<std::size_t>(raster.width);
    if (std::memcmp(raster.top, raster.top + 4, size - 4) != 0) {
        return std::nullopt;
    }
    for (std::int32_t row = 1; row < raster.height; ++row) {
        if (std::memcmp(raster.top, raster.top + row * raster.row_bytes, size) != 0) {
            return std::nullopt;
        }
    }
    std::uint32_t color = 0;
    std::memcpy(&color, raster.top, sizeof color);
    return color;
}

std::vector<std::uint8_t> copy_of(const Raster& raster) {
    const std::size_t size = 4 * static_cast<std::size_t>(raster.width);
    std::vector<std::uint8_t> pixels(size * static_cast<std::size_t>(raster.height));
    for (std::int32_t row = 0; row < raster.height; ++row) {
        std::memcpy(&pixels[static_cast<std::size_t>(row) * size], raster.top + row * raster.row_bytes, size);
    }
    return pixels;
}

// On a side of the largest blocks.
std::uint32_t most_tiles_of(const Pyramid_Settings& settings) {
    return std::bit_floor(static_cast<unsigned>(std::max(block_pixels / (settings.tile_side * settings.supersample), 1)));
}

// One level: its image, cut into blocks, which are the tiles of the drawing.
class Level {
public:
    // block_side: tiles on a side of a block, a power of 2.
    Level(const Pyramid_Settings& settings, int zoom, std::int32_t block_side, const Drawing_Needs& needs)
        : zoom_(zoom), block_side_(std::min(block_side, 1 << zoom)), tile_pixels_(settings.tile_side * settings.supersample),
          tiles_(tiles_in(settings.extent.value_or(world), zoom)), grid_(frame(settings, zoom)),
          square_side_(most_tiles_of(settings)), parts_(settings.parts), part_(settings.part) {
        grid_.tile_size = {block_side_ * tile_pixels_, block_side_ * tile_pixels_};
        grid_.margin = needs.margin;
    }

    const Tile_Grid& grid() const noexcept { return grid_; }
    const Tile_Range& tiles() const noexcept { return tiles_; }
    // The wanted tiles of a block, which is a tile of the grid.
    Tile_Range tiles_of(std::size_t block) const {
        const auto columns = static_cast<std::size_t>(grid_.columns());
        const auto side = static_cast<std::uint32_t>(block_side_);
        const auto left = static_cast<std::uint32_t>(block % columns) * side,
                   top = static_cast<std::uint32_t>(static_cast<std::size_t>(grid_.rows()) - 1 - block / columns) * side;
        return {std::max(left, tiles_.left), std::min(left + side - 1, tiles_.right), std::max(top, tiles_.top),
                std::min(top + side - 1, tiles_.bottom)};
    }
    std::vector<std::size_t> blocks() const {
        std::vector<std::size_t> blocks;
        for (std::size_t block = 0; block < grid_.count(); ++block) {
            const Tile_Range range = tiles_of(block);
            if (range.left <= range.right && range.top <= range.bottom) {
                blocks.push_back(block);
            }
        }
        return blocks;
    }
    // Whether a tile belongs to the settings' part. Parts consist of squares of tiles whose side does not depend on the memory
    // and threads of a machine: blocks are such squares or lie inside of one.
    bool is_wanted(std::uint32_t x, std::uint32_t y) const {
        const auto column = [this](std::uint32_t tile) { return tile / square_side_; };
        const std::uint64_t columns = column(tiles_.right) - column(tiles_.left) + 1,
                            number = (column(y) - column(tiles_.top)) * columns + column(x) - column(tiles_.left);
        return (number + static_cast<std::uint64_t>(zoom_)) % parts_ == part_;
    }
    Map_Tile tile(std::uint32_t x, std::uint32_t y) const { return {zoom_, x, y}; }
    // The drawn pixels of a tile.
    VT_Int_Rectangle pixels(std::uint32_t x, std::uint32_t y) const {
        const std::int32_t left = static_cast<std::int32_t>(x) * tile_pixels_,
                           top = grid_.frame.top - static_cast<std::int32_t>(y) * tile_pixels_;
        return {left, left + tile_pixels_ - 1, top - tile_pixels_ + 1, top};
    }

private:
    static VT_Int_Rectangle frame(const Pyramid_Settings& settings, int zoom) {
        const std::int32_t last = (settings.tile_side * settings.supersample << zoom) - 1;
        return {0, last, 0, last};
    }

    int zoom_;
    std::int32_t block_side_, tile_pixels_;
    Tile_Range tiles_;
    Tile_Grid grid_;
    std::uint32_t square_side_, parts_, part_;
};

// A thread's renderer, and the images of tiles of one colour.
class Worker {
public:
    Worker(const Pyramid_Settings& settings, const Module_Choice& module)
        : settings_(settings), renderer_(module), finish_({settings.supersample, settings.transparent, nullptr, false}) {
        const auto side = static_cast<std::uint32_t>(settings.tile_side);
        form_ = {.width = side, .height = side, .opaque = !settings.transparent, .reducible = true};
        form_.file = settings.file;
        form_.compression = settings.compression;
        samples_.resize(form_.height * form_.row_bytes());
    }

    void begin_level() { renderer_.forget_options(); }

    std::vector<Drawn_Tile> draw(const Map_Drawing& drawing, const Level& level, std::size_t block) {
        const Tile_Grid& grid = level.grid();
        const VT_Int_Rectangle area = grid.pixels(block);
        std::vector<std::uint8_t> over_black;
        const auto draw_over = [&](VT_RGB32 background) {
            renderer_.draw(drawing, grid, block, background);
            return cut(raster_of(renderer_.session().color_buffer()), grid.window(block), area);
        };
        Raster before;
        if (settings_.transparent) {
            before = draw_over(black);
            over_black = copy_of(before);
            before.top = over_black.data();
            before.row_bytes = std::ptrdiff_t{4} * before.width;
        }
        const Raster drawn = draw_over(settings_.transparent ? white : settings_.background);
        std::vector<Drawn_Tile> tiles;
        const Tile_Range range = level.tiles_of(block);
        for (std::uint32_t y = range.top; y <= range.bottom; ++y) {
            for (std::uint32_t x = range.left; x <= range.right; ++x) {
                const VT_Int_Rectangle pixels = level.pixels(x, y);
                const Raster own = cut(drawn, area, pixels);
                tiles.push_back({level.tile(x, y), image_of(own, settings_.transparent ? cut(before, area, pixels) : own)});
            }
        }
        return tiles;
    }

private:
    std::shared_ptr<const std::string> image_of(const Raster& drawn, const Raster& over_black) {
        const std::optional<std::uint32_t> color = only_color(drawn),
                                           dark = color && settings_.transparent ? only_color(over_black) : color;
        if (!color || !dark) {
            return encoded(drawn, over_black);
        }
        std::shared_ptr<const std::string>& image = plain_[{*color, *dark}];
        if (!image) {
            image = encoded(drawn, over_black);
        }
        return image;
    }

    std::shared_ptr<const std::string> encoded(const Raster& drawn, const Raster& over_black) {
        if (settings_.transparent) {
            finish_.keep(over_black);
        }
        for (std::uint32_t row = 0; row < form_.height; ++row) {
            finish_.store_row(drawn, static_cast<std::int32_t>(row), {}, &samples_[row * form_.row_bytes()]);
        }
        return std::make_shared<const std::string>(image_bytes(form_, samples_.data()));
    }

    const Pyramid_Settings& settings_;
    Tile_Renderer renderer_;
    Pixel_Finish finish_;
    Image_Form form_;
    std::vector<std::uint8_t> samples_;
    std::map<Color_Pair, std::shared_ptr<const std::string>> plain_;
};

// How the work is cut so that it fits into memory.
struct Shares {
    std::int32_t block_side = 1; // tiles
    unsigned threads = 1;
};

Shares shares_of(const Pyramid_Settings& settings, const Drawing_Needs& needs) {
    const std::uint64_t pixel_memory = needs.pixel_memory + (settings.transparent ? 4 : 0),
                        other_memory = resident_memory() + needs.prepared_memory;
    const std::int32_t tile = settings.tile_side * settings.supersample;
    const std::uint32_t most_tiles = most_tiles_of(settings);
    std::uint64_t least = UINT64_MAX;
    for (unsigned threads = settings.threads; threads > 0; threads /= 2) {
        for (auto side = static_cast<std::int32_t>(most_tiles); side > 0; side /= 2) {
            const auto window = static_cast<std::uint64_t>(side * tile + 2 * needs.margin);
            const std::uint64_t needed =
                other_memory + threads * (window * window * pixel_memory + needs.thread_memory + thread_memory);
            if (needed <= settings.max_memory) {
                return {side, threads};
            }
            least = std::min(least, needed);
        }
    }
    throw Usage_Error(name_of(Setting::max_memory) + ": expected " + memory_text(least) + " or more for these tiles, found " +
                      memory_text(settings.max_memory));
}

Drawing_Needs needs_of(const Pyramid_Settings& settings, const Map_Drawing& drawing, int zoom) {
    const std::int32_t side = settings.tile_side << zoom;
    Drawing_Needs needs = drawing.needs({side, side}, settings.supersample);
    if (!needs.one_piece.empty()) {
        throw Usage_Error("zoom level " + std::to_string(zoom) + ": expected a map that can be cut into tiles, but " +
                          needs.one_piece);
    }
    return needs;
}

} // namespace

void check_levels(const Pyramid_Settings& settings, const Map_Drawing& drawing) {
    for (int zoom = settings.first_zoom; zoom <= settings.last_zoom; ++zoom) {
        shares_of(settings, needs_of(settings, drawing, zoom));
    }
}

void fit_to_pyramid(map::Map_Settings& settings) {
    settings.projection = "mercator";
    settings.bbox = world;
    settings.center = map::Position{};
}

std::uint64_t tile_count(const Pyramid_Settings& settings) {
    std::uint64_t count = 0;
    for (int zoom = settings.first_zoom; zoom <= settings.last_zoom; ++zoom) {
        count += tiles_in(settings.extent.value_or(world), zoom).count();
    }
    return count;
}

bool has_all_tiles(const Pyramid_Settings& settings, const Tile_Log& log) {
    for (int zoom = settings.first_zoom; zoom <= settings.last_zoom; ++zoom) {
        const Level level(settings, zoom, 1, {});
        const Tile_Range& range = level.tiles();
        for (std::uint32_t y = range.top; y <= range.bottom; ++y) {
            for (std::uint32_t x = range.left; x <= range.right; ++x) {
                if (level.is_wanted(x, y) && !log.has(level.tile(x, y))) {
                    return false;
                }
            }
        }
    }
    return true;
}

void draw_pyramid(const Pyramid_Settings& settings, const Module_Choice& module, Map_Drawing& drawing, Tile_Log& log) {
    std::vector<std::unique_ptr<Worker>> workers(std::max(settings.threads, 1U));
    std::mutex mutex;
    const double count = static_cast<double>(tile_count(settings)) / settings.parts;
    double done = 0;
    for (int zoom = settings.first_zoom; zoom <= settings.last_zoom; ++zoom) {
        const Drawing_Needs needs = needs_of(settings, drawing, zoom);
        const Shares shares = shares_of(settings, needs);
        const Level level(settings, zoom, shares.block_side, needs);
        std::vector<std::size_t> blocks = level.blocks();
        std::erase_if(blocks, [&](std::size_t block) {
            const Tile_Range range = level.tiles_of(block);
            if (!level.is_wanted(range.left, range.top)) {
                return true;
            }
            for (std::uint32_t y = range.top; y <= range.bottom; ++y) {
                for (std::uint32_t x = range.left; x <= range.right; ++x) {
                    if (!log.has(level.tile(x, y))) {
                        return false;
                    }
                }
            }
            done += static_cast<double>(range.count());
            return true;
        });
        if (blocks.empty()) {
            continue;
        }
        drawing.prepare(level.grid(), settings.supersample, 0);
        for (const std::unique_ptr<Worker>& worker : workers) {
            if (worker) {
                worker->begin_level();
            }
        }
        share_tasks(blocks.size(), shares.threads, [&](std::size_t task, std::size_t thread) {
            if (!workers[thread]) {
                const std::lock_guard lock(mutex); // loading a module sets a variable of the process
                workers[thread] = std::make_unique<Worker>(settings, module);
            }
            const std::vector<Drawn_Tile> tiles = workers[thread]->draw(drawing, level, blocks[task]);
            log.add(tiles);
            const std::lock_guard lock(mutex);
            done += static_cast<double>(tiles.size());
            if (settings.progress) {
                settings.progress(std::min(done / count, 1.0));
            }
        });
    }
}

} // namespace vorna::drawing::pyramid
