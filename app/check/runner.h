// Runs checks in child processes, so that a module may crash or hang.
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
    bool quiet = false;                                        // discards what the module writes to standard error
};

// Runs the checks area by area. After a crash the remaining checks of the area run in another process. Passes each outcome to
// report, in the order of the table.
std::vector<Outcome> run_in_processes(const Run& run, const std::function<void(const Outcome&)>& report);

} // namespace vorna::app::check
