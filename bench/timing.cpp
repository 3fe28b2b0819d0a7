#include "bench/timing.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <numeric>
#include <random>

namespace bench {

namespace {

double seconds_now(Clock clock) {
    static const bool has_threads = std::getenv(peer_threads) != nullptr;
    std::timespec time{};
    clock_gettime(has_threads || clock == Clock::wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// Of one frame.
double seconds_of(const Side& side, std::int64_t frames, Clock clock) {
    const double start = seconds_now(clock);
    for (std::int64_t i = 0; i < frames; ++i) {
        side.frame();
    }
    return (seconds_now(clock) - start) / static_cast<double>(frames);
}

} // namespace

std::vector<Time> measure(const std::vector<Side>& sides, std::int32_t rounds, Clock clock) {
    constexpr double seconds_a_round = 0.02;
    std::vector<std::int64_t> frames;
    for (const Side& side : sides) {
        side.frame();
        frames.push_back(std::max<std::int64_t>(1, std::llround(seconds_a_round / seconds_of(side, 1, clock))));
    }
    std::vector<std::size_t> order(sides.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::mt19937 random;
    std::vector<std::vector<double>> seconds(sides.size());
    for (std::int32_t round = 0; round < rounds; ++round) {
        std::shuffle(order.begin(), order.end(), random);
        for (const std::size_t i : order) {
            seconds[i].push_back(seconds_of(sides[i], frames[i], clock));
        }
    }
    std::vector<Time> times;
    for (std::vector<double>& of_side : seconds) {
        std::sort(of_side.begin(), of_side.end());
        times.push_back({of_side[of_side.size() / 2], of_side.front()});
    }
    return times;
}

} // namespace bench
