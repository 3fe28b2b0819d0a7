// The command `compare`: whether two images, two folders of images or two recordings are the same.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command compare_command();

} // namespace vorna::app
