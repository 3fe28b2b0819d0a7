// Progress of long work.
#include "app/cli/progress.h"

#include <cstdio>

#include "drawing/files/standard_streams.h"

namespace vorna::app {

namespace {

constexpr int width = 72;

} // namespace

Progress::Progress() : watched_(drawing::is_terminal(stderr)) {
}

Progress::~Progress() {
    if (shown_) {
        std::fprintf(stderr, "\r%-*s\r", width, "");
    }
}

bool Progress::is_due() {
    const Clock::time_point now = Clock::now();
    if (!watched_ || now < next_) {
        return false;
    }
    next_ = now + std::chrono::milliseconds(250);
    return shown_ = true;
}

void Progress::show(double done) {
    if (done <= 0 || !is_due()) {
        return;
    }
    const double passed = std::chrono::duration<double>(Clock::now() - start_).count();
    const auto left = static_cast<long>(passed * (1 - done) / done + 0.5);
    std::fprintf(stderr, "\r%3.0f %%, %ld:%02ld:%02ld left ", 100 * done, left / 3600, left / 60 % 60, left % 60);
    std::fflush(stderr);
}

void Progress::show(const std::string& text) {
    if (is_due()) {
        std::fprintf(stderr, "\r%-*.*s", width, width, text.c_str());
        std::fflush(stderr);
    }
}

} // namespace vorna::app
