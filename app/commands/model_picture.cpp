// Models drawn into files.
#include "app/commands/model_picture.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/cli/progress.h"
#include "drawing/files/helpers.h"
#include "drawing/files/input_file.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/image/image_file.h"
#include "drawing/image/palette.h"
#include "drawing/image/pixel_finish.h"
#include "drawing/image/sha256.h"
#include "drawing/image/sight.h"
#include "drawing/job/drawn_model.h"
#include "drawing/job/frame_names.h"
#include "drawing/job/picture_part.h"
#include "drawing/job/picture_plan.h"
#include "drawing/job/picture_stream.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_file.h"

namespace vorna::app {
namespace {

using Clock = std::chrono::steady_clock;

constexpr VT_RGB32 black{0, 0, 0, 255}, white{255, 255, 255, 255};

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// What is drawn: the picture, or a part of it.
drawing::Picture_Part parsed_part(const Model_Picture& options) {
    drawing::Picture_Part part;
    part.size = parsed_pair(options.size, drawing::largest_side,
                            "--size: expected WIDTHxHEIGHT with sides from 1 to " + std::to_string(drawing::largest_side));
    if (!options.tiles_of.empty()) {
        const VT_Int_Pair parts =
            parsed_pair(options.tiles_of, 1 << 10, "--tiles-of: expected COLUMNSxROWS with numbers from 1 to 1024");
        part.columns = parts.x;
        part.rows = parts.y;
        part.number = options.tile;
        if (!part.is_possible()) {
            throw drawing::Usage_Error("--tiles-of: expected parts of 8 pixels or more, found " + options.tiles_of +
                                       " for --size " + options.size);
        }
        if (part.number >= parts.x * parts.y) {
            throw drawing::Usage_Error("--tile: expected a number from 0 to " + std::to_string(parts.x * parts.y - 1) +
                                       ", found " + std::to_string(part.number));
        }
    }
    return part;
}

// Options that exclude each other, or need another one.
void check_combinations(const Model_Picture& options, const drawing::Picture_Part& part, const Palette_Choice& palette) {
    const std::string supersample = "--supersample " + std::to_string(options.supersample), turntable = "--turntable";
    const auto refuse = [](bool wrong, const std::string& option, const std::string& expected, const std::string& found) {
        if (wrong) {
            throw drawing::Usage_Error(option + ": expected " + expected + ", found " + found);
        }
    };
    const std::string indexed = options.palette.empty() ? "--colors 8" : "--palette " + options.palette;
    const bool mapped = !palette.mapped.empty(), transparent = options.is_transparent();
    refuse(options.supersample > 1 && palette.drawn, "--supersample", "32 bits a pixel or a palette from a file", indexed);
    refuse(transparent && (palette.drawn || mapped), "--background none", "32 bits a pixel", indexed);
    refuse(std::max(part.size.x, part.size.y) > drawing::largest_side / options.supersample, "--supersample",
           "sides that enlarged have " + std::to_string(drawing::largest_side) + " pixels at most", "--size " + options.size);
    refuse(options.tile_size % 8 != 0, "--tile-size", "a multiple of 8", std::to_string(options.tile_size));
    refuse(options.tile_size > drawing::largest_tile / options.supersample, "--tile-size",
           "tiles that enlarged have sides of " + std::to_string(drawing::largest_tile) + " pixels at most", supersample);
    if (!options.record.empty()) {
        const std::string pixels = "pixels as the renderer draws them";
        refuse(options.supersample > 1, "--record", pixels, supersample);
        refuse(mapped, "--record", pixels, indexed);
        refuse(transparent, "--record", "a colour behind what is drawn", "--background none");
        refuse(options.turntable > 0, "--record", "a single picture", turntable);
        refuse(drawing::is_standard_output(options.record) && drawing::is_standard_output(options.output),
               "--record " + options.record, "another file", "-o " + options.output);
    }
    refuse(options.turntable > 0 && options.repeat > 1, "--repeat", "a single picture", turntable);
}

// What --stats tells.
struct Times {
    double load = 0, setup = 0, prepare = 0;
    std::vector<double> draws; // with preparing
    double written = 0;        // drawing and writing together, in pictures of several tiles
};

// A thread's renderer, and what becomes of its pixels.
struct Worker {
    Worker(const drawing::Module_Choice& module, const Palette_Choice& palette, const drawing::Finish_Settings& settings)
        : artist(module, palette.drawn), finish(settings) {}

