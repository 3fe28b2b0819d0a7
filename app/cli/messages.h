// Messages of the command. All texts are printed here: names from files may contain control characters, which are escaped.
#pragma once

#include <cstdio>
#include <string>

#include "drawing/files/printable.h"

namespace vorna::app {

// Prints lines, with control characters escaped.
void print(std::FILE* stream, const std::string& text);

// Prints a warning.
void warn(const std::string& text);

} // namespace vorna::app
