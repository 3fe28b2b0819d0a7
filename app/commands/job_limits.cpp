// How long work that one thread of several does may take.
#include "app/commands/job_limits.h"

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <stop_token>
#include <system_error>

#include "drawing/files/interruption.h"
#include "drawing/files/output_file.h"
#include "drawing/files/standard_streams.h"

namespace vorna::app {
namespace {

using Clock = std::chrono::steady_clock;

thread_local Clock::time_point end_of_work;

void wait_for_signals(const std::stop_token& stop) {
    constexpr std::chrono::milliseconds period(50);
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any stopped;
    try {
        while (!stop.stop_requested()) {
            stopped.wait_for(lock, stop, period, [] { return false; });
            drawing::Interruption::check();
        }
    } catch (const drawing::Interrupted& interrupted) {
        drawing::Output_File::remove_unfinished();
        if (drawing::is_terminal(stderr)) {
            std::fputc('\n', stderr); // below the line of progress
        }
        drawing::end_by_signal(interrupted.signal);
    }
}

} // namespace

Time_Limit::Time_Limit(double seconds) {
    if (seconds > 0) {
        end_of_work = start_ + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
        drawing::Interruption::set_stop_check([] { return Clock::now() >= end_of_work; });
    }
}

Time_Limit::~Time_Limit() {
    drawing::Interruption::set_stop_check(nullptr);
}

double Time_Limit::seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

Signal_Watch::Signal_Watch() {
    try {
        thread_ = std::jthread([](const std::stop_token& stop) { wait_for_signals(stop); });
    } catch (const std::system_error&) {
    }
}

} // namespace vorna::app
