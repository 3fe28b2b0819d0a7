// How far long work has come.
#include "app/progress.h"

#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace app {

namespace {

bool errors_go_to_a_terminal() {
#if defined(_WIN32)
    return _isatty(2) != 0;
#else
    return isatty(2) != 0;
#endif
}

} // namespace

Progress::Progress() : watched_(errors_go_to_a_terminal()) {
}

Progress::~Progress() {
    if (shown_) {
        std::fprintf(stderr, "\r%-40s\r", "");
    }
}

void Progress::show(double done) {
    const Clock::time_point now = Clock::now();
    if (!watched_ || now < next_ || done <= 0) {
        return;
    }
    next_ = now + std::chrono::milliseconds(250);
    shown_ = true;
    const double passed = std::chrono::duration<double>(now - start_).count();
    const auto left = static_cast<long>(passed * (1 - done) / done + 0.5);
    std::fprintf(stderr, "\r%3.0f %%, %ld:%02ld:%02ld left ", 100 * done, left / 3600, left / 60 % 60, left % 60);
    std::fflush(stderr);
}

} // namespace app
