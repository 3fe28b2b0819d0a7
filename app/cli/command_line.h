// The command line: the program with all its commands and their options.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Program make_program();

} // namespace vorna::app
