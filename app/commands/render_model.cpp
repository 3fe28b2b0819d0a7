// `render` with models.
#include "app/commands/render_model.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include "app/cli/messages.h"
#include "drawing/job/model_drawing.h"

namespace vorna::app {
namespace {

using Clock = std::chrono::steady_clock;

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Warns of frames that reach over the border of the image while the first one does not.
void warn_of_cut_frames(const Render_Options& options, const drawing::Model_Drawing& drawing) {
    const std::vector<double> reach = drawing.reach();
    const auto count = std::ranges::count_if(reach, [](double r) { return r > 1; });
    if (count == 0 || reach.front() > 1) {
        return;
    }
    constexpr double near_by = 10;
    const double farthest = std::ranges::max(reach);
    char advice[64] = "a --camera farther away does";
    if (farthest < near_by) {
        std::snprintf(advice, sizeof advice, "--zoom %.2g does", options.camera.zoom * 0.98 / farthest);
    }
    warn("--turntable: " + std::to_string(count) + " of " + std::to_string(reach.size()) +
         " frames do not show the whole model; " + advice);
}

} // namespace

drawing::model::Camera_Settings model_camera_of(const Render_Options& options, const drawing::model::Mesh& mesh,
                                                VT_Int_Pair size) {
    drawing::model::Camera_Settings camera = camera_settings_of(options, mesh, size);
    drawing::set_scale(camera, options.print, mesh, size);
    return camera;
}

drawing::Job_Settings model_settings_of(const Render_Options& options, VT_Int_Pair size, const Palette_Choice& palette) {
    drawing::Job_Settings settings = job_settings_of(options, size, supersample_of_model(options, size), palette);
    if (!settings.transparent) {
        settings.background = options.pass.empty() ? background_of(options) : drawing::Background({0, 0, 0, 255});
    }
    if (!options.print.scale.empty() && !options.orthographic) {
        throw drawing::Usage_Error("--scale: expected --ortho beside it, since near things are larger in perspective");
    }
    return settings;
}

void render_models(const Render_Options& options, std::vector<drawing::Input> inputs, const drawing::Module_Choice& module) {
    const VT_Int_Pair size = image_size_of(options);
    const Palette_Choice palette = palette_of(options);
    drawing::Job_Settings settings = model_settings_of(options, size, palette);
    look_of(options, true); // its faults are found before the model is read
    Load_Times times;
    const auto start = Clock::now();
    const drawing::model::Mesh mesh = load_mesh(options, std::move(inputs), options.allow_empty);
    times.load = milliseconds_since(start);
    if (!options.pass.empty() && mesh.triangles.empty() && !options.allow_empty) {
        throw drawing::Usage_Error(settings.input + ": expected faces for --pass " + options.pass + ", found " +
                                   (mesh.lines.empty() ? "points" : "points or lines") + " only");
    }
    const drawing::Model_Look look = look_of(options, !mesh.lines.empty(), palette.drawn);
    if (options.has_edges() && look.edges.color) {
        settings.flat_colors.push_back(*look.edges.color);
    }
    std::vector<std::string> read = options.models;
    read.push_back(options.palette);
    for (const drawing::model::Image_Source& image : mesh.images) {
        read.push_back(image.embedded ? std::string() : image.name);
    }
    refuse_to_replace(read, options);
    const auto setup_start = Clock::now();
    drawing::Model_Parts parts = make_model(options, mesh);
    if (options.studio) {
        const unsigned threads = options.limits->threads();
        parts.add_studio(mesh, drawing::model::Facing(mesh, threads), module, threads);
    }
    if (!options.pass.empty()) {
        parts.lines.reset();
        parts.points.reset();
        parts.overlay.reset();
    }
    drawing::Model_Drawing drawing(std::move(parts), look, model_camera_of(options, mesh, size), std::max(options.turntable, 1));
    times.setup = milliseconds_since(setup_start);
    if (options.turntable > 0 && !options.dry_run) {
        warn_of_cut_frames(options, drawing);
    }
    run_job(options, std::move(settings), module, drawing, times, "model");
}

} // namespace vorna::app
