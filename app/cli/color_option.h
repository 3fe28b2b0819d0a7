// Colours as values of options.
#pragma once

#include <string>
#include <vector>

#include "host/color.h"

namespace vorna::app {

// Throws Usage_Error for a text that is not a colour. others: further words that the option accepts, for the message.
VT_RGB32 parsed_color(const char* option, const std::string& text, const std::vector<std::string>& others = {});

} // namespace vorna::app
