// Ratios kept from an earlier build: a guard against what makes it slower unnoticed.
#pragma once

#include <string>
#include <vector>

#include "bench/session.h"

namespace bench {

// A JSON document with, for each workload and kernel set, how many frames it draws in the time of a memset of the window, and in
// the time of a frame of the kernel set portable.
std::string stored_ratios(const std::vector<Result>& results);

// One line for each result whose ratios are both more than 15 % below those in the file, after another measurement of it.
// Throws std::runtime_error when the file is no such document, or has none of these results.
std::vector<std::string> rows_fallen(const std::string& file, const std::vector<Result>& results, Session& session);

} // namespace bench
