// The command `help`: tells what the other commands do.
#pragma once

#include <vector>

#include "app/cli/options.h"

namespace vorna::app {

// others: the commands that it tells about.
Command help_command(const std::vector<Command>& others);

} // namespace vorna::app
