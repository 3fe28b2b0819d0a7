// What was measured, as a Markdown table and as JSON.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "bench/timing.h"
#include "bench/workloads.h"

namespace bench {

struct Timed_Side {
    std::string who;
    Time time;
};

// The times of one workload with one kernel set. Those that were not measured are nothing.
struct Result {
    const Workload* workload = nullptr;
    std::string kernel_set;
    double amount = 0, varied_amount = 0, bytes = 0;
    double image_bytes = 0; // of one copied image, else 0
    double block_bytes = 0; // that memset sets and memcpy copies
    Time ours, memset, memcpy;
    std::vector<Timed_Side> peers;
    std::optional<Time> reference, varied, beside, portable; // portable: the same with plain C++
    std::string failure;                                     // why it was not measured; empty = it was
};

// Names and values of what the figures depend on.
using Context = std::vector<std::pair<std::string, std::string>>;

std::string markdown(const Context& context, const std::vector<Result>& results);
std::string json(const Context& context, const std::vector<Result>& results);
// One line for the terminal.
std::string summary(const Result& result);

} // namespace bench
