// Recordings in files, plain or compressed.
#pragma once

#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// Reads the recording; "-" is standard input. Compressed ones are known by their content. Throws Usage_Error that
// names a file that cannot be read, and Recording_Error, without its name, for what is wrong in it.
Recording load(const std::string& path, Load_Limits& limits);

// The document as the file holds it: compressed when the name ends in .gz. Throws std::runtime_error when it is longer than a
// recording may be.
std::string file_of(const Recording& recording, const std::string& path);

} // namespace vorna::drawing::recording
