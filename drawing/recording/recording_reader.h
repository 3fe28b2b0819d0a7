// Recordings from documents.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// Reads and checks everything that can be checked without a renderer. Throws Recording_Error with the path of the key and the
// expected form. take_memory: as of parse_document.
Recording read_recording(std::string_view bytes, const std::function<void(std::size_t)>& take_memory = {});

} // namespace vorna::drawing::recording
