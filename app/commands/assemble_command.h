// The command `assemble`: joins the parts of an image.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command assemble_command();

} // namespace vorna::app
