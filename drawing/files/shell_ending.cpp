// How commands end that the shell has run.
#include "drawing/files/shell_command.h"

namespace vorna::drawing {

bool has_shell() noexcept {
#if defined(_WIN32)
    return false;
#else
    return true;
#endif
}

std::string text_of(const Shell_Ending& ending) {
    switch (ending.kind) {
    case Shell_Ending::Kind::exited:
        return "status " + std::to_string(ending.number);
    case Shell_Ending::Kind::signalled:
        return "signal " + std::to_string(ending.number);
    case Shell_Ending::Kind::out_of_time:
        break;
    }
    return "the time limit";
}

} // namespace vorna::drawing
