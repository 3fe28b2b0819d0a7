// What `render` does with models.
#pragma once

#include <vector>

#include "app/commands/render_job.h"
#include "drawing/files/input.h"

namespace vorna::app {

// Throws Usage_Error for options that make no sense, and std::runtime_error when the image would show nothing.
void render_models(const Render_Options& options, std::vector<drawing::Input> inputs, const drawing::Module_Choice& module);

// What follows from the options alone. Throws Usage_Error.
drawing::Job_Settings model_settings_of(const Render_Options& options, VT_Int_Pair size, const Palette_Choice& palette);
// The camera, with the scale of an image that is to be printed. mesh: its center and radius.
drawing::model::Camera_Settings model_camera_of(const Render_Options& options, const drawing::model::Mesh& mesh,
                                                VT_Int_Pair size);

} // namespace vorna::app
