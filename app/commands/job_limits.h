// How long work that one thread of several does may take, and what ends all of it.
#pragma once

#include <chrono>
#include <thread>

namespace vorna::app {

// Ends what the calling thread draws after some time, wherever it asks whether to stop: Interrupted with signal 0 is thrown
// there.
class Time_Limit {
public:
    // seconds: 0 = never.
    explicit Time_Limit(double seconds);
    Time_Limit(const Time_Limit&) = delete;
    Time_Limit& operator=(const Time_Limit&) = delete;
    ~Time_Limit();

    double seconds() const; // since the beginning

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// A thread that ends the process when a signal asks for it, whatever the other threads do: those that read a file do not look for
// signals. Where the system gives no thread, a signal takes effect at the end of a file.
class Signal_Watch {
public:
    Signal_Watch();

private:
    std::jthread thread_;
};

} // namespace vorna::app
