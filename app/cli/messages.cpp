// Messages of the command.
#include "app/cli/messages.h"

#include <cstdio>

namespace vorna::app {
void print(std::FILE* stream, const std::string& text) {
    const std::string shown = drawing::printable_lines(text);
    std::fwrite(shown.data(), 1, shown.size(), stream);
}

void warn(const std::string& text) {
    print(stderr, "vorna: warning: " + drawing::printable(text) + '\n');
}

} // namespace vorna::app
