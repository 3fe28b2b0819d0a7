// What the commands share: their exit statuses, and the modules that they load.
#pragma once

#include <filesystem>
#include <string>

#include "app/cli/options.h"
#include "drawing/files/usage_error.h"
#include "drawing/recording/session.h"

namespace vorna::app {

namespace exit_status {
inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrong_usage = 2; // or wrong input
} // namespace exit_status

// The module that --module names, else the one built or installed with the host library. Throws when there is none.
drawing::Module_Choice chosen_module(const Given& given);

// A module of the command's own, built or installed in the renderer's folder. Throws when it is not there; the message ends with
// the hint.
std::string module_beside_renderer(const std::string& name, const std::string& hint);

// The file of this command.
std::filesystem::path executable_path();

} // namespace vorna::app
