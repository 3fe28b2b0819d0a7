// Files that are read whole.
#pragma once

#include <cstddef>
#include <string>

namespace app {

// What messages call the file: "-" is standard input.
std::string name_of_input(const std::string& path);

// The bytes of the file; "-" is standard input. Throws Usage_Error that names the file, also when it has more than `most` bytes.
std::string read_input(const std::string& path, std::size_t most = std::size_t{1} << 30);

} // namespace app
