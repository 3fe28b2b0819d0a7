// What the benchmarks have in common: frames, the check of what they paint, and the yardsticks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/canvas.h"
#include "bench/ratio_table.h"

namespace bench {

inline constexpr std::size_t window_pixels = static_cast<std::size_t>(window_size.x) * static_cast<std::size_t>(window_size.y);

enum class Clears { none, depth, all };

// What one iteration draws: the clears, the scene, and the wait until everything is in memory.
void draw_frame(Canvas& canvas, Clears clears);

// Row after row from the lowest; clears colour and depth before.
std::vector<bool> painted_by_one_frame(Canvas& canvas);
std::int64_t number_of(const std::vector<bool>& painted);
std::int64_t number_inside(const Circle& clip, const std::vector<bool>& painted);

// Prints both numbers of painted pixels. Throws std::runtime_error with one line when they differ by more than edge_share of
// the other's, or when the other paints nothing. other: who else draws it.
void check_number(const std::string& name, std::int64_t ours, const std::string& other, std::int64_t theirs, double edge_share);

// Measures memset of the colour and of the depth buffer's size, and memcpy of the colour buffer's.
void add_memory();

// Goes into the JSON output and over the tables.
void add_context(Ratio_Table& ratios, const std::string& peer);

// Initializes the benchmark library and runs work(arguments) with as many arguments as the usage names, printing what is wrong
// in one line. Returns main's result; work returns whether all is well.
int run_main(int argc, char** argv, const char* usage, int count, bool (*work)(char** arguments));

} // namespace bench
