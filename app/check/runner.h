// Checks run in processes of their own, so that a module may crash or hang.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "app/check/trial.h"

namespace vorna::app::check {

struct Outcome {
    enum class Kind { passed, failed, not_run };

    std::string check;
    Kind kind = Kind::passed;
    std::string reason; // empty when it passed
};

struct Run {
    Task task;
    std::vector<std::string> checks;                           // names in the order of the table
    std::chrono::milliseconds limit{std::chrono::seconds(60)}; // for each area
    bool quiet = false;                                        // without what the module writes to standard error
};

// Runs the checks area by area, and what a crash has left over once more. Tells of each outcome in the order of the table.
std::vector<Outcome> run_in_processes(const Run& run, const std::function<void(const Outcome&)>& tell);

} // namespace vorna::app::check
