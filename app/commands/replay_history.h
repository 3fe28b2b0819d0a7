// Options of `replay` that ask what happened at pixels.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/cli/options.h"
#include "drawing/files/load_limits.h"
#include "drawing/recording/history_report.h"
#include "drawing/recording/pixel_history.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"

namespace vorna::app {

struct History_Arguments {
    std::vector<std::string> pixels;
    std::string pixel_file, area;
    bool has_outside = false, is_json = false;

    bool is_given() const { return !pixels.empty() || !pixel_file.empty() || !area.empty(); }
};

// X,Y and X,Y,WxH as options have them. place: of the text, for messages. Throw Usage_Error.
VT_Int_Pair parsed_pixel(const std::string& place, std::string_view text);
drawing::recording::Image_Area parsed_area(const std::string& text);

std::vector<Option> history_options(History_Arguments& arguments);

// Throws Usage_Error for values that are wrong whatever the recording has. recording: its path.
void check_history(const History_Arguments& arguments, const std::string& recording);

// Writes what the command prints. Throws Usage_Error for pixels that the image does not have.
void write_history(const History_Arguments& arguments, const drawing::recording::Recording& recording, const std::string& name,
                   const drawing::Module_Choice& module, const drawing::recording::Replay_Settings& settings,
                   drawing::Load_Limits& limits, const drawing::recording::Report_Sink& write);

} // namespace vorna::app
