// The command `report`: a recording as a page for a browser.
#pragma once

#include "app/cli/options.h"

namespace vorna::app {

Command report_command();

} // namespace vorna::app
