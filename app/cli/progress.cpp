// Progress of long work.
#include "app/cli/progress.h"

#include <cstdio>

#include "drawing/files/standard_streams.h"

namespace vorna::app {

Progress::Progress() : watched_(drawing::is_terminal(stderr)) {
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

} // namespace vorna::app
