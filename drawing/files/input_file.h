// Files that are read whole.
#pragma once

#include <cstddef>
#include <string>

#include "drawing/files/load_limits.h"

namespace vorna::drawing {

// What messages call the file: "-" is standard input.
std::string name_of_input(const std::string& path);

// The bytes of the file; "-" is standard input. Throws Usage_Error that names the file, also when it has more than `most` bytes.
std::string read_input(const std::string& path, Load_Limits& limits, std::size_t most = std::size_t{1} << 30);

// What such bytes hold when they are compressed by gzip or zstd, else the bytes. name: what messages call the file. Throws
// likewise.
std::string unpacked_input(const std::string& name, std::string packed, Load_Limits& limits, std::size_t most);

} // namespace vorna::drawing
