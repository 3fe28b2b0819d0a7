// Where a model is seen from, and where it is cut open: options of the commands that draw models.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/cli/options.h"
#include "drawing/files/input.h"
#include "drawing/model/camera.h"
#include "drawing/model/mesh.h"
#include "drawing/model/section.h"

namespace vorna::app {

struct Camera_Options {
    drawing::model::Camera_Settings camera;
    bool has_up = false; // whether camera.up is given, or follows from the file's format
    bool orthographic = false;
    std::optional<drawing::model::Aim> aim; // in the file's coordinates; up 0, 0, 0 = the model's
    double field_of_view = 0;               // degrees; 0 = not given
    std::string section;                    // empty = none
};

void add_camera_options(std::vector<Option>& table, Camera_Options& options);

// The options as a shell's words, as far as they differ from the defaults.
std::vector<std::string> camera_arguments_of(const Camera_Options& options);

// The axis that points up where none is given: as the first file's format has it.
void choose_up_axis(Camera_Options& options, const std::vector<drawing::Input>& inputs);

// These throw Usage_Error for malformed values.
drawing::model::Camera_Settings camera_settings_of(const Camera_Options& options, const drawing::model::Mesh& mesh,
                                                   VT_Int_Pair size);
std::optional<drawing::model::Section> section_of(const Camera_Options& options);

} // namespace vorna::app
