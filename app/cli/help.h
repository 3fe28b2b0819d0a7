// The text of --help.
#pragma once

#include <string>

namespace vorna::app::manual {

struct Page;

// Lines of up to 80 columns.
std::string help_of(const Page& page);

} // namespace vorna::app::manual
