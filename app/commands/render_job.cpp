// `render`: from options to a job, for models and maps alike.
#include "app/commands/render_job.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/cli/numbers.h"
#include "app/cli/progress.h"
#include "app/commands/part_origin.h"
#include "app/commands/render_plan.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/image/image_formats.h"
#include "drawing/job/frame_names.h"
#include "drawing/job/part_files.h"
#include "drawing/job/print_size.h"

namespace vorna::app {
namespace {

std::string sides(std::int64_t width, std::int64_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

// Of a part that is not as large as the others.
std::optional<VT_Int_Rectangle> cut_of(const Render_Options& options, VT_Int_Pair size) {
    if (options.area.empty()) {
        return std::nullopt;
    }
    if (const auto numbers = numbers_in(options.area, ",,x")) {
        const auto [x, y, width, height] = *numbers;
        const auto fits = [](std::int32_t first, std::int32_t length, std::int32_t whole) {
            return first >= 0 && length > 0 && first < whole && length <= whole - first;
        };
        if (fits(x, width, size.x) && fits(y, height, size.y)) {
            drawing::Image_Part part{.size = size};
            part.cut = {{x, x + width - 1, size.y - y - height, size.y - 1 - y}};
            if (part.is_possible()) {
                return part.cut;
            }
        }
    }
    throw drawing::Usage_Error(
        "--area: expected X,Y,WxH, the top left pixel of an area of the image of " + sides(size.x, size.y) +
        " and its size, cut at multiples of 8 from the lower left corner, found '" + drawing::printable(options.area) + "'");
}

// What is made: the image, or a part of it.
drawing::Image_Part part_of(const Render_Options& options, VT_Int_Pair size) {
    drawing::Image_Part part;
    part.size = size;
    if (!options.tiles_of.empty()) {
        const std::int32_t most = options.area.empty() ? 1 << 10 : most_planned_parts;
        const VT_Int_Pair parts = parsed_pair(options.tiles_of, most,
                                              "--tiles-of: expected COLUMNSxROWS with numbers from 1 to " + std::to_string(most));
        part.is_whole = false;
        part.columns = parts.x;
        part.rows = parts.y;
        part.number = options.tile;
        part.cut = cut_of(options, size);
        if (!part.is_possible()) {
            throw drawing::Usage_Error("--tiles-of: expected parts of 8 pixels or more, found " + options.tiles_of +
                                       " for --size " + std::to_string(size.x) + 'x' + std::to_string(size.y));
        }
        if (const std::int64_t last = std::int64_t{parts.x} * parts.y - 1; part.number > last) {
            throw drawing::Usage_Error("--tile: expected " +
                                       (last == 0 ? "0, the only part" : "a number from 0 to " + std::to_string(last)) +
                                       ", found " + std::to_string(part.number));
        }
    }
    return part;
}

// Throws Usage_Error for options that exclude each other, or need another one.
void check_combinations(const Render_Options& options, VT_Int_Pair size, std::int32_t count, const Palette_Choice& palette) {
    const std::string supersample = "--supersample " + std::to_string(count), turntable = "--turntable";
    const auto refuse = [](bool wrong, const std::string& option, const std::string& expected, const std::string& found) {
        if (wrong) {
            throw drawing::Usage_Error(option + ": expected " + expected + ", found " + found);
        }
    };
    const std::string indexed = options.palette.empty() ? "--colors 8" : "--palette " + options.palette;
    const bool mapped = !palette.mapped.empty(), transparent = options.is_transparent();
    const bool drawn = palette.drawn || (!mapped && options.colors == 8);
    refuse(count > 1 && drawn, "--supersample", "32 bits a pixel or a palette from a file", indexed);
    refuse(transparent && (drawn || mapped), "--background none", "32 bits a pixel", indexed);
    refuse(std::max(size.x, size.y) > drawing::largest_side / count, "--supersample",
           "sides that enlarged have " + std::to_string(drawing::largest_side) + " pixels at most",
           "--size " + std::to_string(size.x) + 'x' + std::to_string(size.y));
    refuse(options.tile_size % 8 != 0, "--tile-size", "a multiple of 8", std::to_string(options.tile_size));
    refuse(options.tile_size > drawing::largest_tile / count, "--tile-size",
           "tiles that enlarged have sides of " + std::to_string(drawing::largest_tile) + " pixels at most", supersample);
    if (options.studio) {
        const std::string look = "--look studio";
        refuse(drawn, look, "32 bits a pixel or a palette from a file", indexed);
        refuse(!options.has_faces() || options.picture.shading == drawing::model::Shading::hidden_line, look, "shaded faces",
               "--shading wireframe or hidden-line");
        refuse(!options.record.empty(), "--record", "pixels as the renderer draws them", look);
    }
    if (!options.pass.empty()) {
        const std::string pass = "--pass " + options.pass;
        refuse(count > 1, pass, "pixels as the renderer draws them", supersample);
        refuse(drawn || mapped, pass, "32 bits a pixel", indexed);
        refuse(options.has_edges(), pass, "shaded faces alone", "edges");
        refuse(options.axes || options.scale_bar, pass, "shaded faces alone", options.axes ? "--axes" : "--scale-bar");
        const drawing::Image_File file = output_file_of(options.image);
        refuse(options.pass == "depth" && file != drawing::Image_File::png, pass, "a PNG file", output_choice(options.image));
        refuse(file == drawing::Image_File::jpeg, pass, "a file that keeps every pixel", output_choice(options.image));
    }
    if (!options.record.empty()) {
        const std::string pixels = "pixels as the renderer draws them";
        refuse(count > 1, "--record", pixels, supersample);
        refuse(mapped, "--record", pixels, indexed);
        refuse(transparent, "--record", "a colour behind what is drawn", "--background none");
        refuse(options.turntable > 0, "--record", "a single image", turntable);
        refuse(!options.tiles_of.empty(), "--record", "a whole image", "--tiles-of " + options.tiles_of);
        refuse(drawing::is_standard_output(options.record) && drawing::is_standard_output(options.image.output),
               "--record " + options.record, "another file", "-o " + options.image.output);
    }
    refuse(options.turntable > 0 && options.repeat > 1, "--repeat", "a single image", turntable);
}

// The files' names, of a turntable those of the first and the last frame.
std::string output_text(const Render_Options& options) {
    if (options.image.output == "-") {
        return "standard output";
    }
    const std::int32_t count = options.turntable;
    if (count == 0) {
        return options.image.output;
    }
    const std::string last = count > 1 ? " to " + drawing::frame_name(options.image.output, count - 1, count) : "";
    return drawing::frame_name(options.image.output, 0, count) + last;
}

void describe(const Render_Options& options, const drawing::Job_Settings& settings, const drawing::Job& job,
              const drawing::Drawing& drawing, const std::string& kind) {
    const drawing::Tile_Grid& grid = job.plan().grid;
    const drawing::Image_Form& form = job.form();
    const auto print = [](const std::string& what, const std::string& text) {
        app::print(stdout, what + (": " + drawing::printable(text)) + '\n');
    };
    for (const std::string& file : options.models) {
        print(kind, drawing::name_of_input(file));
    }
    print("drawn", drawing.summary());
    const bool indexed = form.colors == drawing::Image_Form::Colors::palette;
    const drawing::Image_Part& part = settings.part;
    print("image", sides(form.width, form.height) + (part.is_whole ? "" : " of " + sides(part.size.x, part.size.y)) +
                       (settings.depths            ? ", depths of 16 bits"
                        : indexed                  ? ", " + std::to_string(form.palette.size() / 3) + " colours"
                        : options.is_transparent() ? ", 32 bits a pixel, transparent"
                                                   : ", 32 bits a pixel") +
                       (settings.supersample > 1 ? ", means of " + sides(settings.supersample, settings.supersample) : ""));
    const std::string threads = std::to_string(job.threads()) + (job.threads() == 1 ? " thread" : " threads");
    print("tiles", std::to_string(grid.count()) + " of " +
                       sides(std::min(grid.tile_size.x, grid.area.right - grid.area.left + 1),
                             std::min(grid.tile_size.y, grid.area.top - grid.area.bottom + 1)) +
                       " pixels, " + threads);
    if (options.turntable > 0) {
        print("frames", std::to_string(options.turntable));
    }
    const std::uint64_t image = job.image_memory();
    print("memory", drawing::memory_text(job.other_memory() + image) + " of " + drawing::memory_text(settings.max_memory) + ", " +
                        drawing::memory_text(image) + " of it for the image");
    print("file", output_text(options));
}

// Throws where standard output takes nothing. An interrupt ends the process without what is not flushed.
void print_digests(const Render_Options& options, const std::vector<std::string>& digests) {
    if (!options.output_folder.empty()) {
        print(stdout, digests.front() + "  " + drawing::printable(options.image.output) + '\n');
    } else if (options.turntable == 0) {
        print_line(drawing::is_standard_output(options.record) ? options.record : options.image.output, digests.front());
    }
    for (std::size_t f = 0; options.turntable > 0 && f < digests.size(); ++f) {
        const std::string name = drawing::frame_name(options.image.output, static_cast<std::int32_t>(f), options.turntable);
        print(stdout, digests[f] + "  " + drawing::printable(name) + '\n');
    }
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error("standard output: cannot be written" +
                                 (errno != 0 ? ": " + std::generic_category().message(errno) : std::string()));
    }
}

void print_stats(const Render_Options& options, const drawing::Job& job, const drawing::Drawing& drawing,
                 const Load_Times& before, const drawing::Job_Times& times) {
    const drawing::Image_Plan& plan = job.plan();
    const bool several = plan.grid.count() > 1;
    std::vector<double> draws = times.draws;
    std::ranges::sort(draws);
    print(stderr, drawing::printable(drawing.summary())); // names of textures are in it
    std::fprintf(stderr, ", load %.1f ms, setup %.1f ms", before.load, before.setup + times.plan);
    if (!draws.empty()) {
        std::fprintf(stderr, ", draw %.2f ms", draws.front());
    }
    if (draws.size() > 1) {
        std::fprintf(stderr, " at best, %.2f ms in the middle of %zu", draws[draws.size() / 2], draws.size());
    }
    if (several) {
        std::fprintf(stderr, ", %sprepare %.2f ms, %zu tiles of %dx%d by %u threads", draws.empty() ? "" : "of it ",
                     times.prepare, plan.grid.count(), plan.grid.tile_size.x, plan.grid.tile_size.y, plan.threads);
    }
    if (options.turntable > 0) {
        std::fprintf(stderr, ", %d frames", options.turntable);
    }
    if (options.turntable > 0 || several) {
        std::fprintf(stderr, ", drawn and written in %.1f ms", times.written);
    }
    std::fputc('\n', stderr);
}

// The time of preparing, then a line for each tile, in milliseconds.
void write_tile_times(const std::string& file, const drawing::Job_Times& times) {
    std::string text;
    const auto add = [&text](double milliseconds) {
        char line[32];
        std::snprintf(line, sizeof line, "%.6f\n", milliseconds);
        text += line;
    };
    add(times.prepare);
    std::ranges::for_each(times.tiles, add);
    drawing::write_file(file, text);
}

} // namespace

VT_Int_Pair image_size_of(const Render_Options& options) {
    if (const std::optional<VT_Int_Pair> paper = drawing::paper_pixels(options.print)) {
        return *paper;
    }
    return parsed_pair(options.size, drawing::largest_side,
                       "--size: expected WIDTHxHEIGHT with sides from 1 to " + std::to_string(drawing::largest_side));
}

std::int32_t supersample_of_model(const Render_Options& options, VT_Int_Pair size) {
    if (options.supersample > 0) {
        return options.supersample;
    }
    const bool wants_drawn_pixels =
        !options.record.empty() || !options.pass.empty() || !options.palette.empty() || options.colors == 8 || options.antialias;
    const bool fits_tile = options.tile_size <= drawing::largest_tile / 2;
    return wants_drawn_pixels || !fits_tile ? 1 : drawing::default_supersample(size);
}

std::int32_t supersample_of_map(const Render_Options& options) {
    return std::max(options.supersample, 1);
}

drawing::Job_Settings job_settings_of(const Render_Options& options, VT_Int_Pair size, std::int32_t supersample,
                                      const Palette_Choice& palette) {
    check_combinations(options, size, supersample, palette);
    drawing::Job_Settings settings;
    settings.file = output_file_of(options.image);
    settings.compression = compression_of(options.image);
    settings.pixels_per_metre = options.print.pixels_per_metre();
    if (!options.dry_run && options.plan == 0) {
        refuse_terminal("-o", options.image.output);
    }
    if (options.turntable > 0) {
        drawing::frame_name(options.image.output, 0, options.turntable);
    }
    settings.part = part_of(options, size);
    const VT_Int_Rectangle area = settings.part.area();
    check_output(options.image, static_cast<std::uint32_t>(area.right - area.left + 1),
                 static_cast<std::uint32_t>(area.top - area.bottom + 1), options.is_transparent());
    if (!settings.part.is_whole && settings.file != drawing::Image_File::png) {
        throw drawing::Usage_Error("--tiles-of: expected PNG files, found " +
                                   std::string(drawing::image_format(settings.file).name));
    }
    settings.tile_size = options.tile_size;
    settings.supersample = supersample;
    settings.threads = options.threads;
    settings.max_memory = options.limits->memory();
    settings.transparent = options.is_transparent();
    settings.linear = options.studio;
    settings.depths = options.pass == "depth";
    settings.palette = palette.drawn;
    settings.mapped_palette = palette.mapped;
    settings.input = drawing::name_of_input(options.models.front()) + (options.models.size() > 1 ? " and others" : "");
    settings.output = options.image.output;
    settings.is_numbered = options.turntable > 0;
    settings.record = options.record;
    settings.repeat = options.repeat;
    settings.measures = options.stats || !options.tile_times.empty();
    settings.hash = options.hash;
    settings.allow_empty = options.allow_empty;
    return settings;
}

void refuse_to_replace(const std::vector<std::string>& read, const Render_Options& options) {
    for (std::int32_t frame = 0; frame < std::max(options.turntable, 1); ++frame) {
        const std::string& output = options.image.output;
        drawing::refuse_same_files(
            read, {options.turntable > 0 ? drawing::frame_name(output, frame, options.turntable) : output, options.record});
    }
}

void run_job(const Render_Options& options, drawing::Job_Settings settings, const drawing::Module_Choice& module,
             drawing::Drawing& drawing, const Load_Times& times, const std::string& kind) {
    settings.max_memory = options.limits->memory(); // which grows with the files that have been read
    if (options.base_memory > 0) {                  // without the memory of the files that other threads draw
        settings.other_memory = options.base_memory + options.limits->memory() - options.limits->memory_left();
    }
    if (has_parts(options)) {
        settings.part.origin =
            part_origin(options, settings.part.share ? settings.part.share->supersample : settings.supersample);
    }
    if (options.plan > 0) {
        // So far the process has done what every part does first. Processor time depends less on what else the machine does.
        print_plan(options, settings, module, drawing, static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
        return;
    }
    if (options.resume && !settings.part.is_whole) {
        if (const std::optional<std::string> digest = drawing::digest_of_part(options.image.output, settings.part)) {
            if (options.hash) {
                print_digests(options, {*digest});
            }
            return;
        }
    }
    Progress progress;
    if (options.output_folder.empty()) { // else the files count
        settings.progress = [&progress](double done) { progress.show(done); };
    }
    settings.tell_digests = [&options](const std::vector<std::string>& digests) { print_digests(options, digests); };
    drawing::Job job(settings, module, drawing);
    if (options.dry_run) {
        job.check_files();
        describe(options, settings, job, drawing, kind);
        return;
    }
    const drawing::Job_Result result = job.write_files();
    if (options.stats) {
        print_stats(options, job, drawing, times, result.times);
    }
    if (!options.tile_times.empty()) {
        write_tile_times(options.tile_times, result.times);
    }
}

} // namespace vorna::app
