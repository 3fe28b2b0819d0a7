// What one frame draws, and the check of what it paints.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/canvas.h"

namespace bench {

inline constexpr std::size_t window_pixels = static_cast<std::size_t>(window_size.x) * static_cast<std::size_t>(window_size.y);

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
