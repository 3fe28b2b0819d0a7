// What the command says on standard error.
#pragma once

#include <string>

namespace app {

// With spaces for control characters: one line that no terminal obeys, whatever names and texts of files are in it.
std::string printable(std::string text);

// Something is not as expected, and not in the way.
void warn(const std::string& text);

} // namespace app
