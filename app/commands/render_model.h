// What `render` does with models.
#pragma once

#include <vector>

#include "app/commands/render_job.h"
#include "drawing/files/input.h"

namespace vorna::app {

// Throws Usage_Error for options that make no sense, and std::runtime_error when the image would show nothing.
void render_models(const Render_Options& options, std::vector<drawing::Input> inputs, const drawing::Module_Choice& module);

} // namespace vorna::app
