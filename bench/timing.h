// Timing of several sides in turn.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// One that takes part in a measurement.
struct Side {
    std::string who;
    std::function<void()> frame; // everything that is timed
};

// Of one frame in seconds.
struct Time {
    double median = 0, least = 0;
};

// With processor time, what other programs on the machine take does not count.
enum class Clock { processor, wall };

// The variable with the number of threads of the renderer's canvas and of the peers that have some. With it, times are those on
// the clock.
inline constexpr const char* peer_threads = "BENCH_PEER_THREADS";

// Times all sides in as many rounds, in random order within each, so that they meet the same ups and downs of the machine. A
// side draws so many frames a round that they take about 20 ms. Each side draws once before.
std::vector<Time> measure(const std::vector<Side>& sides, std::int32_t rounds, Clock clock = Clock::processor);

} // namespace bench
