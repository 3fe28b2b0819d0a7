// The command `info`: tells what recordings consist of.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command info_command();

} // namespace vorna::app