    drawing::Tile_Artist artist;
    drawing::Pixel_Finish finish;
};

class Rendering {
public:
    Rendering(const Model_Picture& options, const drawing::Module_Choice& module);

    void load(std::vector<drawing::Input> inputs);
    // How it is cut into tiles. Throws Usage_Error for what does not fit into memory.
    void plan();
    void describe() const;
    void draw();

private:
    void add_workers(std::size_t count);
    void make_cameras();
    void prepare(const drawing::model::Camera& camera);
    void draw_tile(Worker& worker, std::size_t tile) const;
    void draw_tiles();
    void store_tile(Worker& worker, std::size_t tile, const drawing::Row_Places& places);
    void check_sight() const;
    void draw_picture();
    void draw_frames();
    void draw_frames_side_by_side(std::vector<std::unique_ptr<drawing::Output_File>>& files, std::vector<std::string>& hashes);
    void warn_of_cut_frames() const;
    void write(drawing::Output_File& file, std::string& hash, unsigned threads, const std::vector<Worker*>& workers,
               bool is_drawn, std::function<void(double)> progress);
    void print_stats() const;

    bool is_turntable() const noexcept { return options_.turntable > 0; }
    std::int32_t frame_count() const noexcept { return std::max(options_.turntable, 1); }

    const Model_Picture& options_;
    const drawing::Module_Choice& module_;
    drawing::Picture_Part part_;
    Palette_Choice palette_;
    VT_RGB32 background_;
    drawing::model::Edge_Settings edge_settings_;
    drawing::model::Picture_Settings settings_;
    std::optional<drawing::Palette_Dither> dither_;
    drawing::Finish_Settings finish_;
    drawing::Png_Form form_;
    std::vector<std::unique_ptr<Worker>> workers_;
    std::optional<drawing::recording::Recorder> recorder_;
    std::optional<drawing::Sight> sight_;

