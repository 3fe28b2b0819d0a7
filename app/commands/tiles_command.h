// The command `tiles`: maps as pyramids of tiles for viewers in web pages.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command tiles_command();

} // namespace vorna::app
