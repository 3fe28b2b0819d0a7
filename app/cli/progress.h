// Progress of long work, shown on a terminal.
#pragma once

#include <chrono>
#include <string>

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
    // For work whose end is not known. text: printable, in one line; what is too long for a narrow terminal is cut.
    void show(const std::string& text);

private:
    bool is_due();

    using Clock = std::chrono::steady_clock;

    bool watched_;
    bool shown_ = false;
    Clock::time_point start_ = Clock::now(), next_ = start_ + std::chrono::seconds(1);
};

} // namespace vorna::app