    drawing::Drawn_Model model_;
    drawing::model::Camera_Settings camera_settings_;
    VT_Vector_D turning_place_;                   // that the axis of a turntable goes through
    std::vector<drawing::model::Camera> cameras_; // by frame
    std::optional<drawing::Picture_Plan> plan_;
    std::uint64_t model_memory_ = 0;
    unsigned frames_at_once_ = 1;
    Times times_;
};

Rendering::Rendering(const Model_Picture& options, const drawing::Module_Choice& module)
    : options_(options), module_(module), part_(parsed_part(options)), palette_(palette_of(options)),
      background_(options.is_transparent() ? white : background_of(options)), edge_settings_(edge_settings_of(options)),
      settings_(picture_settings_of(options)) {
    base_color_of(options);
    check_combinations(options, part_, palette_);
    if (!options.dry_run) {
        drawing::refuse_terminal("-o", options.output);
    }
    if (is_turntable()) {
        drawing::frame_name(options.output, 0, options.turntable);
    }
    // Lines keep their width; the mean of smaller pixels is smooth without the renderer's help.
    edge_settings_.width = options.supersample;
    edge_settings_.smoothed = options.antialias && options.supersample == 1;
    if (!palette_.mapped.empty()) {
        std::vector<VT_RGB32> flat{background_};
        if (options.has_edges() && edge_settings_.color) {
            flat.push_back(*edge_settings_.color);
        }
        dither_.emplace(palette_.mapped, flat);
    }
    finish_ = {options.supersample, options.is_transparent(), dither_ ? &*dither_ : nullptr};
    add_workers(1);
    if (!options.record.empty()) {
        recorder_.emplace(workers_.front()->artist.session());
    }

    const VT_Int_Rectangle area = part_.area();
    form_.width = static_cast<std::uint32_t>(area.right - area.left + 1);
    form_.height = static_cast<std::uint32_t>(area.top - area.bottom + 1);
    std::vector<std::uint8_t> sample{background_.red, background_.green, background_.blue, background_.alpha};
    if (options.is_transparent()) {
        sample.assign(4, 0);
    } else if (dither_ || palette_.drawn) {
        form_.colors = drawing::Png_Form::Colors::palette;
        if (dither_) {
            form_.palette = drawing::png_palette_of(palette_.mapped);
            sample = {dither_->nearest(background_)};
        } else {
            form_.palette = drawing::png_palette_of(*palette_.drawn);
            sample = {static_cast<std::uint8_t>(palette_.drawn->closest_match(background_, false))};
        }
    }
    if (!part_.is_whole()) {
        form_.place = part_.bytes();
    }
    sight_.emplace(std::move(sample));
}

void Rendering::add_workers(std::size_t count) {
    while (workers_.size() < count) {
        workers_.push_back(std::make_unique<Worker>(module_, palette_, finish_));
    }
}

void Rendering::load(std::vector<drawing::Input> inputs) {
    const auto start = Clock::now();
    const drawing::model::Mesh mesh = load_mesh(options_, std::move(inputs), options_.allow_empty);
    times_.load = milliseconds_since(start);
    std::vector<std::string> images;
    for (const drawing::model::Image_Source& image : mesh.images) {
        images.push_back(image.embedded ? std::string() : image.name);
    }
    drawing::refuse_same_files(images, {options_.output, options_.record});
    const auto setup_start = Clock::now();
    model_ = make_model(options_, mesh);
    camera_settings_ = camera_settings_of(options_, mesh, part_.size);
    if (camera_settings_.aim) {
        turning_place_ = camera_settings_.aim->target;
    }
    times_.setup = milliseconds_since(setup_start);
}

void Rendering::plan() {
    const auto start = Clock::now();
    drawing::Plan_Request request{.part = part_,
                                  .form = form_,
                                  .margin = model_.edges ? drawing::model::Edge_Renderer::tile_margin(edge_settings_) : 0,
                                  .tile_size = std::nullopt,
                                  .supersample = options_.supersample,
                                  .pixel_memory = drawing::Tile_Artist::pixel_memory + (options_.is_transparent() ? 4 : 0),
                                  .thread_memory = dither_ ? drawing::Palette_Dither::memory : 0,
                                  .threads =
                                      options_.threads > 0 ? options_.threads : std::max(1U, std::thread::hardware_concurrency()),
                                  .max_memory = options_.limits->memory(),
                                  .model_memory = drawing::resident_memory() + model_.prepared_memory()};
    if (options_.tile_size > 0) {
        request.tile_size = options_.tile_size;
    }
    model_memory_ = request.model_memory;
    plan_ = drawing::plan_picture(request);
    if (is_turntable() && plan_->grid.count() == 1) {
        // Small frames are drawn by one thread each.
        const unsigned threads = request.threads;
        request.threads = 1;
        plan_ = drawing::plan_picture(request);
        const std::uint64_t room = (options_.limits->memory() - model_memory_) / std::max<std::uint64_t>(plan_->memory, 1);
        frames_at_once_ = std::min(
            {threads, static_cast<unsigned>(frame_count()), static_cast<unsigned>(std::clamp<std::uint64_t>(room, 1, threads))});
    }
    if (recorder_ && plan_->grid.count() > 1) {
        throw drawing::Usage_Error("--record: expected a picture that is drawn in one piece, found one of " +
                                   std::to_string(plan_->grid.count()) + " tiles");
    }
    times_.setup += milliseconds_since(start);
}

void Rendering::describe() const {
    const drawing::model::Tile_Grid& grid = plan_->grid;
    const auto print = [](const char* what, const std::string& text) {
        app::print(stdout, what + (": " + drawing::printable(text)) + '\n');
    };
    const auto sides = [](std::int64_t width, std::int64_t height) {
        return std::to_string(width) + "x" + std::to_string(height);
    };
    for (const std::string& file : options_.models) {
        print("model", drawing::name_of_input(file));
    }
    print("drawn", model_.summary());
    const bool indexed = form_.colors == drawing::Png_Form::Colors::palette;
    print("picture", sides(form_.width, form_.height) + (part_.is_whole() ? "" : " of " + sides(part_.size.x, part_.size.y)) +
                         (indexed                     ? ", " + std::to_string(form_.palette.size() / 3) + " colours"
                          : options_.is_transparent() ? ", 32 bits a pixel, transparent"
                                                      : ", 32 bits a pixel"));
    const std::string threads = std::to_string(std::max(plan_->threads, frames_at_once_)) +
                                (std::max(plan_->threads, frames_at_once_) == 1 ? " thread" : " threads");
    print("tiles", std::to_string(grid.count()) + " of " +
                       sides(std::min(grid.tile_size.x, grid.area.right - grid.area.left + 1),
                             std::min(grid.tile_size.y, grid.area.top - grid.area.bottom + 1)) +
                       " pixels, " + threads);
    if (is_turntable()) {
        print("frames", std::to_string(frame_count()));
    }
    const std::uint64_t picture = plan_->memory * frames_at_once_;
    print("memory", drawing::memory_text(model_memory_ + picture) + " of " + drawing::memory_text(options_.limits->memory()) +
                        ", " + drawing::memory_text(picture) + " of it for the picture");
    std::string output = options_.output;
    if (is_turntable()) {
        const std::string last = drawing::frame_name(options_.output, frame_count() - 1, frame_count());
        output = drawing::frame_name(options_.output, 0, frame_count()) + (frame_count() > 1 ? " to " + last : "");
    }
    print("file", output == "-" ? "standard output" : output);
}

// Frames of a turntable after the first one look from places around the model's middle, or around what the camera looks at.
void Rendering::make_cameras() {
    drawing::model::Camera_Settings settings = camera_settings_;
    cameras_.push_back(drawing::model::fit_camera(settings, model_.points()));
    if (frame_count() == 1) {
        return;
    }
    const drawing::model::Aim first = settings.aim ? *settings.aim : drawing::model::fitted_aim(settings, model_.points());
    for (std::int32_t frame = 1; frame < frame_count(); ++frame) {
        settings.aim =
            drawing::model::turned_aim(first, turning_place_, drawing::model::up_direction(settings.up), frame, frame_count());
        cameras_.push_back(drawing::model::fit_camera(settings, model_.points()));
    }
}

void Rendering::prepare(const drawing::model::Camera& camera) {
    model_.prepare(plan_->grid, camera, settings_, edge_settings_);
}

void Rendering::draw_tile(Worker& worker, std::size_t tile) const {
    const drawing::model::Tile_Grid& grid = plan_->grid;
    if (options_.is_transparent()) {
        worker.artist.draw(model_, grid, tile, black);
        worker.finish.keep(
            drawing::cut(drawing::raster_of(worker.artist.session().color_buffer()), grid.window(tile), grid.pixels(tile)));
    }
    worker.artist.draw(model_, grid, tile, background_);
}

// Draws all tiles and keeps none, for measuring.
void Rendering::draw_tiles() {
    const std::size_t count = plan_->grid.count();
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::exception_ptr failure;
    const auto work = [&](Worker& worker) {
        try {
            for (std::size_t tile = next++; tile < count; tile = next++) {
                draw_tile(worker, tile);
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            failure = std::current_exception();
            next = count;
        }
    };
    drawing::work_together(std::min(workers_.size(), count), [&](std::size_t i) { work(*workers_[i]); });
    if (failure) {
        std::rethrow_exception(failure);
    }
}

// The pixels of a tile in the file's rows.
void Rendering::store_tile(Worker& worker, std::size_t tile, const drawing::Row_Places& places) {
    const drawing::model::Tile_Grid& grid = plan_->grid;
    const VT_Int_Rectangle kept = grid.pixels(tile);
    const drawing::Raster drawn =
        drawing::cut(drawing::raster_of(worker.artist.session().color_buffer()), grid.window(tile), kept);
    const std::int32_t n = options_.supersample;
    const std::size_t start = static_cast<std::size_t>((kept.left - grid.area.left) / n) * form_.pixel_bytes();
    const std::int32_t first_row = (grid.area.top - kept.top) / n;
    for (std::int32_t row = 0; row < drawn.height / n; ++row) {
        std::uint8_t* samples = places(static_cast<std::uint32_t>(first_row + row)) + start;
        worker.finish.store_row(drawn, row, {kept.left / n, kept.top / n - row}, samples);
        sight_->look_at(samples, static_cast<std::size_t>(drawn.width / n));
    }
}

// The same file whatever the plan.
void Rendering::write(drawing::Output_File& file, std::string& hash, unsigned threads, const std::vector<Worker*>& workers,
                      bool is_drawn, std::function<void(double)> progress) {
    const drawing::model::Tile_Grid& grid = plan_->grid;
    drawing::Picture_Source source;
    source.band_ends = plan_->band_ends;
    source.parts = static_cast<std::uint32_t>(grid.columns());
    source.make = [&](unsigned thread, std::uint32_t band, std::uint32_t part, const drawing::Row_Places& places) {
        const auto row = static_cast<std::size_t>(grid.rows()) - 1 - band;
        const std::size_t tile = row * source.parts + part;
        Worker& worker = grid.count() == 1 ? *workers.front() : *workers[thread];
        if (!is_drawn) {
            draw_tile(worker, tile);
        }
        store_tile(worker, tile, places);
    };
    drawing::Sha256 digest;
    drawing::write_picture(file, form_, source,
                           {threads, plan_->rows_ahead, options_.hash ? &digest : nullptr, std::move(progress)});
    if (options_.hash) {
        hash = digest.finish();
    }
}

// Parts of a picture may well be empty.
void Rendering::check_sight() const {
    if (sight_->is_empty() && part_.is_whole() && !options_.allow_empty) {
        throw std::runtime_error(drawing::nothing_seen(drawing::name_of_input(options_.models.front()) +
                                                       (options_.models.size() > 1 ? " and others" : "")));
    }
}

void Rendering::draw_picture() {
    drawing::Output_Files recording;
    const bool several = plan_->grid.count() > 1;
    const bool measured = !several || options_.stats || options_.repeat > 1;
    add_workers(several ? plan_->threads : 1);
    for (int i = 0; i < options_.repeat; ++i) {
        const auto start = Clock::now();
        prepare(cameras_.front());
        times_.prepare = milliseconds_since(start);
        if (measured) {
            draw_tiles();
        }
        times_.draws.push_back(milliseconds_since(start));
        if (recorder_ && i == 0) {
            recording.add(options_.record,
                          drawing::recording::file_of(recorder_->finish(plan_->grid.pixels(0)), options_.record));
        }
    }
    const auto start = Clock::now();
    std::vector<Worker*> workers;
    std::ranges::transform(workers_, std::back_inserter(workers), [](const auto& worker) { return worker.get(); });
    std::string hash;
    {
        const drawing::Interruption interruption;
        drawing::Output_File file(options_.output);
        Progress progress;
        write(file, hash, plan_->threads, workers, !several, [&progress](double done) { progress.show(done); });
        check_sight();
        file.commit();
    }
    if (options_.hash) {
        drawing::print_line(drawing::is_standard_output(options_.record) ? options_.record : options_.output, hash);
    }
    recording.commit();
    times_.written = milliseconds_since(start);
}

// Frames that reach over the picture's border while the first one does not.
void Rendering::warn_of_cut_frames() const {
    double first = 0, farthest = 0;
    std::int32_t count = 0;
    for (std::int32_t frame = 0; frame < frame_count(); ++frame) {
        const double reach = drawing::model::reach_of(cameras_[static_cast<std::size_t>(frame)], model_.points());
        first = frame == 0 ? reach : first;
        farthest = std::max(farthest, reach);
        count += reach > 1;
    }
    if (count > 0 && first <= 1) {
        constexpr double near_by = 10;
        char advice[64] = "a --camera farther away does";
        if (farthest < near_by) {
            std::snprintf(advice, sizeof advice, "--zoom %.2g does", options_.camera.zoom * 0.98 / farthest);
        }
        warn("--turntable: " + std::to_string(count) + " of " + std::to_string(frame_count()) +
             " frames do not show the whole model; " + advice);
    }
}

// Frames of one tile at the same time. What is prepared is one frame's, so they are drawn in turn; compressing takes longer.
void Rendering::draw_frames_side_by_side(std::vector<std::unique_ptr<drawing::Output_File>>& files,
                                         std::vector<std::string>& hashes) {
    std::mutex drawing, noting;
    std::exception_ptr failure;
    std::atomic<std::int32_t> next{0};
    std::int32_t done = 0;
    Progress progress;
    const auto work = [&](Worker& worker) {
        try {
            for (std::int32_t frame = next++; frame < frame_count(); frame = next++) {
                const auto f = static_cast<std::size_t>(frame);
                {
                    const std::lock_guard lock(drawing);
                    const auto start = Clock::now();
                    prepare(cameras_[f]);
                    draw_tile(worker, 0);
                    times_.draws.push_back(milliseconds_since(start));
                }
                files[f] = std::make_unique<drawing::Output_File>(drawing::frame_name(options_.output, frame, frame_count()));
                write(*files[f], hashes[f], 1, {&worker}, true, [](double) {});
                files[f]->close();
                const std::lock_guard lock(noting);
                progress.show(static_cast<double>(++done) / frame_count());
            }
        } catch (...) {
            const std::lock_guard lock(noting);
            failure = failure ? failure : std::current_exception();
            next = frame_count();
        }
    };
    drawing::work_together(frames_at_once_, [&](std::size_t i) { work(*workers_[i]); });
    if (failure) {
        std::rethrow_exception(failure);
    }
}

// All frames are complete beside their places before the first one moves there.
void Rendering::draw_frames() {
    warn_of_cut_frames();
    const auto count = static_cast<std::size_t>(frame_count());
    std::vector<std::unique_ptr<drawing::Output_File>> files(count);
    std::vector<std::string> hashes(count);
    const auto start = Clock::now();
    const drawing::Interruption interruption;
    add_workers(plan_->grid.count() > 1 ? plan_->threads : frames_at_once_);
    if (plan_->grid.count() == 1) {
        draw_frames_side_by_side(files, hashes);
    } else {
        std::vector<Worker*> workers;
        std::ranges::transform(workers_, std::back_inserter(workers), [](const auto& worker) { return worker.get(); });
        Progress progress;
        for (std::size_t f = 0; f < count; ++f) {
            const auto frame = static_cast<std::int32_t>(f);
            const auto prepare_start = Clock::now();
            prepare(cameras_[f]);
            times_.prepare = milliseconds_since(prepare_start);
            files[f] = std::make_unique<drawing::Output_File>(drawing::frame_name(options_.output, frame, frame_count()));
            write(*files[f], hashes[f], plan_->threads, workers, false,
                  [&](double done) { progress.show((static_cast<double>(f) + done) / static_cast<double>(count)); });
            files[f]->close();
        }
    }
    check_sight();
    for (const std::unique_ptr<drawing::Output_File>& file : files) {
        file->commit();
    }
    for (std::size_t f = 0; f < count && options_.hash; ++f) {
        print(stdout, hashes[f] + "  " +
                          drawing::printable(drawing::frame_name(options_.output, static_cast<std::int32_t>(f), frame_count())) +
                          '\n');
    }
    times_.written = milliseconds_since(start);
}

void Rendering::print_stats() const {
    const Times& times = times_;
    std::vector<double> draws = times.draws;
    std::ranges::sort(draws);
    print(stderr, drawing::printable(model_.summary())); // names of textures are in it
    std::fprintf(stderr, ", load %.1f ms, setup %.1f ms", times.load, times.setup);
    if (!draws.empty()) {
        std::fprintf(stderr, ", draw %.2f ms", draws.front());
    }
    if (draws.size() > 1) {
        std::fprintf(stderr, " at best, %.2f ms in the middle of %zu", draws[draws.size() / 2], draws.size());
    }
    if (plan_->grid.count() > 1) {
        std::fprintf(stderr, ", %sprepare %.2f ms, %zu tiles of %dx%d by %u threads", draws.empty() ? "" : "of it ",
                     times.prepare, plan_->grid.count(), plan_->grid.tile_size.x, plan_->grid.tile_size.y, plan_->threads);
    }
    if (is_turntable()) {
        std::fprintf(stderr, ", %d frames", frame_count());
    }
    if (is_turntable() || plan_->grid.count() > 1) {
        std::fprintf(stderr, ", drawn and written in %.1f ms", times.written);
    }
    std::fputc('\n', stderr);
}

void Rendering::draw() {
    make_cameras();
    if (is_turntable()) {
        draw_frames();
    } else {
        draw_picture();
    }
    if (options_.stats) {
        print_stats();
    }
}

} // namespace

void render_models(const Model_Picture& picture, std::vector<drawing::Input> inputs, const drawing::Module_Choice& module) {
    Rendering rendering(picture, module);
    rendering.load(std::move(inputs));
    rendering.plan();
    if (picture.dry_run) {
        drawing::Output_File::check(picture.turntable > 0 ? drawing::frame_name(picture.output, 0, picture.turntable)
                                                          : picture.output);
        if (!picture.record.empty()) {
            drawing::Output_File::check(picture.record);
        }
        rendering.describe();
    } else {
        rendering.draw();
    }
}

} // namespace vorna::app
