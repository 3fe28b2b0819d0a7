// What `render` does with maps and drawings.
#include "app/commands/render_map.h"

#include <chrono>
#include <utility>

#include "drawing/job/map_drawing.h"

namespace vorna::app {

using Clock = std::chrono::steady_clock;

void render_map(const Render_Options& options, const Map_Options& map_options, std::vector<drawing::Input> inputs,
                const drawing::Module_Choice& module) {
    // Without --size the image is as high as it needs to be, and its parts are known when it is.
    VT_Int_Pair size = image_size_of(options);
    Render_Options early = options;
    if (!options.has_size) {
        early.tiles_of.clear();
        early.area.clear();
    }
    drawing::Job_Settings settings = job_settings_of(early, size, supersample_of_map(options), {});
    check_map_options(options, map_options);
    const auto start = Clock::now();
    const VT_RGB32 background = options.is_transparent() ? VT_RGB32{255, 255, 255, 255} : map_background_of(options);
    const drawing::Map_Look look{background, options.colors == 8, options.antialias};
    drawing::Map_Drawing drawing(load_map_scene(options, map_options, std::move(inputs)), look);
    if (!options.print.scale.empty()) {
        size = drawing.set_scale(options.has_size ? size : VT_Int_Pair{}, options.print);
        settings = job_settings_of(options, size, supersample_of_map(options), {});
    } else if (!options.has_size) {
        size = drawing.scene().fitted({size.x, 0}).size;
        settings = job_settings_of(options, size, supersample_of_map(options), {});
    }
    settings.background = background;
    settings.palette = drawing.palette();
    const Load_Times times{std::chrono::duration<double, std::milli>(Clock::now() - start).count(), 0};
    run_job(options, std::move(settings), module, drawing, times, "map");
}

} // namespace vorna::app
