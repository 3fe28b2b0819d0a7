// Comparisons as documents for programs.
#pragma once

#include <string>

#include "drawing/comparison/folder_comparison.h"

namespace vorna::drawing::comparison {

// The lines of the command: one for each pair that is not the same, and one for all.
std::string text_of(const Report& report);

// JSON; docs/comparing.md lists the keys.
std::string json_of(const Report& report);

// JUnit XML: a test case for each pair. Pairs that are not the same are failures, unreadable ones errors.
std::string junit_of(const Report& report);

} // namespace vorna::drawing::comparison
