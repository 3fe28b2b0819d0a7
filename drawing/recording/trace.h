// A replay as events for viewers of timelines: the trace event format of browsers, in JSON.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// Measures the calls of a replay.
class Call_Trace {
public:
    explicit Call_Trace(const Recording& recording) : recording_(recording) {}

    // For Replay_Settings; the first next to the call.
    void before_call() noexcept;
    void after_call(std::size_t call);

    // The document. Times are microseconds from the first call on; the time between calls is left out.
    std::string json() const;

private:
    using Clock = std::chrono::steady_clock;

    const Recording& recording_;
    std::string events_;
    Clock::time_point start_;
    std::chrono::nanoseconds elapsed_{0};
};

} // namespace vorna::drawing::recording
