// The text of --help.
#pragma once

#include <memory>
#include <string>

namespace CLI {
class FormatterBase;
}

namespace vorna::app::manual {

struct Page;

// Lines of up to 80 columns.
std::string help_of(const Page& page);

std::shared_ptr<CLI::FormatterBase> help_formatter();

} // namespace vorna::app::manual
