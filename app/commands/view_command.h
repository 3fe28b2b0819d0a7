// The command `view`: shows a model, map or drawing in a window.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command view_command();

} // namespace vorna::app
