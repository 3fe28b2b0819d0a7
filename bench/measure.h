// Timing of several sides in turn, and the check of what they paint.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "bench/canvas.h"

namespace bench {

inline constexpr std::size_t window_pixels = static_cast<std::size_t>(window_size.x) * static_cast<std::size_t>(window_size.y);

// One that takes part in a measurement.
struct Side {
    std::string who;
    std::function<void()> frame; // everything that is timed
};

// Processor time of one frame in seconds: what other programs on the machine take does not count.
struct Time {
    double median = 0, least = 0;
};

// Times all sides in as many rounds, in random order within each, so that they meet the same ups and downs of the machine. A
// side draws so many frames a round that they take about 20 ms. Each side draws once before.
std::vector<Time> measure(const std::vector<Side>& sides, std::int32_t rounds);

enum class Clears { none, depth, all };

// What one iteration draws: the clears, the subject, and the wait until everything is in memory.
void draw_frame(Canvas& canvas, Clears clears);

using Painted = std::vector<bool>;

// Row after row from the lowest; clears colour and depth before.
Painted painted_by_one_frame(Canvas& canvas);
std::int64_t number_of(const Painted& painted);
// Only those inside the circle.
Painted part_inside(const Circle& clip, Painted painted);

// Throws std::runtime_error with one line when the numbers of painted pixels differ by more than edge_share of the second's, when
// it paints nothing, or when more than 1 % of the pixels that either paints have none of the other's on or beside them. Names say
// who painted.
void check_places(const std::string& first, const Painted& by_first, const std::string& second, const Painted& by_second,
                  double edge_share);

} // namespace bench
