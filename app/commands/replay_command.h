// The command `replay`: draws recordings.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command replay_command();

} // namespace vorna::app
