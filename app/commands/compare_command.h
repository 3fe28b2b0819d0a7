// The command `compare`: tells whether two PNG files hold the same pixels.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command compare_command();

} // namespace vorna::app
