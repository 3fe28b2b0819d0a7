// The outcomes of checks as lines and as JUnit XML.
#pragma once

#include <string>
#include <vector>

#include "app/check/runner.h"

namespace vorna::app::check {

std::string line_of(const Outcome& outcome);
// The number of outcomes of each kind.
std::string total_of(const std::vector<Outcome>& outcomes);
// One suite for each area.
std::string junit_of(const std::string& name, const std::vector<Outcome>& outcomes);

} // namespace vorna::app::check
