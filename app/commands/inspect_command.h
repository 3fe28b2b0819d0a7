// The command `inspect`: goes through a recording call by call in a window.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command inspect_command();

} // namespace vorna::app
