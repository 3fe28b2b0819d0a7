// Progress of long work, shown on a terminal.
#pragma once

#include <chrono>

namespace vorna::app {

// A line on standard error that is written over again and removed at the end; nothing when that is no terminal, or the work is
// done within a second.
class Progress {
public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    // done: 0 to 1.
    void show(double done);

private:
    using Clock = std::chrono::steady_clock;

    bool watched_;
    bool shown_ = false;
    Clock::time_point start_ = Clock::now(), next_ = start_ + std::chrono::seconds(1);
};

} // namespace vorna::app
