// Recordings in files: JSON or CBOR, plain or compressed.
#pragma once

#include <string>
#include <string_view>

#include "drawing/files/load_limits.h"
#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// Reads the recording; "-" is standard input. The content tells its form. Throws Usage_Error, which names the
// file, when it cannot be read, and Recording_Error, which does not, for errors in it.
Recording load(const std::string& path, Load_Limits& limits);
// The same of what a file holds; its size must have been added to the limits. name: what messages call it.
Recording read_document(const std::string& name, std::string bytes, Load_Limits& limits);

// Whether the content of a file begins as that of a recording does: as an object of JSON or CBOR, or compressed.
bool is_document(std::string_view bytes) noexcept;

// The document as the file holds it: compressed when the name ends in .gz or .zst, CBOR when it ends in .cbor before that, else
// JSON. Throws std::runtime_error when it is longer than a
// recording may be.
std::string file_of(const Recording& recording, const std::string& path);

} // namespace vorna::drawing::recording
