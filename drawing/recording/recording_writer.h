// Recordings as JSON documents.
#pragma once

#include <string>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// The document; read_recording gives the same recording again. Points are numbers in a row, colours and pixels hexadecimal
// digits; lists and renditions that several places share are written once. Throws std::runtime_error for numbers that are not
// finite.
std::string json_of(const Recording& recording);

} // namespace vorna::drawing::recording
