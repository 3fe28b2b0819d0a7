// The command `serve`: draws images that another program asks for.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command serve_command();

} // namespace vorna::app
