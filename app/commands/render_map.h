// What `render` does with maps and drawings.
#pragma once

#include <vector>

#include "app/commands/map_options.h"
#include "app/commands/render_job.h"
#include "drawing/files/input.h"

namespace vorna::app {

// Throws Usage_Error for options that make no sense, and std::runtime_error when the image would show nothing.
void render_map(const Render_Options& options, const Map_Options& map_options, std::vector<drawing::Input> inputs,
                const drawing::Module_Choice& module);

} // namespace vorna::app
