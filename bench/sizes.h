// Cost against size.
#pragma once

#include <regex>
#include <string>

#include "vorna/module.h"

namespace bench {

// Measures what one triangle, line or pixel costs as its size, its strip or its window grows, and writes JSON: an object of plots
// by name, each with a title, a title of either axis and series of points (size, nanoseconds). only: the plots whose names match.
void measure_sizes(const vorna::Module& module, const std::regex& only, const std::string& file);

} // namespace bench
