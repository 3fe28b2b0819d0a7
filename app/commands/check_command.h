// The command `check`: tests whether a renderer module does what its host relies on.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command check_command();

} // namespace vorna::app
