// What `render` does with models and maps alike: from its options to a job, and what is told of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/commands/model_options.h"
#include "app/commands/output_options.h"
#include "drawing/job/job.h"
#include "drawing/job/print_settings.h"

namespace vorna::app {

struct Render_Options : Model_Options {
    Output_Options image;
    drawing::Print_Settings print;
    std::string record; // empty = not asked for
    std::string size = "1280x960";
    bool has_size = false; // whether it or the paper is given
    std::string tiles_of;  // empty = the whole image
    std::string area;      // of the part; empty = parts are equally large
    std::int32_t tile = -1, tile_size = 0;
    std::int32_t plan = 0; // into so many parts; 0 = the image is drawn
    bool plan_lines = false;
    bool stream = false;                   // triangles are drawn while they are read
    std::int32_t parts_of = 0, share = -1; // which of so many shares of the triangles; 0 = all of them
    std::string framing;                   // see render_stream.h; empty = found in the file
    const Given* given = nullptr;          // the options as they were given
    std::string models_digest;             // of a part or a plan: of the models' contents, and their framing where it is given
    std::int32_t supersample = 0;          // 0 = not given
    bool studio = false;                   // --look studio
    std::string pass;                      // depth, normals or faces instead of the colours; empty = colours
    std::int32_t turntable = 0;            // frames; 0 = a single image
    unsigned threads = 0;
    int repeat = 1;
    std::string output_folder; // empty = all files are one image
    bool resume = false;
    std::string files_from;        // list of files; empty = none
    std::string manifest;          // file for what became of each file; empty = none
    double time_limit = 0;         // seconds for each of several files; 0 = none
    std::uint64_t base_memory = 0; // bytes that the process had before it drew the first of several files
    std::string tile_times;        // file for what each tile takes; empty = not asked for
    bool stats = false, hash = false, dry_run = false, allow_empty = false;
};

inline constexpr std::int32_t most_planned_parts = 100000;

// Whether inputs and options are to be remembered: of parts that are joined later.
inline bool has_parts(const Render_Options& options) noexcept {
    return !options.tiles_of.empty() || options.plan > 0 || options.parts_of > 0;
}
// Whether the model is read while it is drawn.
inline bool is_streamed(const Render_Options& options) noexcept {
    return options.stream || options.parts_of > 0;
}

VT_Int_Pair image_size_of(const Render_Options& options);

// Drawn pixels for one of a model's image. Without the option 1 where the renderer's own pixels are wanted: for recordings,
// palettes and lines that it smooths.
std::int32_t supersample_of_model(const Render_Options& options, VT_Int_Pair size);
std::int32_t supersample_of_map(const Render_Options& options);

// palette: of the options; a map's is chosen later. Throws Usage_Error for options that exclude each other, or need another one.
drawing::Job_Settings job_settings_of(const Render_Options& options, VT_Int_Pair size, std::int32_t supersample,
                                      const Palette_Choice& palette);

// Throws Usage_Error when an image, a frame or the recording would replace one of these files, or one of them another one.
void refuse_to_replace(const std::vector<std::string>& read, const Render_Options& options);

// Milliseconds before the job.
struct Load_Times {
    double load = 0, setup = 0;
};

// Runs the job, or tells what it would draw. kind: what the inputs are called.
void run_job(const Render_Options& options, drawing::Job_Settings settings, const drawing::Module_Choice& module,
             drawing::Drawing& drawing, const Load_Times& times, const std::string& kind);

} // namespace vorna::app
