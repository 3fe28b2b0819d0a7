// A job: planning, tiles and the images that they make.
#include "drawing/job/job.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/files/memory.h"
#include "drawing/files/setting_names.h"
#include "drawing/image/image_file.h"
#include "drawing/job/share_rows.h"

namespace vorna::drawing {
namespace {

using Clock = std::chrono::steady_clock;

constexpr VT_RGB32 black{0, 0, 0, 255}, white{255, 255, 255, 255};

// Behind a share of the triangles alpha is 0, so that the buffer tells which pixels are drawn.
Background drawn_background(const Job_Settings& settings) {
    Background background = settings.transparent ? Background(white) : settings.background;
    if (settings.part.share) {
        background.top.alpha = background.bottom.alpha = 0;
    }
    return background;
}

} // namespace

Job::Job(const Job_Settings& settings, const Module_Choice& module, Drawing& drawing)
    : settings_(settings), module_(module), drawing_(drawing),
      needs_(drawing.needs(settings.part.size, settings.supersample)), plan_{Tile_Grid({}), 1, {}, 0, 0} {
    const auto start = Clock::now();
    if (!settings.mapped_palette.empty()) {
        std::vector<VT_RGB32> flat = settings.flat_colors;
        if (const Background background = drawn_background(settings); background.is_plain()) {
            flat.push_back(background.top);
        }
        dither_.emplace(settings.mapped_palette, flat);
    }
    finish_ = {settings.supersample, settings.transparent, dither_ ? &*dither_ : nullptr, settings.linear};
    choose_form();
    add_workers(1);
    make_plan();
    blank_check_.emplace(drawn_background(settings), plan_.grid.frame, settings.palette.get());
    times_.plan = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void Job::choose_form() {
    const VT_Int_Rectangle area = settings_.part.area();
    form_.width = static_cast<std::uint32_t>(area.right - area.left + 1);
    form_.height = static_cast<std::uint32_t>(area.top - area.bottom + 1);
    if (settings_.depths) {
        form_.colors = Image_Form::Colors::grey;
        form_.sample_bits = 16;
        form_.linear = true;
    } else if (!settings_.transparent && (dither_ || settings_.palette)) {
        form_.colors = Image_Form::Colors::palette;
        form_.palette = dither_ ? png_palette_of(settings_.mapped_palette) : png_palette_of(*settings_.palette);
    }
    form_.opaque = !settings_.transparent;
    form_.reducible = true;
    form_.file = settings_.file;
    form_.compression = settings_.compression;
    form_.pixels_per_metre = settings_.pixels_per_metre;
    if (!settings_.part.is_whole) {
        form_.place = settings_.part.bytes();
    }
    if (settings_.part.share) {
        form_ = share_form(form_);
    }
}

void Job::make_plan() {
    Plan_Request request{.part = settings_.part,
                         .form = form_,
                         .beyond = needs_.beyond,
                         .margin = needs_.margin,
                         .spare = needs_.spare,
                         // Replays accept device points in the window only.
                         .single_margin = settings_.record.empty() ? 0 : (needs_.overhang + 7) / 8 * 8,
                         .tile_size = std::nullopt,
                         .one_piece = needs_.one_piece,
                         .prefers_one_piece = !settings_.record.empty(),
                         .supersample = settings_.supersample,
                         .pixel_memory = needs_.pixel_memory + (settings_.transparent ? 4 : 0),
                         .thread_memory = needs_.thread_memory + (dither_ ? Palette_Dither::memory : 0),
                         .threads = settings_.threads > 0 ? settings_.threads : processor_count(),
                         // Threads compress numbered frames side by side.
                         .work = settings_.is_numbered ? 0 : needs_.work,
                         .max_memory = settings_.max_memory,
                         .other_memory = (settings_.other_memory > 0 ? settings_.other_memory : resident_memory()) +
                                         needs_.prepared_memory + settings_.kept_memory};
    if (settings_.tile_size > 0) {
        request.tile_size = settings_.tile_size;
    }
    other_memory_ = request.other_memory;
    plan_ = plan_image(request);
    if (settings_.is_numbered && plan_.grid.count() == 1) {
        // Small frames are drawn by one thread each.
        const unsigned threads = request.threads;
        request.threads = 1;
        plan_ = plan_image(request);
        const std::uint64_t room = (settings_.max_memory - other_memory_) / std::max<std::uint64_t>(plan_.memory, 1);
        frames_at_once_ = std::min({threads, static_cast<unsigned>(drawing_.frame_count()),
                                    static_cast<unsigned>(std::clamp<std::uint64_t>(room, 1, threads))});
    }
    if (!settings_.record.empty() && plan_.grid.count() > 1) {
        const std::int32_t most = largest_buffer_side - request.beyond - 2 * request.single_margin;
        throw Usage_Error(name_of(Setting::record) + ": expected an image that is drawn in one piece, of up to " +
                          std::to_string(most) + " pixels each way, found one of " + std::to_string(plan_.grid.count()) +
                          " tiles");
    }
}

void Job::add_workers(std::size_t count) {
    workers_.resize(std::max(workers_.size(), count));
    worker_of(0);
    if (!settings_.record.empty() && !recorder_) {
        recorder_.emplace(workers_.front()->renderer.session());
    }
}

// One after the other, since loading a module sets a variable of the process.
Job::Worker& Job::worker_of(std::size_t thread) {
    if (!workers_[thread]) {
        const std::lock_guard lock(making_workers_);
        workers_[thread] = std::make_unique<Worker>(module_, finish_);
    }
    return *workers_[thread];
}

void Job::draw_tile(Worker& worker, std::size_t tile) const {
    const Tile_Grid& grid = plan_.grid;
    if (settings_.transparent) {
        worker.renderer.draw(drawing_, grid, tile, black);
        worker.finish.keep(cut(raster_of(worker.renderer.session().color_buffer()), grid.window(tile), grid.pixels(tile)));
    }
    worker.renderer.draw(drawing_, grid, tile, drawn_background(settings_));
}

// Draws all tiles and keeps none; a single tile stays in its renderer.
void Job::draw_tiles_for_measuring() {
    times_.tiles.resize(plan_.grid.count(), std::numeric_limits<double>::infinity());
    const std::vector<std::size_t> order = model::tiles_from_middle(plan_.grid);
    share_tasks(order.size(), plan_.threads, [&](std::size_t task, std::size_t thread) {
        const std::size_t tile = order[task];
        const auto start = Clock::now();
        draw_tile(worker_of(thread), tile);
        const double taken = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        times_.tiles[tile] = std::min(times_.tiles[tile], taken);
    });
}

// The pixels of a tile in the rows of the image.
void Job::store_tile(Worker& worker, std::size_t tile, const Row_Places& places) {
    const Tile_Grid& grid = plan_.grid;
    const VT_Int_Rectangle kept = grid.pixels(tile);
    Session& session = worker.renderer.session();
    const bool reads_depths = settings_.depths || settings_.part.share;
    const VT_Reference<VT_Shared_Image> depths = reads_depths ? session.read_depth() : VT_Reference<VT_Shared_Image>();
    if (settings_.part.share) {
        store_share(cut(raster_of(session.color_buffer()), grid.window(tile), kept),
                    cut(raster_of(*depths), grid.window(tile), kept), places);
        return;
    }
    const Raster drawn = cut(depths ? raster_of(*depths) : raster_of(session.color_buffer()), grid.window(tile), kept);
    const std::int32_t n = settings_.supersample;
    const std::size_t start = static_cast<std::size_t>((kept.left - grid.area.left) / n) * form_.pixel_bytes();
    const std::int32_t first_row = (grid.area.top - kept.top) / n;
    for (std::int32_t row = 0; row < drawn.height / n; ++row) {
        std::uint8_t* samples = places(static_cast<std::uint32_t>(first_row + row)) + start;
        worker.finish.store_row(drawn, row, {kept.left / n, kept.top / n - row}, samples);
    }
    blank_check_->add(cut(raster_of(session.color_buffer()), grid.window(tile), kept), kept.top);
}

// Whether a frame covers a pixel, in an image that has the background's colours everywhere: what is drawn in just those colours
// shows over another background.
bool Job::is_covered() {
    const VT_RGB32 drawn = drawn_background(settings_).top;
    const auto contrast = [](std::uint8_t channel) { return static_cast<std::uint8_t>(channel < 128 ? 255 : 0); };
    const Background other(VT_RGB32{contrast(drawn.blue), contrast(drawn.green), contrast(drawn.red), 255});
    const Tile_Grid& grid = plan_.grid;
    Blank_Check check(other, grid.frame, settings_.palette.get());
    Tile_Renderer& renderer = workers_.front()->renderer;
    for (std::int32_t frame = 0; frame < drawing_.frame_count(); ++frame) {
        prepare(frame);
        for (std::size_t tile = 0; tile < grid.count() && check.is_blank(); ++tile) {
            renderer.draw(drawing_, grid, tile, other);
            const VT_Int_Rectangle kept = grid.pixels(tile);
            check.add(cut(raster_of(renderer.session().color_buffer()), grid.window(tile), kept), kept.top);
        }
    }
    return !check.is_blank();
}

// Parts of an image may well be empty.
void Job::refuse_blank() {
    if (blank_check_->is_blank() && settings_.part.is_whole && !settings_.allow_empty && !is_covered()) {
        throw std::runtime_error(blank_message(settings_.input));
    }
}

void Job::draw_all_tiles(const std::function<void(Worker&, std::size_t)>& take) {
    const Thread_Pool::Use use(&pool_);
    add_workers(plan_.threads);
    prepare(0);
    const std::vector<std::size_t> order = model::tiles_from_middle(plan_.grid);
    share_tasks(order.size(), plan_.threads, [&](std::size_t task, std::size_t thread) {
        const std::size_t tile = order[task];
        Worker& worker = worker_of(thread);
        draw_tile(worker, tile);
        take(worker, tile);
    });
}

void Job::draw_frame(const Take_Tile& take) {
    draw_all_tiles([&](Worker& worker, std::size_t tile) {
        take(worker.renderer.session(), plan_.grid.window(tile), plan_.grid.pixels(tile));
    });
}

void Job::make_samples(std::uint8_t* samples) {
    const Row_Places places(samples, form_.row_bytes(), form_.height);
    draw_all_tiles([&](Worker& worker, std::size_t tile) { store_tile(worker, tile, places); });
    refuse_blank();
}

Image Job::make_image() {
    std::vector<std::uint8_t> samples(form_.height * form_.row_bytes());
    make_samples(samples.data());
    Image image(static_cast<std::int32_t>(form_.width), static_cast<std::int32_t>(form_.height));
    const bool indexed = form_.colors == Image_Form::Colors::palette;
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const auto* color =
            indexed ? reinterpret_cast<const std::uint8_t*>(&form_.palette[3 * std::size_t{samples[i]}]) : &samples[4 * i];
        image.pixels[i] = {color[2], color[1], color[0], indexed ? std::uint8_t{255} : color[3]};
    }
    return image;
}

} // namespace vorna::drawing
