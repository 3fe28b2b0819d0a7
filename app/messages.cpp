// What the command says on standard error.
#include "app/messages.h"

#include <cstdio>

namespace app {

std::string printable(std::string text) {
    char before = ' ';
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        // The second byte of U+0080 to U+009F, which terminals obey too.
        const bool is_second = before == '\xC2' && byte >= 0x80 && byte < 0xA0;
        before = c;
        if (is_second) {
            c = '\xA0'; // a space that does not break, U+00A0
        } else if (byte < 0x20 || byte == 0x7F) {
            c = ' ';
        }
    }
    return text;
}

void warn(const std::string& text) {
    std::fprintf(stderr, "vorna: warning: %s\n", printable(text).c_str());
}

} // namespace app
