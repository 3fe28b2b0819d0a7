// A replay as events for viewers of timelines: the trace event format of browsers, in JSON.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <exception>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/recording/recording.h"
#include "vorna/canvas.h"

namespace vorna::drawing::recording {

// Measures the calls of a replay, and with several threads what each of them draws.
class Call_Trace {
public:
    // canvas: that the calls draw on, with so many threads. It tells the threads' work as long as the object lives. Events are
    // kept until they are written: their memory is taken from the limits, in the name of the recording.
    Call_Trace(const Recording& recording, Canvas& canvas, unsigned threads, Load_Limits& limits, std::string name);
    Call_Trace(const Call_Trace&) = delete;
    Call_Trace& operator=(const Call_Trace&) = delete;
    ~Call_Trace();

    // For Replay_Settings; the first next to the call.
    void before_call(std::size_t call) noexcept;
    // Throws Load_Error.
    void after_call(std::size_t call);

    // The document, after the replay. Times are microseconds from the first call on. With one thread the time between calls is
    // left out. Throws Load_Error and std::bad_alloc, also what a thread has thrown.
    std::string json();

private:
    using Clock = std::chrono::steady_clock;

    template <class List> void make_room(List& list, std::size_t more);
    void add(std::string& text, const std::string& event);
    void note(const Thread_Work& work) noexcept;

    const Recording& recording_;
    Canvas& canvas_;
    Load_Limits& limits_;
    const std::string name_;
    std::string events_;
    Clock::time_point first_, start_;
    std::chrono::nanoseconds elapsed_{0};
    std::size_t call_ = 0;
    bool has_begun_ = false;
    std::vector<std::vector<Thread_Work>> works_; // by thread; empty = one thread
    std::atomic<bool> has_failed_ = false;
    std::exception_ptr failure_; // of the first thread that lacked memory
};

} // namespace vorna::drawing::recording
