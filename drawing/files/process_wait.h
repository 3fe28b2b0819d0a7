// Waiting for processes.
#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

namespace vorna::drawing {

// Asks again and again whether something has happened, because no system call waits for a process with a time limit. Most
// processes end within milliseconds. False when the time is over.
template <class Has_Happened> bool wait_until(std::chrono::steady_clock::time_point end, const Has_Happened& has_happened) {
    std::chrono::microseconds pause(200);
    while (!has_happened()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 5 / 4, std::chrono::microseconds(10'000));
    }
    return true;
}

} // namespace vorna::drawing
