// Manual pages in roff's macros.
#pragma once

#include <string>

namespace vorna::app::manual {

struct Page;

// The page of a command, or of the program itself when it has commands. The version stands in its foot.
std::string roff_of(const Page& page, const Page& program, const std::string& version);

// vorna render: vorna-render
std::string file_name_of(const Page& page);

} // namespace vorna::app::manual
