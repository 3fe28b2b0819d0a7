// The command `reduce`: the smallest recording that still shows a fault.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command reduce_command();

} // namespace vorna::app
