// What the command says to people. Nothing else prints texts: names in files and of files may hold what terminals obey.
#pragma once

#include <cstdio>
#include <string>

#include "drawing/files/printable.h"

namespace vorna::app {

// Prints lines likewise.
void print(std::FILE* stream, const std::string& text);

// Something is not as expected, and not in the way.
void warn(const std::string& text);

} // namespace vorna::app
