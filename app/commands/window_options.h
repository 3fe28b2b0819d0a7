// Options of the commands that open windows.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/cli/options.h"
#include "app/view/script.h"
#include "drawing/files/load_limits.h"
#include "host/geometry.h"

namespace vorna::app {

struct Window_Options {
    std::string size, folder = ".", script;
};

std::vector<Option> window_options(Window_Options& options);

// Both throw Usage_Error. The second one looks whether the folder for screenshots is there.
std::optional<VT_Int_Pair> window_size_of(const Window_Options& options);
std::vector<view::Script_Step> script_of(const Window_Options& options, drawing::Load_Limits& limits);

} // namespace vorna::app
