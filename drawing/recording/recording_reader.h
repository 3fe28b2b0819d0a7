// Recordings from JSON documents.
#pragma once

#include <string_view>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// Reads and checks everything that can be checked without a renderer. Throws Recording_Error with the path of the key and the
// expected form.
Recording read_recording(std::string_view text);

} // namespace vorna::drawing::recording
