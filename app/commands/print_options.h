// Options of images that are printed: paper, pixels per inch, and the scale of maps, drawings and models.
#pragma once

#include <vector>

#include "app/cli/options.h"
#include "drawing/job/print_settings.h"

namespace vorna::app {

void add_print_options(std::vector<Option>& table, drawing::Print_Settings& options);

} // namespace vorna::app
