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

// The times of one workload. Those that were not measured are nothing.
struct Result {
    const Workload* workload;
    double amount, varied_amount, bytes, image_bytes; // image_bytes: of one copied image, else 0
    double block_bytes;                               // that memset sets and memcpy copies
    Time ours, memset, memcpy;
    std::vector<Timed_Side> peers;
    std::optional<Time> reference, varied, beside;
    std::string failure; // why it was not measured; empty = it was
};

// Names and values of what the figures depend on.
using Context = std::vector<std::pair<std::string, std::string>>;

std::string markdown(const Context& context, const std::vector<Result>& results);
std::string json(const Context& context, const std::vector<Result>& results);
// One line for the terminal.
std::string summary(const Result& result);

} // namespace bench
