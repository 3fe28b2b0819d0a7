// What the command says to people. Nothing else prints texts: names in files and of files may hold what terminals obey.
#pragma once

#include <cstdio>
#include <string>

namespace app {

// One line: spaces for control characters, those of U+0080 to U+009F too, and question marks for bytes that are no UTF-8, which
// some terminals obey.
std::string printable(const std::string& text);

// Prints lines likewise.
void print(std::FILE* stream, const std::string& text);

// Something is not as expected, and not in the way.
void warn(const std::string& text);

} // namespace app
