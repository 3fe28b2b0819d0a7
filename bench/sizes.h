// Cost against size.
#pragma once

#include <string>

#include "vorna/module.h"

namespace bench {

// Measures what one triangle, line or pixel costs as its size, its strip or its window grows, and writes JSON: an object of plots
// by name, each with a title, a title of either axis and series of points (size, nanoseconds).
void measure_sizes(const vorna::Module& module, const std::string& file);

} // namespace bench
