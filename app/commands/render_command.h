// The command `render`: draws models, maps and drawings as PNG files.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command render_command();

} // namespace vorna::app
