// Recordings in memory as images, for the functions of recordings.h and for the C interface.
#pragma once

#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/recording/recording.h"
#include "drawing/recordings.h"

namespace vorna::drawing {

// Both throw Usage_Error that names the document for errors in it.
recording::Recording recording_of_file(const std::string& file, Load_Limits& limits);
recording::Recording recording_of_text(const std::string& name, const std::string& text, Load_Limits& limits);

// Throws Usage_Error for a recording that no application would make, and std::runtime_error for calls that no replay draws. Both
// name the document.
Replay_Image image_of(const std::string& name, const recording::Recording& recording, const Replay_Settings& settings);

} // namespace vorna::drawing
